// The catalogue shipped in data/device/: it loads without complaint and still
// holds the chips that old projects' identifiers are translated to.

#include "testhelpers.h"

#include <chipinfo.h>
#include <devicedb.h>

#include <QTest>

class TestCatalogue : public QObject
{
    Q_OBJECT

private slots:
    void loadsCleanly()
    {
        const TestHelpers::MessageCapture capture;
        const DEV::DeviceDb db(QStringLiteral(DEVICE_CATALOGUE));
        QCOMPARE(capture.criticals(), QStringList());
        const QList<DEV::ChipInfo> chips = db.allChipInfo();
        QVERIFY2(chips.size() > 400, qPrintable(QString::number(chips.size())));
        // Every line is complete: the resource counts are all there.
        for (const DEV::ChipInfo& chip : chips) {
            QVERIFY2(!chip.deviceId.isEmpty() && !chip.partNumber.isEmpty(), qPrintable(chip.partNumber));
            QVERIFY2(chip.resources.size() >= 9, qPrintable(chip.partNumber));
        }
    }

    void renamedTargetsPresent_data()
    {
        QTest::addColumn<QString>("id");
        for (const char* id : {"zr9k31a-000", "zr9k31a-015", "zr9k31a-021", "zr9k31a-009", "zr9k31a-024",
                               "zr9k31a-018", "zr9k31a-012", "zr9k31a-003", "zr9k31a-006", "zr9k31a-028",
                               "zr9k31a-027"})
            QTest::newRow(id) << QString::fromLatin1(id);
    }

    void renamedTargetsPresent()
    {
        QFETCH(QString, id);
        const DEV::DeviceDb db(QStringLiteral(DEVICE_CATALOGUE));
        const DEV::ChipInfo chip = db.findByID(id);
        QCOMPARE(chip.deviceId, id);
        QVERIFY(!chip.partNumber.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestCatalogue)
#include "tst_catalogue.moc"
