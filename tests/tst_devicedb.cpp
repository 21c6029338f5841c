// Look-ups of the database: by part number, by part number and match key,
// by device identifier (with the zr9k31 renumbering), and the whole lists.

#include "devicedb.h"
#include "testhelpers.h"

#include <QTemporaryDir>
#include <QTest>

using DEV::ChipInfo;
using DEV::DeviceArg;
using DEV::DeviceDb;
using TestHelpers::line19;

class TestDeviceDb : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<DeviceDb> m_db;

    static QStringList ids(const QList<ChipInfo>& chips)
    {
        QStringList out;
        for (const ChipInfo& c : chips)
            out << c.deviceId;
        return out;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        // Versions are all distinct where the order matters, since records
        // with equal versions have no defined order.
        QByteArray bytes;
        bytes += line19("id-shared-1", "PN-SHARED", "A", "S1", "K1");
        bytes += line19("zr9k31a-015", "PN-9K-15", "C");
        bytes += line19("id-shared-3", "PN-SHARED", "", "S1", "K3");
        bytes += line19("zr9k31-013", "PN-OLD-13", "D");
        bytes += line19("id-shared-2", "PN-SHARED", "B", "S1", "K2");
        bytes += line19("zr9k31-006", "PN-OLD-06", "E");
        bytes += line19("dup", "PN-DUP-1", "G");
        bytes += line19("dup", "PN-DUP-2", "F");
        bytes += line19("", "PN-EMPTY-ID", "H", "S1", "");
        const QString path = m_dir.filePath(QStringLiteral("device_info.csv"));
        QVERIFY(TestHelpers::writeFile(path, bytes));
        m_db.reset(new DeviceDb(path));
        QCOMPARE(m_db->allChipInfo().size(), 9);
    }

    void allChipInfoInVersionOrder()
    {
        QCOMPARE(ids(m_db->allChipInfo()),
                 (QStringList{"", "dup", "dup", "zr9k31-006", "zr9k31-013", "zr9k31a-015", "id-shared-2",
                              "id-shared-1", "id-shared-3"}));
    }

    void allDeviceMirrorsAllChipInfo()
    {
        const QList<ChipInfo> chips = m_db->allChipInfo();
        const QList<DeviceArg> devices = m_db->allDevice();
        QCOMPARE(devices.size(), chips.size());
        for (int i = 0; i < chips.size(); ++i) {
            QCOMPARE(devices.at(i).partNumber, chips.at(i).partNumber);
            QCOMPARE(devices.at(i).deviceVersion, chips.at(i).deviceVersion);
            QCOMPARE(devices.at(i).resources, chips.at(i).resources);
        }
        // Both records with the device identifier "dup" are there, and an
        // equality search finds the first.
        DeviceArg probe;
        probe.deviceId = QStringLiteral("dup");
        QCOMPARE(devices.indexOf(probe), 1);
        QCOMPARE(devices.count(probe), 2);
    }

    void findByPN_data()
    {
        QTest::addColumn<QString>("pn");
        QTest::addColumn<QStringList>("expectedIds");

        QTest::newRow("three records share it, database order")
            << "PN-SHARED" << QStringList{"id-shared-2", "id-shared-1", "id-shared-3"};
        QTest::newRow("single") << "PN-9K-15" << QStringList{"zr9k31a-015"};
        QTest::newRow("other letter case") << "pn-shared" << QStringList{};
        QTest::newRow("trailing blank") << "PN-SHARED " << QStringList{};
        QTest::newRow("prefix only") << "PN-SH" << QStringList{};
        QTest::newRow("empty") << "" << QStringList{};
    }

    void findByPN()
    {
        QFETCH(QString, pn);
        QFETCH(QStringList, expectedIds);
        QCOMPARE(ids(m_db->findByPN(pn)), expectedIds);
    }

    void find_data()
    {
        QTest::addColumn<QString>("pn");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("expectedId");

        QTest::newRow("both keys right") << "PN-SHARED" << "K3" << "id-shared-3";
        QTest::newRow("wrong second key") << "PN-SHARED" << "K9" << "";
        QTest::newRow("key of another part number") << "PN-9K-15" << "K3" << "";
        QTest::newRow("second key in other case") << "PN-SHARED" << "k3" << "";
        QTest::newRow("empty key matches an empty key") << "PN-EMPTY-ID" << "" << "";
    }

    void find()
    {
        QFETCH(QString, pn);
        QFETCH(QString, key);
        QFETCH(QString, expectedId);
        const ChipInfo c = m_db->find(pn, key);
        QCOMPARE(c.deviceId, expectedId);
        if (QTest::currentDataTag() == QByteArray("empty key matches an empty key"))
            QCOMPARE(c.partNumber, QStringLiteral("PN-EMPTY-ID"));
        else if (expectedId.isEmpty())
            QVERIFY(c.partNumber.isEmpty());
    }

    void compatTable_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("translated");

        const char* pairs[][2] = {
            {"zr9k31-000", "zr9k31a-000"}, {"zr9k31-013", "zr9k31a-015"}, {"zr9k31-009", "zr9k31a-021"},
            {"zr9k31-006", "zr9k31a-009"}, {"zr9k31-014", "zr9k31a-024"}, {"zr9k31-011", "zr9k31a-018"},
            {"zr9k31-004", "zr9k31a-012"}, {"zr9k31-002", "zr9k31a-003"}, {"zr9k31-008", "zr9k31a-006"},
            {"zr9k31-007", "zr9k31a-028"}, {"zr9k31-001", "zr9k31a-027"},
        };
        for (const auto& p : pairs)
            QTest::newRow(p[0]) << QString::fromLatin1(p[0]) << QString::fromLatin1(p[1]);

        QTest::newRow("already current") << "zr9k31a-015" << "zr9k31a-015";
        QTest::newRow("old form, number not listed") << "zr9k31-003" << "zr9k31-003";
        QTest::newRow("capitals") << "ZR9K31-013" << "ZR9K31-013";
        QTest::newRow("trailing blank") << "zr9k31-013 " << "zr9k31-013 ";
        QTest::newRow("leading blank") << " zr9k31-013" << " zr9k31-013";
        QTest::newRow("current id is not mapped back") << "zr9k31a-000" << "zr9k31a-000";
        QTest::newRow("empty") << "" << "";
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
        QTest::addColumn<QString>("expectedId");
        QTest::addColumn<QString>("expectedPn");

        QTest::newRow("current id") << "zr9k31a-015" << "zr9k31a-015" << "PN-9K-15";
        QTest::newRow("old id resolves to the current one") << "zr9k31-013" << "zr9k31a-015" << "PN-9K-15";
        // The file lists zr9k31-006 itself, but only its translation
        // zr9k31a-009 is looked up, and the file does not list that.
        QTest::newRow("file lists only the old id") << "zr9k31-006" << "" << "";
        QTest::newRow("old form not in the table is looked up as is") << "zr9k31-003" << "" << "";
        QTest::newRow("first of two with one id") << "dup" << "dup" << "PN-DUP-1";
        QTest::newRow("unknown") << "nope" << "" << "";
        QTest::newRow("other letter case") << "ZR9K31A-015" << "" << "";
        QTest::newRow("trailing blank") << "zr9k31a-015 " << "" << "";
        QTest::newRow("empty id finds the record without one") << "" << "" << "PN-EMPTY-ID";
    }

    void findByID()
    {
        QFETCH(QString, id);
        QFETCH(QString, expectedId);
        QFETCH(QString, expectedPn);
        const ChipInfo c = m_db->findByID(id);
        QCOMPARE(c.deviceId, expectedId);
        QCOMPARE(c.partNumber, expectedPn);
    }

    void valuesOutliveTheDatabase()
    {
        const QString path = m_dir.filePath(QStringLiteral("short-lived.csv"));
        QVERIFY(TestHelpers::writeFile(path, line19("id-x", "PN-X")));
        QList<ChipInfo> chips;
        ChipInfo one;
        {
            DeviceDb db(path);
            chips = db.allChipInfo();
            one = db.findByID(QStringLiteral("id-x"));
        }
        QCOMPARE(chips.size(), 1);
        QCOMPARE(chips.at(0).partNumber, QStringLiteral("PN-X"));
        QCOMPARE(one.resources.size(), 9);
    }
};

QTEST_GUILESS_MAIN(TestDeviceDb)
#include "tst_devicedb.moc"
