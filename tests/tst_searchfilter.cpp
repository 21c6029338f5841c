// The free-text search: which values each group looks at, how each syntax
// reads the pattern, the "0" rule for empty cells, and a randomised
// comparison against the plain reference in searchreference.h.

#include "chipfilter.h"
#include "reference/searchreference.h"
#include "testhelpers.h"

#include <QRandomGenerator>
#include <QTest>

#include <climits>

using DEV::ChipFilterBySearch;
using DEV::ChipInfo;
using DEV::DeviceDb;
using TestHelpers::ids;

namespace {

ChipFilterBySearch search(int group, int syntax, bool cs, const QString& pattern)
{
    return ChipFilterBySearch{group, syntax, cs, pattern};
}

// Every member carries its own token, so a search for a token tells which
// member was looked at. No value is empty or holds a "0".
ChipInfo tokenChip()
{
    ChipInfo c;
    int i = 0;
    for (QString* m : {&c.deviceId, &c.partNumber, &c.series, &c.matchKey, &c.device, &c.deviceVersion, &c.package,
                       &c.voltage, &c.speed, &c.auxiliary})
        *m = QStringLiteral("t%1x").arg(QChar('a' + i++));
    for (int k = 1; k <= 9; ++k)
        c.resources << QStringLiteral("r%1").arg(k);
    return c;
}

// Small pools, so that random chips and patterns meet often enough to match.
// Non-ASCII values include letters whose case folding lands on ASCII (the
// Kelvin sign, the long s) and a surrogate pair.
const char* const ValuePool[] = {"", "0", "00", "10", "a", "A", "ab", "AB", "aB", "abc", "ABC", "x.y", "a*",
                                 "[a]", "?", "(", "1.0V", "GW1N", "gw1n-9", "QN88", "C6/I5", " a", "\\",
                                 "\xE2\x84\xAA", "\xC5\xBF", "\xC3\x9F", "a\xC3\x84""b", "\xF0\x9D\x90\x80k",
                                 // Long enough to be scanned in blocks, with a match or a foreign
                                 // letter near block edges.
                                 "ZR9K31AQ113-MVPG256C7/I6", "zr9k31aq113-mvpg256c7/i6", "xxxxxxxAByyyyyyyGW1Nzz",
                                 "xxxxxxxxxxxxxxx\xE2\x84\xAA", "GW1NR-LV9QN88PC6/I5-ABC", "0000000000000000a"};
const char* const PatternPool[] = {"0", "00", "", "*", "?", "a*", "A*", "*b", "?b", "[ab]*", "[!a]*", "[a-c]?",
                                   "a.c", "a.*", ".*", "^a", "(a|b)", "(", "[", "a{2}", "\\d+", "1.0V", "A",
                                   "ab", "gw1n", "*-9", "x.y", "\\", ")", "[a", "?*", "b$", "k", "S", "ss",
                                   "\xC3\xA4", "\xE2\x84\xAA", "pg256c7", "MVPG256", "ab", "i6", "Q113-m",
                                   "k31a", "/I5-A"};

template <size_t N>
QString pick(QRandomGenerator& rng, const char* const (&pool)[N])
{
    return QString::fromUtf8(pool[rng.bounded(int(N))]);
}

ChipInfo randomChip(QRandomGenerator& rng, int n)
{
    // Now and then a null string, as a default record has.
    const auto value = [&rng] { return rng.bounded(12) == 0 ? QString() : pick(rng, ValuePool); };
    ChipInfo c;
    c.deviceId = QStringLiteral("chip-%1").arg(n);
    for (QString* m : {&c.partNumber, &c.series, &c.matchKey, &c.device, &c.deviceVersion, &c.package, &c.voltage,
                       &c.speed, &c.auxiliary})
        *m = value();
    for (int i = rng.bounded(12); i > 0; --i) // short lists as well as longer ones
        c.resources << value();
    return c;
}

} // namespace

class TestSearchFilter : public QObject
{
    Q_OBJECT

private:
    // The search never looks at the database's own chips.
    std::unique_ptr<DeviceDb> m_db;
    TestHelpers::Catalogues m_files;

private slots:
    void initTestCase()
    {
        TestHelpers::MessageCapture capture;
        m_db.reset(new DeviceDb(QString()));
        const ChipFilterBySearch fresh;
        QCOMPARE(QVariantList({fresh.group, fresh.patternSyntax, fresh.caseSensitive}), QVariantList({0, 3, false}));
    }

    void groupValues_data()
    {
        QTest::addColumn<int>("group");
        QTest::addColumn<QString>("found");
        // "All" leaves out id (a), version (f) and speed (i), but takes match key and auxiliary.
        const QString all = QStringLiteral("tbx tcx tdx tex tgx thx tjx r1 r2 r3 r4 r5 r6 r7 r8 r9");
        for (int group : {0, -1, 17, INT_MIN, INT_MAX})
            QTest::addRow("%d as All", group) << group << all;
        const char* single[] = {"tcx", "tbx", "tex", "tfx", "tgx", "tix", "thx"};
        for (int group = 1; group <= 7; ++group)
            QTest::addRow("%d", group) << group << QString::fromLatin1(single[group - 1]);
        for (int group = 8; group <= 16; ++group)
            QTest::addRow("%d", group) << group << QStringLiteral("r%1").arg(group - 7);
    }
    void groupValues()
    {
        QFETCH(int, group);
        QFETCH(QString, found);
        const ChipInfo chip = tokenChip();
        QStringList actual;
        for (const QString& token : TestHelpers::fields(chip).mid(0, 10) + chip.resources) {
            if (DEV::matchFilter(chip, search(group, 2, true, token)))
                actual << token;
        }
        QCOMPARE(actual.join(QLatin1Char(' ')), found);
    }

    void match_data()
    {
        QTest::addColumn<QString>("member");
        QTest::addColumn<QString>("value");
        QTest::addColumn<int>("group");
        QTest::addColumn<int>("syntax");
        QTest::addColumn<bool>("cs");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<bool>("expected");
        const QString empty(QLatin1String(""));

        // The "0" rule: any empty searched value matches, in every mode.
        for (int syntax : {-1, 0, 1, 2, 3, 4}) {
            const bool anywhere = syntax < 0 || syntax > 2;
            for (bool cs : {false, true}) {
                const auto row = [&](const char* what) -> QTestData& {
                    return QTest::addRow("0 rule, syntax %d, cs %d: %s", syntax, int(cs), what);
                };
                row("empty auxiliary") << "auxiliary" << empty << 0 << syntax << cs << "0" << true;
                row("empty count") << "r5" << empty << 0 << syntax << cs << "0" << true;
                row("empty speed is not searched") << "speed" << empty << 0 << syntax << cs << "0" << false;
                row("null version is not searched") << "version" << QString() << 0 << syntax << cs << "0" << false;
                row("00 is no rule") << "auxiliary" << empty << 0 << syntax << cs << "00" << false;
                row("value 0") << "package" << "0" << 0 << syntax << cs << "0" << true;
                row("value holds 0") << "r3" << "10" << 0 << syntax << cs << "0" << anywhere;
                row("missing PLL") << "short" << empty << 16 << syntax << cs << "0" << true;
            }
        }
        QTest::newRow("DSP present, 0") << "short" << empty << 15 << 3 << true << "0" << false;
        QTest::newRow("missing PLL, empty exactly") << "short" << empty << 16 << 2 << true << empty << true;
        QTest::newRow("missing PLL, ?") << "short" << empty << 16 << 0 << true << "?" << false;
        QTest::newRow("speed column finds speed") << "speed" << "C6" << 6 << 3 << true << "C6" << true;
        QTest::newRow("All does not") << "speed" << "C6" << 0 << 3 << true << "C6" << false;

        // The syntaxes, on the series column.
        const auto row = [](const char* tag, int syntax, bool cs, const QString& pattern, const QString& value,
                            bool expected) {
            QTest::newRow(tag) << "series" << value << 1 << syntax << cs << pattern << expected;
        };
        row("wild: prefix", 0, true, "gw*", "gw1n-9", true);
        row("wild: anchored at start", 0, true, "1n*", "gw1n-9", false);
        row("wild: star, empty value", 0, true, "*", empty, true);
        row("wild: ? is one char", 0, true, "?", "a", true);
        row("wild: ? is not two", 0, true, "?", "ab", false);
        row("wild: empty pattern", 0, false, empty, "a", false);
        row("wild: case ignored", 0, false, "GW*", "gw1n", true);
        row("wild: case counts", 0, true, "GW*", "gw1n", false);
        row("regexp: whole value", 1, true, "a.c", "abc", true);
        row("regexp: part is not enough", 1, true, "b", "abc", false);
        row("regexp: unbalanced", 1, false, "(", "(", false);
        row("regexp: empty pattern, empty value", 1, true, empty, empty, true);
        row("regexp: case ignored", 1, false, "A.C", "abc", true);
        row("regexp: case counts", 1, true, "A.C", "abc", false);
        row("exact: equal", 2, true, "abc", "abc", true);
        row("exact: prefix", 2, true, "ab", "abc", false);
        row("exact: case ignored", 2, false, "ABC", "abc", true);
        row("exact: case counts", 2, true, "ABC", "abc", false);
        row("exact: empty pattern", 2, false, empty, "abc", false);
        row("anywhere: inside", 3, true, "1n", "gw1n-9", true);
        row("anywhere: case ignored", 3, false, "n-", "GW1N-9", true);
        row("anywhere: case counts", 3, true, "n-", "GW1N-9", false);
        row("anywhere: upper-case pattern", 3, false, "GW", "xgw1", true);
        row("anywhere: empty pattern", 3, true, empty, "abc", true);
        row("syntax 99 is anywhere", 99, true, "1n", "gw1n-9", true);
    }
    void match()
    {
        QFETCH(QString, member);
        QFETCH(QString, value);
        QFETCH(int, group);
        QFETCH(int, syntax);
        QFETCH(bool, cs);
        QFETCH(QString, pattern);
        QFETCH(bool, expected);
        ChipInfo chip = tokenChip();
        if (member == QLatin1String("short"))
            chip.resources = chip.resources.mid(0, 8);
        else if (member.startsWith(QLatin1Char('r')))
            chip.resources[member.midRef(1).toInt() - 1] = value;
        else
            *QHash<QString, QString*>{{"auxiliary", &chip.auxiliary}, {"speed", &chip.speed},
                                      {"version", &chip.deviceVersion}, {"package", &chip.package},
                                      {"series", &chip.series}}.value(member) = value;
        QCOMPARE(DEV::matchFilter(chip, search(group, syntax, cs, pattern)), expected);
    }

    void filterChipsKeepsOrderAndIsSilent()
    {
        QList<ChipInfo> chips;
        for (const char* entry : {"c1:abc", "c2:xyz", "c3:ABC", "c4:abc", "c5:("}) {
            ChipInfo c = tokenChip();
            c.deviceId = QString::fromLatin1(entry).section(':', 0, 0);
            c.series = QString::fromLatin1(entry).section(':', 1);
            chips << c;
        }
        chips << chips.at(3) << chips.first(); // duplicates stay, adjacent or not
        TestHelpers::MessageCapture capture;
        QCOMPARE(ids(m_db->filterChips(search(1, 2, false, "abc"), chips)), (QStringList{"c1", "c3", "c4", "c4", "c1"}));
        QCOMPARE(ids(m_db->filterChips(search(1, 2, true, "abc"), chips)), (QStringList{"c1", "c4", "c4", "c1"}));
        QVERIFY(m_db->filterChips(search(0, 3, false, QString()), {}).isEmpty());
        for (const char* bad : {"(", "[", "a{2", ")"})
            QVERIFY2(m_db->filterChips(search(0, 1, true, QString::fromLatin1(bad)), chips).isEmpty(), bad);
        QCOMPARE(capture.count(), 0);
    }

    // The library's matcher against the literal reference, over random chips
    // and searches, seeded so every run checks the same cases. Loaded records
    // share equal values, which the matcher may exploit; built ones do not.
    void matchesReference_data()
    {
        QTest::addColumn<bool>("loaded");
        QTest::newRow("built records") << false;
        QTest::newRow("loaded records and deep copies") << true;
    }
    void matchesReference()
    {
        QFETCH(bool, loaded);
        QRandomGenerator rng(loaded ? 20261121u : 20240611u);
        QList<ChipInfo> chips;
        for (int i = 0; i < 300; ++i)
            chips << randomChip(rng, i);
        if (loaded) {
            QByteArray file;
            for (const ChipInfo& c : qAsConst(chips))
                file += (QStringList{c.deviceId, c.partNumber, c.series, c.matchKey, c.device, c.deviceVersion,
                                     c.package, c.voltage, c.speed, c.auxiliary}
                         + c.resources).join(QLatin1Char(',')).toUtf8() + '\n';
            TestHelpers::MessageCapture capture; // short lines are reported
            chips.clear();
            for (const ChipInfo& c : m_files.load(file)->allChipInfo()) {
                chips << c;
                if (rng.bounded(3) == 0) {
                    ChipInfo deep = c;
                    for (QString* m : {&deep.partNumber, &deep.series, &deep.matchKey, &deep.device, &deep.package,
                                       &deep.auxiliary, &deep.voltage, &deep.speed, &deep.deviceVersion})
                        *m = QString(m->constData(), m->size());
                    for (QString& r : deep.resources)
                        r = QString(r.constData(), r.size());
                    chips << deep;
                }
            }
        }
        TestHelpers::MessageCapture capture;
        int matched = 0;
        int tested = 0;
        for (int round = 0; round < 300; ++round) {
            QString pattern = pick(rng, PatternPool);
            if (rng.bounded(3) == 0)
                pattern += pick(rng, PatternPool);
            const ChipFilterBySearch f = search(rng.bounded(-1, 18), rng.bounded(-1, 5), rng.bounded(2) == 1, pattern);
            const QString what = QStringLiteral("group %1, syntax %2, cs %3, pattern \"%4\"")
                                     .arg(f.group).arg(f.patternSyntax).arg(f.caseSensitive).arg(f.pattern);
            QStringList expected;
            for (const ChipInfo& chip : qAsConst(chips)) {
                const bool ref = Reference::matchSearch(chip, f);
                QVERIFY2(DEV::matchFilter(chip, f) == ref, qPrintable(what + QStringLiteral(", ") + chip.deviceId));
                if (ref)
                    expected << chip.deviceId;
            }
            QVERIFY2(ids(m_db->filterChips(f, chips)) == expected, qPrintable(what));
            matched += expected.size();
            tested += chips.size();
        }
        // Guard against a generator that only ever produces one answer.
        QVERIFY(matched > tested / 20 && matched < tested - tested / 20);
        QCOMPARE(capture.count(), 0);
    }
};

QTEST_GUILESS_MAIN(TestSearchFilter)
#include "tst_searchfilter.moc"
