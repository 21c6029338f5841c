// Look-ups of the database: by part number, by part number and match key,
// by device identifier (with the zr9k31 renumbering), and the whole lists.

#include "testhelpers.h"

#include <QTest>

using DEV::ChipInfo;
using DEV::DeviceArg;
using DEV::DeviceDb;
using TestHelpers::ids;
using TestHelpers::line19;

class TestDeviceDb : public QObject
{
    Q_OBJECT

private:
    TestHelpers::Catalogues m_files;
    std::unique_ptr<DeviceDb> m_db;

private slots:
    void initTestCase()
    {
        // Distinct versions wherever the order matters: equal versions have none.
        m_db = m_files.load(line19("id-shared-1", "PN-SHARED", "A", "S1", "K1") + line19("zr9k31a-015", "PN-15", "C")
                            + line19("id-shared-3", "PN-SHARED", "", "S1", "K3") + line19("zr9k31-013", "PN-OLD", "D")
                            + line19("id-shared-2", "PN-SHARED", "B", "S1", "K2") + line19("zr9k31-006", "PN-06", "E")
                            + line19("dup", "PN-DUP-1", "G") + line19("dup", "PN-DUP-2", "F")
                            + line19("", "PN-NO-ID", "H", "S1", ""));
        QCOMPARE(ids(m_db->allChipInfo()), (QStringList{"", "dup", "dup", "zr9k31-006", "zr9k31-013", "zr9k31a-015",
                                                        "id-shared-2", "id-shared-1", "id-shared-3"}));
    }

    void allDeviceKeepsEveryRecord()
    {
        const QList<DeviceArg> devices = m_db->allDevice();
        QCOMPARE(devices.size(), m_db->allChipInfo().size());
        for (int i = 0; i < devices.size(); ++i)
            QCOMPARE(TestHelpers::fields(devices.at(i)), TestHelpers::fields(m_db->allChipInfo().at(i)));
    }

    void findByPN_data()
    {
        QTest::addColumn<QString>("pn");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("shared by three, database order")
            << "PN-SHARED" << QStringList{"id-shared-2", "id-shared-1", "id-shared-3"};
        QTest::newRow("other case") << "pn-shared" << QStringList();
        QTest::newRow("trailing blank") << "PN-SHARED " << QStringList();
        QTest::newRow("prefix") << "PN-SH" << QStringList();
    }
    void findByPN()
    {
        QFETCH(QString, pn);
        QFETCH(QStringList, expected);
        QCOMPARE(ids(m_db->findByPN(pn)), expected);
    }

    void find_data()
    {
        QTest::addColumn<QString>("pn");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("expectedPn");
        QTest::newRow("both right") << "PN-SHARED" << "K3" << "PN-SHARED";
        QTest::newRow("wrong second key") << "PN-SHARED" << "K9" << "";
        QTest::newRow("second key in other case") << "PN-SHARED" << "k3" << "";
        QTest::newRow("key of another part number") << "PN-15" << "K3" << "";
        QTest::newRow("empty key matches an empty key") << "PN-NO-ID" << "" << "PN-NO-ID";
    }
    void find()
    {
        QFETCH(QString, pn);
        QFETCH(QString, key);
        QFETCH(QString, expectedPn);
        const ChipInfo c = m_db->find(pn, key);
        QCOMPARE(c.partNumber, expectedPn);
        if (!expectedPn.isEmpty())
            QCOMPARE(c.matchKey, key);
    }

    void compatTable_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("translated");
        // Old numbers and the new ones they became; everything else stays as it is.
        const QStringList from{"000", "013", "009", "006", "014", "011", "004", "002", "008", "007", "001"};
        const QStringList to{"000", "015", "021", "009", "024", "018", "012", "003", "006", "028", "027"};
        for (int i = 0; i < from.size(); ++i)
            QTest::newRow(qPrintable(from.at(i))) << "zr9k31-" + from.at(i) << "zr9k31a-" + to.at(i);
        for (const char* same : {"zr9k31a-015", "zr9k31-003", "ZR9K31-013", "zr9k31-013 ", " zr9k31-013", ""})
            QTest::newRow(same) << same << same;
    }
    void compatTable()
    {
        QFETCH(QString, id);
        QFETCH(QString, translated);
        QCOMPARE(DEV::deviceIdCompatFor9k31(id), translated);
    }

    void findByID_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("expectedPn");
        QTest::newRow("current id") << "zr9k31a-015" << "PN-15";
        QTest::newRow("old id finds the current one") << "zr9k31-013" << "PN-15";
        // Only the translation zr9k31a-009 is looked up, which the file lacks.
        QTest::newRow("file lists only the old id") << "zr9k31-006" << "";
        QTest::newRow("first of two with one id") << "dup" << "PN-DUP-1";
        QTest::newRow("unknown") << "nope" << "";
        QTest::newRow("other case") << "ZR9K31A-015" << "";
        QTest::newRow("trailing blank") << "zr9k31a-015 " << "";
        QTest::newRow("empty id finds the record without one") << "" << "PN-NO-ID";
    }
    void findByID()
    {
        QFETCH(QString, id);
        QFETCH(QString, expectedPn);
        QCOMPARE(m_db->findByID(id).partNumber, expectedPn);
    }

    void missingFileAnswersEmpty()
    {
        TestHelpers::MessageCapture capture;
        DeviceDb db(m_files.path(QStringLiteral("missing.csv")));
        QVERIFY(db.allChipInfo().isEmpty());
        QVERIFY(db.allDevice().isEmpty());
        QVERIFY(db.findByPN(QString()).isEmpty());
        QVERIFY(db.find(QString(), QString()).partNumber.isNull());
        QVERIFY(db.findByID(QStringLiteral("zr9k31-013")).deviceId.isNull());
    }
};

QTEST_GUILESS_MAIN(TestDeviceDb)
#include "tst_devicedb.moc"
