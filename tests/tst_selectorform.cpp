// The selector's generated form: members and object names, where each
// control sits, the order things are created in, the layout settings, and
// the texts with and without a translation.

#include "ui_deviceselector.h"

#include <QTest>
#include <QTranslator>

#include <cstring>

using DEV::Ui_DeviceSelector;

namespace {

QStringList namesOf(const QObjectList& objects)
{
    QStringList out;
    for (const QObject* o : objects)
        out << o->objectName();
    return out;
}

/// Texts in the order the form asks for them: title, group box, labels.
QStringList textsOf(const QWidget& host)
{
    QStringList out{host.windowTitle(), host.findChild<QGroupBox*>()->title()};
    for (const char* name : {"label_2", "labelDeviceVersion", "label", "label_5", "label_3", "label_4", "matchCountLabel"})
        out << host.findChild<QLabel*>(QLatin1String(name))->text();
    return out;
}

const QStringList SourceTexts{"Form", "Filter", "Device:", "Device Version:", "Series:", "Speed:", "Package:",
                              "Search:", "(0 matches)"};

/// Brackets every text of the form's context and records the requests.
class BracketTranslator : public QTranslator
{
public:
    mutable QStringList requests;
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* source, const char* disambiguation, int n) const override
    {
        requests << QStringLiteral("%1|%2|%3|%4").arg(context, source).arg(int(disambiguation != nullptr)).arg(n);
        return qstrcmp(context, "DEV::DeviceSelector") ? QString() : QString(QLatin1Char('[') + QString::fromUtf8(source) + ']');
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

} // namespace

class TestSelectorForm : public QObject
{
    Q_OBJECT

private slots:
    // Hosts read the members; their order and names are part of the form class.
    void membersAndNames()
    {
        QWidget host;
        Ui_DeviceSelector ui;
        ui.setupUi(&host);
        const QObjectList members = {ui.verticalLayout, ui.groupBox, ui.gridLayout, ui.cbPackage, ui.cbDevice,
                                     ui.label_2, ui.labelDeviceVersion, ui.label, ui.label_5, ui.label_3,
                                     ui.cbDeviceVersion, ui.cbCondition, ui.cbSeries, ui.SerarchLayout, ui.label_4,
                                     ui.matchCountLabel, ui.tableView};
        QCOMPARE(namesOf(members), (QStringList{"verticalLayout", "groupBox", "gridLayout", "cbPackage", "cbDevice",
                                                "label_2", "labelDeviceVersion", "label", "label_5", "label_3",
                                                "cbDeviceVersion", "cbCondition", "cbSeries", "SerarchLayout", "label_4",
                                                "matchCountLabel", "tableView"}));
        // Member i is the i-th pointer of the structure.
        QCOMPARE(sizeof(Ui_DeviceSelector), members.size() * sizeof(void*));
        for (int i = 0; i < members.size(); ++i) {
            QObject* atOffset = nullptr;
            std::memcpy(&atOffset, reinterpret_cast<const char*>(&ui) + i * sizeof(void*), sizeof atOffset);
            QCOMPARE(atOffset, members.at(i));
            QCOMPARE(host.findChild<QObject*>(members.at(i)->objectName()), members.at(i));
        }
        QCOMPARE(host.objectName(), QStringLiteral("DEV__DeviceSelector"));
        QWidget named;
        named.setObjectName(QStringLiteral("hostSelector"));
        ui.setupUi(&named);
        QCOMPARE(named.objectName(), QStringLiteral("hostSelector"));
    }

    void layout()
    {
        QWidget host;
        Ui_DeviceSelector ui;
        ui.setupUi(&host);
        // Children are listed in the order they were given their parent.
        QCOMPARE(namesOf(host.children()), (QStringList{"verticalLayout", "groupBox", "tableView"}));
        QCOMPARE(namesOf(ui.groupBox->children()),
                 (QStringList{"gridLayout", "cbPackage", "cbDevice", "label_2", "labelDeviceVersion", "label", "label_5",
                              "label_3", "cbDeviceVersion", "cbCondition", "cbSeries", "label_4", "matchCountLabel"}));
        // Row, column and spans of each grid item; row 3 stays empty.
        QStringList cells;
        for (int i = 0; i < ui.gridLayout->count(); ++i) {
            int row, column, rowSpan, columnSpan;
            ui.gridLayout->getItemPosition(i, &row, &column, &rowSpan, &columnSpan);
            QLayoutItem* item = ui.gridLayout->itemAt(i);
            const QObject* object = item->widget() ? static_cast<QObject*>(item->widget()) : item->layout();
            cells << QStringLiteral("%1 %2%3%4%5").arg(object->objectName()).arg(row).arg(column).arg(rowSpan).arg(columnSpan);
        }
        QCOMPARE(cells, (QStringList{"cbPackage 0311", "cbDevice 1111", "label_2 1011", "labelDeviceVersion 2011",
                                     "label 0011", "label_5 1211", "label_3 0211", "cbDeviceVersion 2111",
                                     "cbCondition 1311", "cbSeries 0111", "SerarchLayout 4012"}));
        QCOMPARE(ui.gridLayout->rowCount(), 5);
        QCOMPARE(ui.gridLayout->horizontalSpacing(), 15);
        QList<int> stretches;
        for (int c = 0; c < ui.gridLayout->columnCount(); ++c)
            stretches << ui.gridLayout->columnStretch(c);
        QCOMPARE(stretches, (QList<int>{0, 1, 0, 1}));
        QCOMPARE(ui.verticalLayout->contentsMargins(), QMargins(0, 0, 0, 0));
        QCOMPARE(host.size(), QSize(600, 350));
        for (QBoxLayout* box : {static_cast<QBoxLayout*>(ui.verticalLayout), static_cast<QBoxLayout*>(ui.SerarchLayout)}) {
            QCOMPARE(box->count(), 2);
            for (int i = 0; i < box->count(); ++i)
                QVERIFY(box->stretch(i) == 0 && box->itemAt(i)->alignment() == Qt::Alignment());
        }
        QCOMPARE(ui.SerarchLayout->itemAt(0)->widget(), ui.label_4);
        QCOMPARE(ui.SerarchLayout->itemAt(1)->widget(), ui.matchCountLabel);
        QCOMPARE(ui.verticalLayout->itemAt(1)->widget(), ui.tableView);
    }

    void texts()
    {
        QWidget host;
        Ui_DeviceSelector ui;
        ui.setupUi(&host);
        QCOMPARE(textsOf(host), SourceTexts);

        ui.matchCountLabel->setText(QStringLiteral("(12 matches)"));
        BracketTranslator translator;
        QVERIFY(QCoreApplication::installTranslator(&translator));
        translator.requests.clear();
        ui.retranslateUi(&host);
        QCoreApplication::removeTranslator(&translator);
        QStringList expected;
        for (const QString& text : SourceTexts)
            expected << QStringLiteral("DEV::DeviceSelector|%1|0|-1").arg(text);
        QCOMPARE(translator.requests, expected);
        for (QString& text : expected)
            text = QLatin1Char('[') + text.section('|', 1, 1) + ']';
        QCOMPARE(textsOf(host), expected);
    }

    void connectsHostSlotsByName()
    {
        AutoConnectHost host;
        Ui_DeviceSelector ui;
        ui.setupUi(&host);
        ui.cbSeries->addItem(QStringLiteral("Any"));
        QCOMPARE(host.seriesIndexes, QList<int>{0});
    }
};

QTEST_MAIN(TestSelectorForm)
#include "tst_selectorform.moc"
