// The selector dialog: its title and size, the OK button following the
// selector's reports, the relay of those reports, and getSelectedChip() run
// modally and ended the ways a user can end it.

#include "deviceselectordialog.h"

#include "deviceselector.h"
#include "searchlineedit.h"
#include "testhelpers.h"

#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLayout>
#include <QMetaMethod>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTranslator>

using DEV::ChipInfo;
using DEV::DeviceSelector;
using DEV::DeviceSelectorDialog;
using TestHelpers::emittedIds;
using TestHelpers::fields;

namespace {

QPushButton* button(const QDialog& dialog, QDialogButtonBox::StandardButton which = QDialogButtonBox::Ok)
{
    return dialog.findChild<QDialogButtonBox*>()->button(which);
}

void keyOnBox(const QWidget& w, const char* name, Qt::Key key)
{
    QTest::keyClick(w.findChild<QComboBox*>(QLatin1String(name)), key);
}

void clickPart(const QWidget& w, const QString& partNumber)
{
    auto* table = w.findChild<QTableView*>();
    TestHelpers::clickRow(table, TestHelpers::columnTexts(*table->model(), 0).indexOf(partNumber));
}

/// Prefixes every text with the context it was asked for.
class ContextTranslator : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* sourceText, const char*, int) const override
    {
        return QString::fromLatin1(context) + QLatin1Char('|') + QString::fromUtf8(sourceText);
    }
};

} // namespace

class TestDeviceSelectorDialog : public QObject
{
    Q_OBJECT

private:
    TestHelpers::Catalogues m_files;
    std::unique_ptr<DEV::DeviceDb> m_db;

private slots:
    void initTestCase()
    {
        Q_INIT_RESOURCE(searchlineedit_icon);
        using TestHelpers::chipLine;
        m_db = m_files.load(chipLine("k-01", "PN-1", "S1", "D1", "B", "P1") + chipLine("k-02", "PN-2", "S1", "D1", "A", "P2")
                            + chipLine("k-03", "PN-3", "S1", "D1", "B", "P2")
                            + chipLine("zr9k31a-015", "PN-15", "S1", "D1", "", "P1")
                            + chipLine("", "PN-NOID", "S1", "D1", "C", "P3"));
        QCOMPARE(m_db->allChipInfo().size(), 5);
    }

    void layoutSizeAndMethods()
    {
        DeviceSelectorDialog dialog(m_db.get());
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Select Device"));
        // Contents that want more room do not change the size hint.
        dialog.findChild<DeviceSelector*>()->setMinimumSize(1000, 600);
        QCOMPARE(dialog.sizeHint(), QSize(800, 450));
        const QDialogButtonBox* buttons = dialog.findChild<QDialogButtonBox*>();
        QCOMPARE(buttons->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
        QCOMPARE(dialog.layout()->count(), 2);
        QCOMPARE(dialog.layout()->itemAt(0)->widget(), dialog.findChild<DeviceSelector*>());
        QCOMPARE(dialog.layout()->itemAt(1)->widget(), buttons);
        const QMetaObject& mo = DeviceSelectorDialog::staticMetaObject;
        QList<QByteArray> methods{mo.className()};
        for (int i = mo.methodOffset(); i < mo.methodCount(); ++i)
            methods << mo.method(i).methodSignature();
        QCOMPARE(methods, (QList<QByteArray>{"DEV::DeviceSelectorDialog", "selectedDeviceChanged(DEV::DeviceArg)",
                                             "onSelectedDeviceChanged(DEV::DeviceArg)"}));
    }

    void okFollowsTheChoice()
    {
        DeviceSelectorDialog dialog(m_db.get());
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        // The selector filtered itself before the dialog listened.
        QVERIFY(button(dialog)->isEnabled());
        keyOnBox(dialog, "cbPackage", Qt::Key_Down);
        QVERIFY(!button(dialog)->isEnabled());
        clickPart(dialog, QStringLiteral("PN-15"));
        QVERIFY(button(dialog)->isEnabled());
        keyOnBox(dialog, "cbCondition", Qt::Key_Down);
        QVERIFY(!button(dialog)->isEnabled());
        dialog.setCurrentDevice(QStringLiteral("k-02"));
        QVERIFY(button(dialog)->isEnabled());
        QCOMPARE(dialog.selectedDevice().partNumber, QStringLiteral("PN-2"));
        // Only the device id counts: a chosen row without one leaves OK off.
        keyOnBox(dialog, "cbSeries", Qt::Key_Up);
        clickPart(dialog, QStringLiteral("PN-NOID"));
        QCOMPARE(dialog.selectedDevice().partNumber, QStringLiteral("PN-NOID"));
        QVERIFY(!button(dialog)->isEnabled());
    }

    void relaysSelectorStreamAfterUpdatingOk()
    {
        DeviceSelectorDialog dialog(m_db.get());
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QSignalSpy fromSelector(dialog.findChild<DeviceSelector*>(), &DeviceSelector::selectedDeviceChanged);
        QSignalSpy fromDialog(&dialog, &DeviceSelectorDialog::selectedDeviceChanged);
        QStringList relayed;
        connect(&dialog, &DeviceSelectorDialog::selectedDeviceChanged, this, [&](const DEV::DeviceArg& device) {
            relayed << fields(device).join(',') + (button(dialog)->isEnabled() ? " OK" : " off");
        });
        dialog.setCurrentDevice(QStringLiteral("k-01"));
        keyOnBox(dialog, "cbSeries", Qt::Key_Up);
        clickPart(dialog, QStringLiteral("PN-2"));

        QCOMPARE(emittedIds(fromDialog), (QStringList{"", "", "", "", "", "k-01", "", "k-02"}));
        QCOMPARE(relayed.size(), fromSelector.size());
        for (int i = 0; i < relayed.size(); ++i) {
            const ChipInfo chip = qvariant_cast<DEV::DeviceArg>(fromSelector.at(i).at(0));
            QCOMPARE(relayed.at(i), fields(chip).join(',') + (chip.deviceId.isEmpty() ? " off" : " OK"));
        }
    }

    void textsUseTheirClassContexts()
    {
        ContextTranslator translator;
        QVERIFY(QCoreApplication::installTranslator(&translator));
        DeviceSelectorDialog dialog(m_db.get());
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        auto* search = dialog.findChild<DEV::SearchLineEdit*>();
        const auto count = [&dialog] { return dialog.findChild<QLabel*>(QStringLiteral("matchCountLabel"))->text(); };
        QTest::keyClicks(search, QStringLiteral("PN-1"));
        QCOMPARE(count(), QStringLiteral("DEV::DeviceSelector|(2 matches)"));
        QTest::keyClick(search, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(search, Qt::Key_Backspace);
        QCOMPARE(count(), QStringLiteral("DEV::DeviceSelector|(0 matches)"));
        QCoreApplication::removeTranslator(&translator);
        QCOMPARE(dialog.windowTitle(), QStringLiteral("DEV::DeviceSelectorDialog|Select Device"));
        QVERIFY(dialog.findChild<QLabel*>(QStringLiteral("labelDeviceVersion"))
                    ->text()
                    .startsWith(QLatin1String("DEV::DeviceSelector|<p style='line-height:60%'> Device Version: </p>")));
    }

    void getSelectedChip_data()
    {
        QTest::addColumn<QString>("preset");
        QTest::addColumn<QString>("ending");
        QTest::addColumn<QString>("selectedWhenEnded");
        QTest::addColumn<QString>("returned");
        QTest::newRow("ok on preset chip") << "k-01" << "ok" << "k-01" << "k-01";
        QTest::newRow("ok on old identifier") << "zr9k31-013" << "ok" << "zr9k31a-015" << "zr9k31a-015";
        QTest::newRow("ok after choosing another row") << "k-01" << "PN-3 ok" << "k-01" << "k-03";
        // Nothing preset, nothing reported: OK stays enabled and gives no chip.
        QTest::newRow("ok with empty id") << QString() << "ok" << QString() << QString();
        QTest::newRow("ok with unknown id") << "k-99" << "ok" << QString() << QString();
        for (const char* ending : {"cancel", "escape", "close"})
            QTest::newRow(ending) << "k-01" << ending << "k-01" << QString();
    }
    void getSelectedChip()
    {
        QFETCH(QString, preset);
        QFETCH(QString, ending);
        QFETCH(QString, selectedWhenEnded);
        QFETCH(QString, returned);
        // Once exec() runs: note what the dialog shows, end it as the row
        // says, and reject anything left open so that a failure cannot hang.
        QString seen;
        QPointer<DeviceSelectorDialog> dialog;
        QTimer::singleShot(0, [&]() {
            dialog = qobject_cast<DeviceSelectorDialog*>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            seen = QStringLiteral("%1 %2").arg(button(*dialog)->isEnabled()).arg(dialog->selectedDevice().deviceId);
            if (ending.startsWith(QLatin1String("PN-")))
                clickPart(*dialog, ending.section(' ', 0, 0));
            if (ending.endsWith(QLatin1String("ok")) || ending == QLatin1String("cancel"))
                QTest::mouseClick(button(*dialog, ending == "cancel" ? QDialogButtonBox::Cancel : QDialogButtonBox::Ok),
                                  Qt::LeftButton);
            else if (ending == QLatin1String("escape"))
                QTest::keyClick(dialog, Qt::Key_Escape);
            else
                dialog->close();
            if (dialog->isVisible()) {
                seen += QStringLiteral(" still open");
                dialog->reject();
            }
        });
        const ChipInfo chip = DeviceSelectorDialog::getSelectedChip(nullptr, m_db.get(), preset);
        QCOMPARE(seen, QStringLiteral("1 ") + selectedWhenEnded);
        QCOMPARE(fields(chip), fields(returned.isEmpty() ? ChipInfo() : m_db->findByID(returned)));
        QVERIFY(dialog.isNull()); // the dialog does not outlive the call
    }
};

QTEST_MAIN(TestDeviceSelectorDialog)
#include "tst_deviceselectordialog.moc"
