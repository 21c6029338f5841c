// SPDX-License-Identifier: BSD-3-Clause
// The database: DeviceArg, how a data file becomes the list (exact cases, then the plain reference loader on random
// and hostile files), the messages a host's log shows, the look-ups, and the process-wide database on the bundled
// catalogue, from many threads at once (also under ThreadSanitizer).

#include "chipfilter.h"
#include "devicedb_p.h"
#include "reference/reference.h"
#include "testhelpers.h"

#include <QTextCodec>

#include <functional>
#include <thread>

using DEV::ChipInfo;
using DEV::DeviceArg;
using DEV::DeviceDb;
using TestHelpers::fields;
using TestHelpers::MessageCapture;
using L = QStringList;

namespace {

// Every member of every record, in list order: device version first, and within a version the order of the file.
L records(const QList<ChipInfo>& chips)
{
    L out;
    for (const ChipInfo& c : chips)
        out << fields(c).join(QLatin1Char('|'));
    return out;
}

/// Lines of random columns made of pieces that trouble a loader: blanks, multi-byte and broken UTF-8, NUL, CR,
/// quotes, byte-order marks.
QByteArray randomFile(QRandomGenerator& rng)
{
    static const QList<QByteArray> pieces{"", " ", "\t", "A", "B", "b", "zr9k31a-015", "72Kb", " 64 ", "\xC2\xB5",
                                          "\xE6\x97\xA5", "\xC3", "\x80", "\xFF", "\"", "\\", QByteArray(1, '\0'), "\r",
                                          "\xEF\xBB\xBF", "\r\n", "\n\n"};
    static const QList<QByteArray> boms{"", "", "", "\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"};
    QByteArray file = boms.at(int(rng.bounded(boms.size())));
    for (int n = int(rng.bounded(400)); n > 0; --n)
        file += rng.bounded(3) == 0 ? "," : rng.bounded(25) == 0 ? QByteArray("\n") : pieces.at(int(rng.bounded(pieces.size())));
    return file;
}

// Starts eight threads that wait for each other and then run job(i).
void runTogether(const std::function<void(int)>& job)
{
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&, i] { for (++ready; ready.load() < 8;) std::this_thread::yield(); job(i); });
    for (std::thread& t : threads)
        t.join();
}

} // namespace

class TestDeviceDb : public QObject
{
    Q_OBJECT

private:
    TestHelpers::Catalogues m_files;
    std::unique_ptr<DeviceDb> m_db;

private Q_SLOTS:
    void initTestCase()
    {
        // Files without a byte-order mark are decoded with the locale's codec on Qt 5, as UTF-8 on Qt 6.
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
        // Versions H to "" run down the database; equal versions would have no order.
        const QString path = m_files.write("id-shared-1,PN-SHARED,S1,K1,D,A,P,V\nzr9k31a-015,PN-15,S1,MK,D,C,P,V\n"
                                           "id-shared-3,PN-SHARED,S1,K3,D,,P,V\nzr9k31-013,PN-OLD,S1,MK,D,D,P,V\n"
                                           "id-shared-2,PN-SHARED,S1,K2,D,B,P,V\nzr9k31-006,PN-06,S1,MK,D,E,P,V\n"
                                           "dup,PN-DUP-1,S1,MK,D,G,P,V\ndup,PN-DUP-2,S1,MK,D,F,P,V\n,PN-NO-ID,S1,,D,H,P,V\n");
        // The first databases of the process, built on several threads at once, register the selector's signal type.
        runTogether([&](int) { const DeviceDb db(path); });
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
        QVERIFY(QMetaType::fromName("DEV::DeviceArg").isValid());
#else
        QVERIFY(QMetaType::type("DEV::DeviceArg") != QMetaType::UnknownType);
#endif
        m_db = std::make_unique<DeviceDb>(path);
    }

    // Two DeviceArg values are equal when their device ids are; nothing else counts. Assignment and allDevice() carry
    // all eleven members.
    void deviceArg()
    {
        DeviceArg a, b;
        a.partNumber = QStringLiteral("PN-A");
        QVERIFY(a == b && !(a != b));
        b.deviceId = QStringLiteral("a-1");
        QVERIFY(a != b && !(a == b));
        const QList<DeviceArg> chosen{b}; // comparing const values, as containers do
        QVERIFY(chosen.contains(DeviceArg(b)) && !chosen.contains(a) && chosen.constFirst() != a);
        const ChipInfo chip = m_files.load("m0,m1,m2,m3,m4,m5,m6,m7,m8,m9,r1,r2")->allChipInfo().value(0);
        a.resources << QStringLiteral("3");
        QCOMPARE(&(a = DeviceArg(chip)), &a);
        QCOMPARE(fields(a), L({"m0", "m1", "m2", "m3", "m4", "m5", "m6", "m7", "m8", "m9", "2:r1|r2"}));
        QCOMPARE(m_db->allDevice().size(), 9);
        for (int row = 0; row < 9; ++row)
            QCOMPARE(fields(m_db->allDevice().at(row)), fields(m_db->allChipInfo().at(row)));
    }

    // Lines of more than seven columns become records, text trimmed and counts as they stand, newest version first;
    // others are reported, and so is a file that cannot be opened.
    void linesToRecords()
    {
        MessageCapture capture;
        const DeviceDb db(m_files.write("3,p,s,k,d, A,a,u\na,b,c,d,e,f,g\n4,p,s,k,d,  ,a,u\n1,p,s,k,d,b ,a,u\n"
                                        " 2 ,\tp ,s,k,d, B ,a,u,c, x\t, 64 ,72Kb , ,4,5,6,7,8,9,10,11,12,13,14,15\n"));
        L records;
        for (const ChipInfo& c : db.allChipInfo())
            records << fields(c).join(QLatin1Char(','));
        QCOMPARE(records, (L{"1,p,s,k,d,b,a,u,,,0:", "2,p,s,k,d,B,a,u,c,x,15: 64 |72Kb | |4|5|6|7|8|9|10|11|12|13|14|15",
                             "3,p,s,k,d,A,a,u,,,0:", "4,p,s,k,d,,a,u,,,0:"}));
        const DeviceDb none(m_files.path(QStringLiteral("none.csv")));
        QCOMPARE(capture.criticals(), (L{"incorrect device info entry \"a,b,c,d,e,f,g\"",
                                         "can not opend device data file:  \"" + m_files.path("none.csv") + '"'}));
        QCOMPARE(capture.count(), 2);
        QVERIFY(none.allChipInfo().isEmpty() && none.allDevice().isEmpty());
        L reports; // status, chips, lines skipped, the first of them
        for (const DeviceDb* loaded : {&db, &none})
            reports << QStringLiteral("%1 %2 %3 %4").arg(loaded->loadReport().status).arg(loaded->loadReport().chips)
                           .arg(loaded->loadReport().skippedLines).arg(loaded->loadReport().firstSkippedLine);
        QCOMPARE(reports, (L{"0 4 1 2", "1 0 0 0"}));
        QCOMPARE(fields(none.findByID(QStringLiteral("zr9k31-013"))), fields(ChipInfo()));
        // Loaded chips share equal values, down to whole lists of counts: a catalogue repeats them on thousands of lines.
        // Lines read in one part, that is: parts store their values apart.
        DEV::pimpl::Tuning onePart;
        onePart.loadParallelFrom = std::numeric_limits<qint64>::max();
        const TestHelpers::ScopedTuning tuned(onePart);
        const auto shared = m_files.load("a,p1,S,k,d,v,P,V,c,x,1,2\nb,p2,S,k,d,w,P,V,c,x,1,2\nc,p3,S,k,d,v,P,V,c,x,1,3\n");
        const ChipInfo p1 = shared->findByPN("p1").value(0), p2 = shared->findByPN("p2").value(0), p3 = shared->findByPN("p3").value(0);
        QVERIFY(p1.series.constData() == p3.series.constData() && p1.resources.isSharedWith(p2.resources));
        QVERIFY(!p1.resources.isSharedWith(p3.resources) && p1.resources.at(0).constData() == p3.resources.at(0).constData());
    }

    // The same records in the same order, member for member, and the same messages as the reference loader and the
    // plain one give, at the defaults and with the file in one part or in many uneven ones read in blocks of a few
    // bytes.
    void agreesWithReferenceLoader_data()
    {
        QTest::addColumn<QByteArray>("localeCodec");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<DEV::pimpl::Tuning>("tuning");
        QTest::addColumn<int>("randomFiles"); // when no bytes are given
        const auto tunings = TestHelpers::extremeTunings();
        const DEV::pimpl::Tuning defaults = tunings.front().second;
        for (const auto& [name, tuning] : tunings)
            QTest::addRow("random files, UTF-8 locale, %s", name.constData())
                << QByteArray("UTF-8") << QByteArray() << tuning << (name == "defaults" ? 1500 : 300);
        // Runs without an ASCII byte, cut by blocks of a few bytes at every place: valid sequences (4-byte ones cut
        // after 1, 2 or 3 of their bytes), sequences that a lead byte or a comma cuts short, stray continuation bytes,
        // bytes that never occur in UTF-8. The text is that of the whole file decoded at once.
        QByteArray runs;
        for (const char* run : {"\xE6\x97\xC3\xA5", "\xF0\x9F\xE6\x97\xA5", "\xC3\xA5\x80", "\xFF\xC0\xF8\x80\xE6",
                                "\xF0\x9F\x98\x80\xF0\x9F\x98", "\xE0\x80\x80\xED\xA0\x80\xF4\x90\x80\x80"})
            runs += "id,PN,s,k,d,,p,v,c," + QByteArray(run).repeated(3) + ",1\n";
        for (int block : {1, 2, 3, 4, 5}) {
            DEV::pimpl::Tuning tuning = TestHelpers::extremeTunings(block)[2].second;
            tuning.loadRowsWork = block % 2 ? 100 : 0; // the first parts empty, or all alike
            if (block != 3)
                QTest::addRow("random files, blocks of %d", block) << QByteArray("UTF-8") << QByteArray() << tuning << 300;
            QTest::addRow("runs without ASCII, blocks of %d", block) << QByteArray("UTF-8") << runs << tuning << 0;
            QTest::addRow("bytes replaced, then a U+FEFF, blocks of %d", block)
                << QByteArray("UTF-8") << QByteArray("\xBE\xBE\xBE\xEF\xBB\xBF\xC3\xEF\xBB\xBFid,PN,s,k,d,,p,v,c\n") << tuning << 0;
        }
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0) // Qt 6 decodes without the locale
        for (const auto& [name, tuning] : {tunings[0], tunings[2]})
            QTest::addRow("random files, Latin-1 locale, %s", name.constData())
                << QByteArray("ISO-8859-1") << QByteArray() << tuning << (name == "defaults" ? 1500 : 300);
#endif
        const QString text = QStringLiteral("id,PN-\u00B5,s,k,d,B,p,v,c,x,1,2\nbad,line\nid2,PN2,s,k,d,,p,v\n");
        for (const char* name : {"UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-32BE"}) {
            const std::unique_ptr<QTextEncoder> withMark(QTextCodec::codecForName(name)->makeEncoder());
            for (const auto& [tuningName, tuning] : {tunings[0], tunings[2]})
                QTest::addRow("%s, %s", name, tuningName.constData()) << QByteArray("UTF-8") << withMark->fromUnicode(text) << tuning << 0;
        }
        // Lines across the loader's read blocks, a multi-byte character cut by a block edge, a 10 MiB line and one of
        // 10,000 columns.
        QByteArray large;
        for (int i = 0; large.size() < TestHelpers::rounds(3 * 1024 * 1024); ++i)
            large += TestHelpers::chipLine("id\xC2\xB5" + QByteArray::number(i), "PN-\xE6\x97\xA5" + QByteArray::number(i),
                                           "S1", "DEV1", QByteArray(1, char('A' + i % 5)));
        large += QByteArray(TestHelpers::rounds(10 * 1024 * 1024), 'x') + "\nid,PN-WIDE,s,k,d,,p,v,c,x";
        for (int i = 0; i < 9990; ++i)
            large += ',' + QByteArray::number(i);
        QTest::newRow("large file") << QByteArray("UTF-8") << large << defaults << 0;
        // Large enough to be read in parts: random lines among chips on both sides of each cut. The file starts
        // without a byte-order mark, so the locale's encoding applies.
        QRandomGenerator rng(7);
        QByteArray mixed;
        const int partBytes = TestHelpers::rounds(2200 * 1024);
        for (int i = 1; mixed.size() < partBytes; ++i)
            mixed += i % 8 ? TestHelpers::chipLine("id" + QByteArray::number(i % 50), "PN" + QByteArray::number(i))
                           : randomFile(rng) + '\n';
        QTest::newRow("random lines across the parts") << QByteArray("UTF-8") << mixed << defaults << 0;
        DEV::pimpl::Tuning sevenParts = tunings[2].second;
        sevenParts.loadBlockBytes = 4096;
        QTest::newRow("random lines across 7 parts") << QByteArray("UTF-8") << mixed << sevenParts << 0;
        QTest::newRow("real-shaped catalogue") << QByteArray("UTF-8") << TestHelpers::generatedCatalogue("real", TestHelpers::rounds(17500)) << defaults << 0;
        QTest::newRow("every value distinct") << QByteArray("UTF-8") << TestHelpers::generatedCatalogue("distinct", TestHelpers::rounds(15000)) << defaults << 0;
        QTest::newRow("the first bad line in the second part") << QByteArray("UTF-8") << large.left(large.indexOf('\n', partBytes) + 1) + "bad\n" << defaults << 0;
    }
    void agreesWithReferenceLoader()
    {
        QFETCH(QByteArray, localeCodec);
        QFETCH(QByteArray, bytes);
        QFETCH(DEV::pimpl::Tuning, tuning);
        QFETCH(int, randomFiles);
        const auto restore = qScopeGuard([saved = QTextCodec::codecForLocale()] { QTextCodec::setCodecForLocale(saved); });
        QTextCodec::setCodecForLocale(QTextCodec::codecForName(localeCodec));
        const TestHelpers::ScopedTuning tuned(tuning);
        QRandomGenerator rng(20261121);
        for (int i = 0; i < (bytes.isEmpty() ? TestHelpers::rounds(randomFiles) : 1) && !QTest::currentTestFailed(); ++i) {
            const QByteArray file = bytes.isEmpty() ? randomFile(rng) : bytes;
            const QString path = m_files.write(file);
            MessageCapture referenceMessages;
            int firstMalformed = 0;
            const QList<ChipInfo> expected = Reference::loadDataFile(path, &firstMalformed);
            const L expectedMessages = referenceMessages.criticals();
            MessageCapture plainMessages;
            QList<ChipInfo> plain;
            const DeviceDb::LoadReport plainReport = DEV::pimpl::readPlainly(file, plain);
            QCOMPARE(plainMessages.criticals(), expectedMessages);
            MessageCapture capture;
            const DeviceDb db(path);
            QCOMPARE(capture.criticals(), expectedMessages);
            for (const DeviceDb::LoadReport& report : {db.loadReport(), plainReport}) {
                QCOMPARE(report.skippedLines, expectedMessages.size());
                QCOMPARE(report.firstSkippedLine, firstMalformed);
                QCOMPARE(report.chips, int(expected.size()));
            }
            QCOMPARE(records(db.allChipInfo()), records(expected));
            QCOMPARE(records(plain), records(expected));
        }
    }

    // findByPN() lists every chip, in database order; find() and findByID() give the first one, or an empty record
    // ("none"). Only the translation zr9k31a-009 of the old zr9k31-006 is looked up, and the file lacks it.
    void lookups()
    {
        const auto found = [](const QList<ChipInfo>& chips) {
            L out;
            for (const ChipInfo& c : chips)
                out << (fields(c) == fields(ChipInfo()) ? QStringLiteral("none") : c.deviceId + '/' + c.partNumber);
            return out.join(' ');
        };
        QCOMPARE(found(m_db->findByPN("PN-SHARED")), "id-shared-2/PN-SHARED id-shared-1/PN-SHARED id-shared-3/PN-SHARED");
        QCOMPARE(found(m_db->findByPN("pn-shared") + m_db->findByPN("PN-SH")), "");
        QCOMPARE(found({m_db->find("PN-SHARED", "K3"), m_db->find("PN-SHARED", "k3"), m_db->find("PN-15", "K3"),
                        m_db->find("PN-NO-ID", "")}), "id-shared-3/PN-SHARED none none /PN-NO-ID");
        QCOMPARE(found({m_db->findByID("zr9k31a-015"), m_db->findByID("zr9k31-013"), m_db->findByID("zr9k31-006"),
                        m_db->findByID("dup"), m_db->findByID(""), m_db->findByID("ZR9K31A-015")}),
                 "zr9k31a-015/PN-15 zr9k31a-015/PN-15 none dup/PN-DUP-1 /PN-NO-ID none");
    }

    // Eleven old ids were renamed; anything else, even nearly the same, stays.
    void renamedIds()
    {
        const L from{"000", "013", "009", "006", "014", "011", "004", "002", "008", "007", "001"};
        const L to{"000", "015", "021", "009", "024", "018", "012", "003", "006", "028", "027"};
        for (int i = 0; i < from.size(); ++i)
            QCOMPARE(DEV::deviceIdCompatFor9k31("zr9k31-" + from.at(i)), "zr9k31a-" + to.at(i));
        for (const char* same : {"zr9k31a-015", "zr9k31-003", "ZR9K31-013", "zr9k31-013 ", " zr9k31-013", ""})
            QCOMPARE(DEV::deviceIdCompatFor9k31(QString::fromLatin1(same)), QString::fromLatin1(same));
    }

    // Concurrent first calls share one load of <program dir>/../data/device/device_info.csv, here the bundled
    // catalogue: it loads without complaint, every line complete, and holds every chip an old identifier is translated
    // to. The const queries from many threads give what they give on one; a copy handed out may be changed by its
    // owner without touching the database.
    void instanceFromManyThreads()
    {
        MessageCapture capture;
        std::vector<DeviceDb*> seen(8, nullptr);
        runTogether([&](int i) { seen[size_t(i)] = DeviceDb::instance(); });
        QCOMPARE(std::count(seen.begin(), seen.end(), DeviceDb::instance()), 8L);
        QCOMPARE(capture.count(), 0);
        const DeviceDb* db = DeviceDb::instance();
        QVERIFY(db->allChipInfo().size() > 400);
        for (const ChipInfo& chip : db->allChipInfo())
            QVERIFY(!chip.deviceId.isEmpty() && !chip.partNumber.isEmpty() && chip.resources.size() >= 9);
        for (const char* old : {"000", "013", "009", "006", "014", "011", "004", "002", "008", "007", "001"})
            QCOMPARE(db->findByID("zr9k31-" + QString(old)).deviceId, DEV::deviceIdCompatFor9k31("zr9k31-" + QString(old)));
        const auto answers = [db] {
            L out;
            for (int round = 0; round < 40; ++round) {
                const ChipInfo chip = db->allChipInfo().at(round * 7);
                DEV::ChipFilter series;
                series.series = chip.series;
                const DEV::ChipFilterBySearch search{round % 3 * 2, round % 4, false, chip.partNumber.left(round % 9 + 1)};
                out << db->findByID(chip.deviceId).partNumber << QString::number(db->findByPN(chip.partNumber).size())
                    << QString::number(db->filterChips(search, db->filterChips(series)).size());
            }
            return out;
        };
        const L expected = answers();
        std::atomic<int> failures{0};
        runTogether([&](int) {
            QList<ChipInfo> copy = db->allChipInfo();
            copy[0].partNumber = QStringLiteral("changed");
            failures += answers() != expected || db->allDevice().size() != copy.size()
                || db->allChipInfo().at(0).partNumber == QLatin1String("changed");
        });
        QCOMPARE(failures.load(), 0);
        // Asked for before the application object exists (below), the database says why it stays empty, once.
        QProcessEnvironment early = QProcessEnvironment::systemEnvironment();
        early.insert(QStringLiteral("TST_INSTANCE_FIRST"), QStringLiteral("1"));
        const QByteArray err = TestHelpers::runProgram(QCoreApplication::applicationFilePath(), {}, early).err;
        QCOMPARE(err.count("instance() called before the QCoreApplication was created"), 1);
    }
};

const bool instanceFirst = qEnvironmentVariableIsSet("TST_INSTANCE_FIRST") && (DeviceDb::instance(), std::exit(0), true);

QTEST_GUILESS_MAIN(TestDeviceDb)
#include "tst_devicedb.moc"
