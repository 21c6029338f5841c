// The process-wide database: where it reads from, that it is one object, and
// that concurrent first calls read the file once.
//
// This test runs from a directory of its own and writes the data file that
// instance() is to find, <program dir>/../data/device/device_info.csv.

#include "devicedb.h"
#include "testhelpers.h"

#include <QCoreApplication>
#include <QDir>
#include <QTest>

#include <atomic>
#include <thread>
#include <vector>

using DEV::DeviceDb;
using TestHelpers::MessageCapture;

class TestInstance : public QObject
{
    Q_OBJECT

private slots:
    void concurrentFirstCallsShareOneLoad()
    {
        const QString dataDir = QCoreApplication::applicationDirPath() + QStringLiteral("/../data/device");
        QVERIFY(QDir().mkpath(dataDir));
        // The malformed last line makes every load leave one message behind,
        // so the number of messages is the number of loads.
        QVERIFY(TestHelpers::writeFile(dataDir + QStringLiteral("/device_info.csv"),
                                       TestHelpers::line19("zr9k31a-027", "PN-27") + "marker\n"));

        MessageCapture capture;
        constexpr int Threads = 16;
        std::vector<DeviceDb*> seen(Threads, nullptr);
        std::atomic<int> ready{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < Threads; ++i) {
            threads.emplace_back([&, i] {
                ++ready;
                while (ready.load() < Threads) {
                }
                seen[i] = DeviceDb::instance();
            });
        }
        for (std::thread& t : threads)
            t.join();

        QVERIFY(seen[0] != nullptr);
        for (DeviceDb* db : seen)
            QCOMPARE(db, seen[0]);
        QCOMPARE(capture.criticals(), QStringList{QStringLiteral("incorrect device info entry \"marker\"")});
        QCOMPARE(DeviceDb::instance(), seen[0]);
    }

    void readsTheFileBesideTheProgram()
    {
        DeviceDb* db = DeviceDb::instance();
        QCOMPARE(db->allChipInfo().size(), 1);
        QCOMPARE(db->findByID(QStringLiteral("zr9k31-001")).partNumber, QStringLiteral("PN-27"));
    }

    void laterCallsDoNotReload()
    {
        MessageCapture capture;
        DeviceDb* first = DeviceDb::instance();
        DeviceDb* second = DeviceDb::instance();
        QCOMPARE(first, second);
        QCOMPARE(capture.count(), 0);
    }
};

QTEST_GUILESS_MAIN(TestInstance)
#include "tst_instance.moc"
