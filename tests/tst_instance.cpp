// The process-wide database: one object, read once even by concurrent first
// calls, from <program dir>/../data/device/device_info.csv, which this test
// writes in a directory of its own.

#include "devicedb.h"
#include "testhelpers.h"

#include <QCoreApplication>
#include <QDir>
#include <QTest>

#include <algorithm>
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
        // Every load reports the malformed last line once.
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
        QCOMPARE(std::count(seen.begin(), seen.end(), seen[0]), long(Threads));
        QCOMPARE(capture.criticals(), QStringList{QStringLiteral("incorrect device info entry \"marker\"")});
    }

    void laterCallsReuseTheFileBesideTheProgram()
    {
        MessageCapture capture;
        DeviceDb* db = DeviceDb::instance();
        QCOMPARE(db, DeviceDb::instance());
        QCOMPARE(capture.count(), 0);
        QCOMPARE(db->allChipInfo().size(), 1);
        QCOMPARE(db->findByID(QStringLiteral("zr9k31-001")).partNumber, QStringLiteral("PN-27"));
    }
};

QTEST_GUILESS_MAIN(TestInstance)
#include "tst_instance.moc"
