// The selector's generated form: object names, where each control sits in the
// filter grid, the order things are created in, the layout settings, and the
// texts with and without a translation.

#include "ui_deviceselector.h"

#include <QTest>
#include <QTranslator>

#include <cstddef>

using DEV::Ui_DeviceSelector;

namespace {

/// Where @p object sits in @p grid, as row, column, row span, column span.
QList<int> cellOf(QGridLayout* grid, const QObject* object)
{
    for (int i = 0; i < grid->count(); ++i) {
        QLayoutItem* item = grid->itemAt(i);
        if (item->widget() == object || item->layout() == object) {
            int row, column, rowSpan, columnSpan;
            grid->getItemPosition(i, &row, &column, &rowSpan, &columnSpan);
            return {row, column, rowSpan, columnSpan};
        }
    }
    return {};
}

QStringList namesOf(const QObjectList& objects)
{
    QStringList out;
    for (const QObject* o : objects)
        out << o->objectName();
    return out;
}

} // namespace

/// Translates the form's context by bracketing the source text, and records every request.
class BracketTranslator : public QTranslator
{
public:
    struct Request
    {
        QByteArray context;
        QByteArray source;
        bool hasDisambiguation;
        int n;
    };
    mutable QList<Request> requests;

    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* sourceText, const char* disambiguation,
                      int n) const override
    {
        requests.append({context, sourceText, disambiguation != nullptr, n});
        if (qstrcmp(context, "DEV::DeviceSelector") != 0)
            return QString();
        return QLatin1Char('[') + QString::fromUtf8(sourceText) + QLatin1Char(']');
    }
};

/// A host with a slot that QMetaObject::connectSlotsByName() recognises.
class AutoConnectHost : public QWidget
{
    Q_OBJECT
public:
    QList<int> seriesIndexes;
public slots:
    void on_cbSeries_currentIndexChanged(int index) { seriesIndexes << index; }
};

class TestSelectorForm : public QObject
{
    Q_OBJECT

private slots:
    void membersInDeclarationOrder()
    {
        // Code that embeds the form reads the members; their order is part of
        // what the form class promises, like their names.
        const QList<std::size_t> offsets = {
            offsetof(Ui_DeviceSelector, verticalLayout),  offsetof(Ui_DeviceSelector, groupBox),
            offsetof(Ui_DeviceSelector, gridLayout),      offsetof(Ui_DeviceSelector, cbPackage),
            offsetof(Ui_DeviceSelector, cbDevice),        offsetof(Ui_DeviceSelector, label_2),
            offsetof(Ui_DeviceSelector, labelDeviceVersion), offsetof(Ui_DeviceSelector, label),
            offsetof(Ui_DeviceSelector, label_5),         offsetof(Ui_DeviceSelector, label_3),
            offsetof(Ui_DeviceSelector, cbDeviceVersion), offsetof(Ui_DeviceSelector, cbCondition),
            offsetof(Ui_DeviceSelector, cbSeries),        offsetof(Ui_DeviceSelector, SerarchLayout),
            offsetof(Ui_DeviceSelector, label_4),         offsetof(Ui_DeviceSelector, matchCountLabel),
            offsetof(Ui_DeviceSelector, tableView)};
        for (int i = 0; i < offsets.size(); ++i)
            QCOMPARE(offsets.at(i), i * sizeof(void*));
        QCOMPARE(sizeof(Ui_DeviceSelector), offsets.size() * sizeof(void*));
    }

    void hostObjectName_data()
    {
        QTest::addColumn<QString>("preset");
        QTest::addColumn<QString>("expected");
        QTest::newRow("unnamed host") << QString() << "DEV__DeviceSelector";
        QTest::newRow("named host") << "hostSelector" << "hostSelector";
    }

    void hostObjectName()
    {
        QFETCH(QString, preset);
        QFETCH(QString, expected);
        QWidget host;
        host.setObjectName(preset);
        Ui_DeviceSelector ui;
        ui.setupUi(&host);
        QCOMPARE(host.objectName(), expected);
    }

    void controlsInFilterGrid_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("className");
        QTest::addColumn<QList<int>>("cell");
        QTest::newRow("label") << "label" << QByteArray("QLabel") << QList<int>{0, 0, 1, 1};
        QTest::newRow("cbSeries") << "cbSeries" << QByteArray("QComboBox") << QList<int>{0, 1, 1, 1};
        QTest::newRow("label_3") << "label_3" << QByteArray("QLabel") << QList<int>{0, 2, 1, 1};
        QTest::newRow("cbPackage") << "cbPackage" << QByteArray("QComboBox") << QList<int>{0, 3, 1, 1};
        QTest::newRow("label_2") << "label_2" << QByteArray("QLabel") << QList<int>{1, 0, 1, 1};
        QTest::newRow("cbDevice") << "cbDevice" << QByteArray("QComboBox") << QList<int>{1, 1, 1, 1};
        QTest::newRow("label_5") << "label_5" << QByteArray("QLabel") << QList<int>{1, 2, 1, 1};
        QTest::newRow("cbCondition") << "cbCondition" << QByteArray("QComboBox") << QList<int>{1, 3, 1, 1};
        QTest::newRow("labelDeviceVersion") << "labelDeviceVersion" << QByteArray("QLabel") << QList<int>{2, 0, 1, 1};
        QTest::newRow("cbDeviceVersion") << "cbDeviceVersion" << QByteArray("QComboBox") << QList<int>{2, 1, 1, 1};
        QTest::newRow("SerarchLayout") << "SerarchLayout" << QByteArray("QHBoxLayout") << QList<int>{4, 0, 1, 2};
    }

    void controlsInFilterGrid()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, className);
        QFETCH(QList<int>, cell);
        QWidget host;
        Ui_DeviceSelector ui;
        ui.setupUi(&host);
        QObject* object = host.findChild<QObject*>(name);
        QVERIFY(object);
        QCOMPARE(QByteArray(object->metaObject()->className()), className);
        QCOMPARE(cellOf(ui.gridLayout, object), cell);
        if (object->isWidgetType())
            QCOMPARE(static_cast<QWidget*>(object)->parentWidget(), ui.groupBox);
    }

    void membersCarryTheirObjectNames()
    {
        QWidget host;
        Ui_DeviceSelector ui;
        ui.setupUi(&host);
        const QObjectList members = {ui.verticalLayout, ui.groupBox,        ui.gridLayout,         ui.cbPackage,
                                     ui.cbDevice,       ui.label_2,         ui.labelDeviceVersion, ui.label,
                                     ui.label_5,        ui.label_3,         ui.cbDeviceVersion,    ui.cbCondition,
                                     ui.cbSeries,       ui.SerarchLayout,   ui.label_4,            ui.matchCountLabel,
                                     ui.tableView};
        QCOMPARE(namesOf(members),
                 (QStringList{"verticalLayout", "groupBox", "gridLayout", "cbPackage", "cbDevice", "label_2",
                              "labelDeviceVersion", "label", "label_5", "label_3", "cbDeviceVersion", "cbCondition",
                              "cbSeries", "SerarchLayout", "label_4", "matchCountLabel", "tableView"}));
        for (const QObject* member : members)
            QCOMPARE(host.findChild<QObject*>(member->objectName()), member);
    }

    void creationAndLayoutOrder()
    {
        QWidget host;
        Ui_DeviceSelector ui;
        ui.setupUi(&host);
        // Children are listed in the order they were given their parent.
        QCOMPARE(namesOf(host.children()), (QStringList{"verticalLayout", "groupBox", "tableView"}));
        QCOMPARE(namesOf(ui.groupBox->children()),
                 (QStringList{"gridLayout", "cbPackage", "cbDevice", "label_2", "labelDeviceVersion", "label",
                              "label_5", "label_3", "cbDeviceVersion", "cbCondition", "cbSeries", "label_4",
                              "matchCountLabel"}));
        QCOMPARE(ui.SerarchLayout->parent(), ui.gridLayout);

        QCOMPARE(ui.SerarchLayout->count(), 2);
        QCOMPARE(ui.SerarchLayout->itemAt(0)->widget(), ui.label_4);
        QCOMPARE(ui.SerarchLayout->itemAt(1)->widget(), ui.matchCountLabel);
        QCOMPARE(ui.verticalLayout->count(), 2);
        QCOMPARE(ui.verticalLayout->itemAt(0)->widget(), ui.groupBox);
        QCOMPARE(ui.verticalLayout->itemAt(1)->widget(), ui.tableView);
        for (QBoxLayout* box : {static_cast<QBoxLayout*>(ui.verticalLayout), static_cast<QBoxLayout*>(ui.SerarchLayout)}) {
            for (int i = 0; i < box->count(); ++i) {
                QCOMPARE(box->stretch(i), 0);
                QCOMPARE(box->itemAt(i)->alignment(), Qt::Alignment());
            }
        }
    }

    void geometrySettings()
    {
        QWidget host;
        Ui_DeviceSelector ui;
        ui.setupUi(&host);
        QCOMPARE(host.size(), QSize(600, 350));
        QCOMPARE(ui.verticalLayout->contentsMargins(), QMargins(0, 0, 0, 0));
        QCOMPARE(ui.gridLayout->horizontalSpacing(), 15);
        QList<int> stretches;
        for (int c = 0; c < ui.gridLayout->columnCount(); ++c)
            stretches << ui.gridLayout->columnStretch(c);
        QCOMPARE(stretches, (QList<int>{0, 1, 0, 1}));
        // The search row keeps one empty grid row between itself and the filters.
        QCOMPARE(ui.gridLayout->rowCount(), 5);
        for (int c = 0; c < 4; ++c)
            QVERIFY(!ui.gridLayout->itemAtPosition(3, c));
    }

    void untranslatedTexts_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        QTest::newRow("host title") << QString() << "Form";
        QTest::newRow("groupBox") << "groupBox" << "Filter";
        QTest::newRow("label_2") << "label_2" << "Device:";
        QTest::newRow("labelDeviceVersion") << "labelDeviceVersion" << "Device Version:";
        QTest::newRow("label") << "label" << "Series:";
        QTest::newRow("label_5") << "label_5" << "Speed:";
        QTest::newRow("label_3") << "label_3" << "Package:";
        QTest::newRow("label_4") << "label_4" << "Search:";
        QTest::newRow("matchCountLabel") << "matchCountLabel" << "(0 matches)";
    }

    void untranslatedTexts()
    {
        QFETCH(QString, name);
        QFETCH(QString, text);
        QWidget host;
        Ui_DeviceSelector ui;
        ui.setupUi(&host);
        QCOMPARE(textOf(host, name), text);
    }

    void retranslateUsesFormContext()
    {
        QWidget host;
        Ui_DeviceSelector ui;
        ui.setupUi(&host);
        ui.matchCountLabel->setText(QStringLiteral("(12 matches)"));

        BracketTranslator translator;
        QVERIFY(QCoreApplication::installTranslator(&translator));
        translator.requests.clear();
        ui.retranslateUi(&host);

        QList<QByteArray> sources;
        for (const BracketTranslator::Request& r : translator.requests) {
            QCOMPARE(r.context, QByteArray("DEV::DeviceSelector"));
            QVERIFY(!r.hasDisambiguation);
            QCOMPARE(r.n, -1);
            sources << r.source;
        }
        QCOMPARE(sources, (QList<QByteArray>{"Form", "Filter", "Device:", "Device Version:", "Series:", "Speed:",
                                             "Package:", "Search:", "(0 matches)"}));
        QCOMPARE(textOf(host, QString()), QStringLiteral("[Form]"));
        QCOMPARE(textOf(host, QStringLiteral("groupBox")), QStringLiteral("[Filter]"));
        QCOMPARE(textOf(host, QStringLiteral("label_5")), QStringLiteral("[Speed:]"));
        QCOMPARE(textOf(host, QStringLiteral("matchCountLabel")), QStringLiteral("[(0 matches)]"));
    }

    void connectsHostSlotsByName()
    {
        AutoConnectHost host;
        Ui_DeviceSelector ui;
        ui.setupUi(&host);
        QVERIFY(host.seriesIndexes.isEmpty());
        ui.cbSeries->addItem(QStringLiteral("Any"));
        QCOMPARE(host.seriesIndexes, QList<int>{0});
    }

private:
    /// The user-visible text of the child @p name, or the host's title for an empty name.
    static QString textOf(QWidget& host, const QString& name)
    {
        if (name.isEmpty())
            return host.windowTitle();
        if (auto* box = host.findChild<QGroupBox*>(name))
            return box->title();
        if (auto* label = host.findChild<QLabel*>(name))
            return label->text();
        return QStringLiteral("<no %1>").arg(name);
    }
};

QTEST_MAIN(TestSelectorForm)
#include "tst_selectorform.moc"
