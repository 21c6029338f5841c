// The database from many threads at once: concurrent first calls of
// instance() share one load, and the const queries of one database may run
// in parallel. Built and run under ThreadSanitizer as well.

#include "chipfilter.h"
#include "devicedb.h"
#include "testhelpers.h"

#include <QCoreApplication>
#include <QDir>
#include <QTest>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

using DEV::ChipInfo;
using DEV::DeviceDb;

namespace {

constexpr int ThreadCount = 8;

// Starts ThreadCount threads that wait for each other and then run job(i).
void runTogether(const std::function<void(int)>& job)
{
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < ThreadCount; ++i) {
        threads.emplace_back([&, i] {
            ++ready;
            while (ready.load() < ThreadCount)
                std::this_thread::yield();
            job(i);
        });
    }
    for (std::thread& t : threads)
        t.join();
}

} // namespace

class TestConcurrency : public QObject
{
    Q_OBJECT

private:
    QByteArray m_catalogue;
    int m_chips = 0;

private slots:
    void initTestCase()
    {
        for (int i = 0; i < 400; ++i) {
            const QByteArray n = QByteArray::number(i);
            m_catalogue += TestHelpers::line19("zr9k31a-" + n.rightJustified(3, '0'), "PN-" + n,
                                               QByteArray(1, char('A' + i % 3)), "S" + QByteArray::number(i % 7));
        }
        m_chips = 400;
        m_catalogue += "broken line\n";
        const QString dataDir = QCoreApplication::applicationDirPath() + QStringLiteral("/../data/device");
        QVERIFY(QDir().mkpath(dataDir));
        QVERIFY(TestHelpers::writeFile(dataDir + QStringLiteral("/device_info.csv"), m_catalogue));
    }

    void instanceFromManyThreads()
    {
        TestHelpers::MessageCapture capture;
        std::vector<DeviceDb*> seen(ThreadCount, nullptr);
        std::vector<int> sizes(ThreadCount, -1);
        runTogether([&](int i) {
            seen[i] = DeviceDb::instance();
            sizes[i] = seen[i]->allChipInfo().size();
        });
        for (int i = 0; i < ThreadCount; ++i) {
            QCOMPARE(seen[i], seen[0]);
            QCOMPARE(sizes[i], m_chips);
        }
        // One load: the broken line was reported once.
        QCOMPARE(capture.criticals().size(), 1);
    }

    // Every thread asks and checks; a copy handed out may be changed by its
    // owner without touching the database.
    void queriesInParallel()
    {
        DeviceDb* db = DeviceDb::instance();
        std::atomic<int> failures{0};
        runTogether([&](int t) {
            for (int round = 0; round < 50; ++round) {
                const int i = (t * 37 + round * 11) % m_chips;
                const QString pn = QStringLiteral("PN-%1").arg(i);
                DEV::ChipFilter series;
                series.series = QStringLiteral("S%1").arg(t % 7);
                const QList<ChipInfo> ofSeries = db->filterChips(series);
                const DEV::ChipFilterBySearch search{round % 2 * 2, round % 4, false, round % 4 ? "PN-1" : "PN-1*"};
                const int hits = db->filterChips(search, ofSeries).size();
                QList<ChipInfo> mine = db->allChipInfo();
                mine[0].partNumber = QStringLiteral("changed");
                const bool ok = db->findByID(QStringLiteral("zr9k31a-%1").arg(i, 3, 10, QLatin1Char('0'))).partNumber == pn
                    && db->findByPN(pn).size() == 1 && db->findByID("zr9k31-013").partNumber == QLatin1String("PN-15")
                    && db->allDevice().size() == m_chips && !ofSeries.isEmpty() && hits <= ofSeries.size()
                    && db->filterChips(search, ofSeries).size() == hits && db->allChipInfo().at(0).partNumber != "changed";
                failures += ok ? 0 : 1;
            }
        });
        QCOMPARE(failures.load(), 0);
    }
};

QTEST_GUILESS_MAIN(TestConcurrency)
#include "tst_concurrency.moc"
