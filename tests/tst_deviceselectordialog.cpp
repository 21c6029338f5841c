// The selector dialog: its title and size, the OK button following the
// selector's reports, the relay of those reports, and getSelectedChip() run
// modally and ended the ways a user can end it.

#include "deviceselectordialog.h"

#include "devicedb.h"
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
#include <QSignalSpy>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTranslator>

#include <functional>
#include <memory>

using DEV::ChipInfo;
using DEV::DeviceArg;
using DEV::DeviceDb;
using DEV::DeviceSelector;
using DEV::DeviceSelectorDialog;

namespace {

QByteArray chipLine(const char* id, const char* pn, const char* version, const char* package)
{
    return QByteArray(id) + ',' + pn + ",S1,MK,D1," + version + ',' + package
        + ",1.0V,C6,AUX,1,2,3,4Kb,5Kb,6Kb,7Kb,8,9\n";
}

QPushButton* okButton(const QDialog& dialog)
{
    return dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
}

QPushButton* cancelButton(const QDialog& dialog)
{
    return dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Cancel);
}

QComboBox* box(const QWidget& w, const char* name)
{
    return w.findChild<QComboBox*>(QLatin1String(name));
}

void clickRow(QTableView* table, int row)
{
    const QRect cell = table->visualRect(table->model()->index(row, 0));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());
}

/// Row of @p partNumber in the dialog's table, or -1.
int rowOf(const QWidget& w, const QString& partNumber)
{
    const QAbstractItemModel* model = w.findChild<QTableView*>()->model();
    for (int row = 0; row < model->rowCount(); ++row) {
        if (model->index(row, 0).data().toString() == partNumber)
            return row;
    }
    return -1;
}

QStringList emittedIds(const QSignalSpy& spy)
{
    QStringList out;
    for (const QList<QVariant>& args : spy)
        out << qvariant_cast<DeviceArg>(args.at(0)).deviceId;
    return out;
}

bool sameChip(const ChipInfo& a, const ChipInfo& b)
{
    return a.deviceId == b.deviceId && a.partNumber == b.partNumber && a.series == b.series
        && a.matchKey == b.matchKey && a.device == b.device && a.deviceVersion == b.deviceVersion
        && a.package == b.package && a.voltage == b.voltage && a.speed == b.speed && a.auxiliary == b.auxiliary
        && a.resources == b.resources;
}

bool isEmptyRecord(const ChipInfo& c)
{
    return sameChip(c, ChipInfo()) && c.deviceId.isNull() && c.partNumber.isNull();
}

/// What the user saw in the running dialog before ending it.
struct Seen
{
    bool ran = false;
    bool okEnabled = false;
    bool stillOpen = false;
    QString selectedId;
    QPointer<DeviceSelectorDialog> dialog;
};

/*
 * Once exec() runs its event loop, takes the active modal widget as the
 * dialog, notes what it shows and runs @p end on it. A dialog that is not
 * found, or not closed by @p end, is rejected so that the test fails instead
 * of hanging in exec().
 */
void whenModal(Seen* seen, std::function<void(DeviceSelectorDialog*)> end)
{
    QTimer::singleShot(0, [=]() {
        auto* dialog = qobject_cast<DeviceSelectorDialog*>(QApplication::activeModalWidget());
        if (dialog) {
            seen->ran = true;
            seen->okEnabled = okButton(*dialog)->isEnabled();
            seen->selectedId = dialog->selectedDevice().deviceId;
            seen->dialog = dialog;
            end(dialog);
            seen->stillOpen = dialog->isVisible();
        }
        for (QWidget* w : QApplication::topLevelWidgets()) {
            if (auto* open = qobject_cast<DeviceSelectorDialog*>(w); open && open->isVisible())
                open->reject();
        }
    });
}

} // namespace

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

class TestDeviceSelectorDialog : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<DeviceDb> m_db;

private slots:
    void initTestCase()
    {
        Q_INIT_RESOURCE(searchlineedit_icon);
        QVERIFY(m_dir.isValid());
        const QString path = m_dir.filePath(QStringLiteral("device_info.csv"));
        QVERIFY(TestHelpers::writeFile(path, chipLine("k-01", "PN-1", "B", "P1") + chipLine("k-02", "PN-2", "A", "P2")
                                                 + chipLine("k-03", "PN-3", "B", "P2")
                                                 + chipLine("zr9k31a-015", "PN-15", "", "P1")
                                                 + chipLine("", "PN-NOID", "C", "P3")));
        m_db.reset(new DeviceDb(path));
        QCOMPARE(m_db->allChipInfo().size(), 5);
    }

    void titleSizeAndMethods()
    {
        DeviceSelectorDialog dialog(m_db.get());
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Select Device"));
        QCOMPARE(dialog.sizeHint(), QSize(800, 450));
        // Contents that want more room do not change it.
        dialog.findChild<DeviceSelector*>()->setMinimumSize(1000, 600);
        QVERIFY(dialog.layout()->sizeHint().width() >= 1000);
        QCOMPARE(dialog.sizeHint(), QSize(800, 450));
        const QDialogButtonBox* buttons = dialog.findChild<QDialogButtonBox*>();
        QCOMPARE(buttons->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
        QCOMPARE(buttons->orientation(), Qt::Horizontal);
        QCOMPARE(dialog.layout()->count(), 2);
        QCOMPARE(dialog.layout()->itemAt(0)->widget(), dialog.findChild<DeviceSelector*>());
        QCOMPARE(dialog.layout()->itemAt(1)->widget(), buttons);

        const QMetaObject& mo = DeviceSelectorDialog::staticMetaObject;
        QCOMPARE(QByteArray(mo.className()), QByteArray("DEV::DeviceSelectorDialog"));
        QCOMPARE(mo.methodCount() - mo.methodOffset(), 2);
        const QMetaMethod signal = mo.method(mo.methodOffset());
        const QMetaMethod slot = mo.method(mo.methodOffset() + 1);
        QCOMPARE(signal.methodSignature(), QByteArray("selectedDeviceChanged(DEV::DeviceArg)"));
        QCOMPARE(signal.methodType(), QMetaMethod::Signal);
        QCOMPARE(slot.methodSignature(), QByteArray("onSelectedDeviceChanged(DEV::DeviceArg)"));
        QCOMPARE(slot.access(), QMetaMethod::Private);
        QCOMPARE(signal.parameterType(0), QMetaType::type("DEV::DeviceArg"));
    }

    void okFollowsTheChoice()
    {
        DeviceSelectorDialog dialog(m_db.get());
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        // The selector filtered itself before the dialog listened.
        QVERIFY(okButton(dialog)->isEnabled());

        QTest::keyClick(box(dialog, "cbPackage"), Qt::Key_Down);
        QVERIFY(!okButton(dialog)->isEnabled());
        QTableView* table = dialog.findChild<QTableView*>();
        clickRow(table, rowOf(dialog, QStringLiteral("PN-15")));
        QVERIFY(okButton(dialog)->isEnabled());
        QCOMPARE(dialog.selectedDevice().deviceId, QStringLiteral("zr9k31a-015"));

        QTest::keyClick(box(dialog, "cbCondition"), Qt::Key_Down);
        QVERIFY(!okButton(dialog)->isEnabled());
        QVERIFY(dialog.selectedDevice().deviceId.isNull());
        dialog.setCurrentDevice(QStringLiteral("k-02"));
        QVERIFY(okButton(dialog)->isEnabled());
        QCOMPARE(dialog.selectedDevice().partNumber, QStringLiteral("PN-2"));

        // Only the device id counts: a chosen row without one leaves OK off.
        QTest::keyClick(box(dialog, "cbSeries"), Qt::Key_Up);
        clickRow(table, rowOf(dialog, QStringLiteral("PN-NOID")));
        QCOMPARE(dialog.selectedDevice().partNumber, QStringLiteral("PN-NOID"));
        QVERIFY(!okButton(dialog)->isEnabled());
    }

    void relaysSelectorStreamAfterUpdatingOk()
    {
        DeviceSelectorDialog dialog(m_db.get());
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QSignalSpy fromSelector(dialog.findChild<DeviceSelector*>(), &DeviceSelector::selectedDeviceChanged);
        QSignalSpy fromDialog(&dialog, &DeviceSelectorDialog::selectedDeviceChanged);
        QList<bool> okWhenRelayed;
        connect(&dialog, &DeviceSelectorDialog::selectedDeviceChanged, this,
                [&]() { okWhenRelayed << okButton(dialog)->isEnabled(); });

        dialog.setCurrentDevice(QStringLiteral("k-01"));
        QTest::keyClick(box(dialog, "cbSeries"), Qt::Key_Up);
        clickRow(dialog.findChild<QTableView*>(), rowOf(dialog, QStringLiteral("PN-2")));

        const QStringList expected = {"", "", "", "", "", "k-01", "", "k-02"};
        QCOMPARE(emittedIds(fromSelector), expected);
        QCOMPARE(emittedIds(fromDialog), expected);
        for (int i = 0; i < fromDialog.size(); ++i)
            QVERIFY(sameChip(qvariant_cast<DeviceArg>(fromDialog.at(i).at(0)),
                             qvariant_cast<DeviceArg>(fromSelector.at(i).at(0))));
        QCOMPARE(okWhenRelayed, (QList<bool>{false, false, false, false, false, true, false, true}));
    }

    void textsUseTheirClassContexts()
    {
        ContextTranslator translator;
        QVERIFY(QCoreApplication::installTranslator(&translator));
        DeviceSelectorDialog dialog(m_db.get());
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        auto* search = dialog.findChild<DEV::SearchLineEdit*>();
        QTest::keyClicks(search, QStringLiteral("PN-1"));
        const QString count = dialog.findChild<QLabel*>(QStringLiteral("matchCountLabel"))->text();
        QTest::keyClick(search, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(search, Qt::Key_Backspace);
        QCOMPARE(search->text(), QString());
        const QString zero = dialog.findChild<QLabel*>(QStringLiteral("matchCountLabel"))->text();
        QCoreApplication::removeTranslator(&translator);

        QCOMPARE(dialog.windowTitle(), QStringLiteral("DEV::DeviceSelectorDialog|Select Device"));
        QCOMPARE(count, QStringLiteral("DEV::DeviceSelector|(2 matches)"));
        QCOMPARE(zero, QStringLiteral("DEV::DeviceSelector|(0 matches)"));
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
        QTest::newRow("ok after choosing another row") << "k-01" << "row PN-3, ok" << "k-01" << "k-03";
        // Nothing was preset, so nothing was emitted: OK is still enabled,
        // and accepting gives no chip.
        QTest::newRow("ok with empty id") << QString() << "ok" << QString() << QString();
        QTest::newRow("ok with unknown id") << "k-99" << "ok" << QString() << QString();
        QTest::newRow("cancel") << "k-01" << "cancel" << "k-01" << QString();
        QTest::newRow("escape") << "k-01" << "escape" << "k-01" << QString();
        QTest::newRow("close") << "k-01" << "close" << "k-01" << QString();
        QTest::newRow("reject") << "k-02" << "reject" << "k-02" << QString();
    }

    void getSelectedChip()
    {
        QFETCH(QString, preset);
        QFETCH(QString, ending);
        QFETCH(QString, selectedWhenEnded);
        QFETCH(QString, returned);

        Seen seen;
        whenModal(&seen, [ending](DeviceSelectorDialog* dialog) {
            if (ending.startsWith(QLatin1String("row "))) {
                const QString pn = ending.mid(4, ending.indexOf(QLatin1Char(',')) - 4);
                clickRow(dialog->findChild<QTableView*>(), rowOf(*dialog, pn));
            }
            if (ending.endsWith(QLatin1String("ok")))
                QTest::mouseClick(okButton(*dialog), Qt::LeftButton);
            else if (ending == QLatin1String("cancel"))
                QTest::mouseClick(cancelButton(*dialog), Qt::LeftButton);
            else if (ending == QLatin1String("escape"))
                QTest::keyClick(dialog, Qt::Key_Escape);
            else if (ending == QLatin1String("close"))
                dialog->close();
            else
                dialog->reject();
        });
        const ChipInfo chip = DeviceSelectorDialog::getSelectedChip(nullptr, m_db.get(), preset);

        QVERIFY(seen.ran);
        QVERIFY(!seen.stillOpen);
        // Either a chip was preset, or nothing was reported since construction.
        QVERIFY(seen.okEnabled);
        QCOMPARE(seen.selectedId, selectedWhenEnded);
        if (returned.isEmpty())
            QVERIFY(isEmptyRecord(chip));
        else
            QVERIFY(sameChip(chip, m_db->findByID(returned)));
        // The dialog does not outlive the call.
        QVERIFY(seen.dialog.isNull());
    }
};

QTEST_MAIN(TestDeviceSelectorDialog)
#include "tst_deviceselectordialog.moc"
