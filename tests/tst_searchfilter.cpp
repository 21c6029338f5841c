// The free-text search: which values each group looks at, how each syntax
// reads the pattern, the "0" rule for empty cells, and a randomised
// comparison against the plain reference in searchreference.h.

#include "chipfilter.h"
#include "devicedb.h"
#include "reference/searchreference.h"
#include "testhelpers.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <climits>

using DEV::ChipFilterBySearch;
using DEV::ChipInfo;
using DEV::DeviceDb;

namespace {

const int Syntaxes[] = {-1, 0, 1, 2, 3, 4};

QString emptyString()
{
    return QLatin1String("");
}

ChipFilterBySearch search(int group, int syntax, bool cs, const QString& pattern)
{
    ChipFilterBySearch f;
    f.group = group;
    f.patternSyntax = syntax;
    f.caseSensitive = cs;
    f.pattern = pattern;
    return f;
}

// Every member carries its own token, so a search for a token tells which
// member was looked at.
ChipInfo tokenChip()
{
    ChipInfo c;
    c.deviceId = "tId";
    c.partNumber = "tPn";
    c.series = "tSe";
    c.matchKey = "tMk";
    c.device = "tDe";
    c.deviceVersion = "tDv";
    c.package = "tPa";
    c.voltage = "tVo";
    c.speed = "tSp";
    c.auxiliary = "tAu";
    for (int i = 0; i < 10; ++i)
        c.resources << QStringLiteral("r%1").arg(i);
    return c;
}

QStringList tokens(const ChipInfo& c)
{
    return QStringList{c.deviceId, c.partNumber, c.series, c.matchKey, c.device, c.deviceVersion,
                       c.package, c.voltage, c.speed, c.auxiliary}
        + c.resources;
}

// A chip with no empty value and no "0" in any value.
ChipInfo fullChip()
{
    ChipInfo c = tokenChip();
    c.resources = QStringList{"5", "6", "7", "8", "9", "11", "12", "13", "14"};
    return c;
}

QStringList ids(const QList<ChipInfo>& chips)
{
    QStringList out;
    for (const ChipInfo& c : chips)
        out << c.deviceId;
    return out;
}

// Small pools, so that random chips and patterns meet often enough to match.
// Non-ASCII values include letters whose case folding lands on ASCII (the
// Kelvin sign, the long s) and a surrogate pair.
const char* const ValuePool[] = {"", "0", "00", "10", "a", "A", "ab", "AB", "aB", "abc", "ABC", "x.y", "a*",
                                 "[a]", "?", "(", "1.0V", "GW1N", "gw1n-9", "QN88", "C6/I5", " a", "\\",
                                 "\xE2\x84\xAA", "\xC5\xBF", "\xC3\x9F", "a\xC3\x84""b", "\xF0\x9D\x90\x80k"};
const char* const PatternPool[] = {"0", "00", "", "*", "?", "a*", "A*", "*b", "?b", "[ab]*", "[!a]*", "[a-c]?",
                                   "a.c", "a.*", ".*", "^a", "(a|b)", "(", "[", "a{2}", "\\d+", "1.0V", "A",
                                   "ab", "gw1n", "*-9", "x.y", "\\", ")", "[a", "?*", "b$", "k", "S", "ss",
                                   "\xC3\xA4", "\xE2\x84\xAA"};

template <size_t N>
QString pick(QRandomGenerator& rng, const char* const (&pool)[N])
{
    return QString::fromUtf8(pool[rng.bounded(int(N))]);
}

QString randomValue(QRandomGenerator& rng)
{
    // Now and then a null string, as a default record has.
    return rng.bounded(12) == 0 ? QString() : pick(rng, ValuePool);
}

ChipInfo randomChip(QRandomGenerator& rng, int n)
{
    ChipInfo c;
    c.deviceId = QStringLiteral("chip-%1").arg(n);
    for (QString* member : {&c.partNumber, &c.series, &c.matchKey, &c.device, &c.deviceVersion, &c.package,
                            &c.voltage, &c.speed, &c.auxiliary})
        *member = randomValue(rng);
    const int count = rng.bounded(12); // short lists as well as longer ones
    for (int i = 0; i < count; ++i)
        c.resources << randomValue(rng);
    return c;
}

ChipFilterBySearch randomSearch(QRandomGenerator& rng)
{
    QString pattern = pick(rng, PatternPool);
    if (rng.bounded(3) == 0)
        pattern += pick(rng, PatternPool);
    return search(rng.bounded(-1, 18), rng.bounded(-1, 5), rng.bounded(2) == 1, pattern);
}

} // namespace

class TestSearchFilter : public QObject
{
    Q_OBJECT

private:
    // The search queries never look at the database's own chips.
    std::unique_ptr<DeviceDb> m_db;

private slots:
    void initTestCase()
    {
        TestHelpers::MessageCapture capture; // the missing file is reported
        m_db.reset(new DeviceDb(QString()));
        QVERIFY(m_db->allChipInfo().isEmpty());
    }

    void memberOrderAndDefaults()
    {
        const ChipFilterBySearch f{16, 1, true, "x"};
        QCOMPARE(f.group, 16);
        QCOMPARE(f.patternSyntax, 1);
        QCOMPARE(f.caseSensitive, true);
        QCOMPARE(f.pattern, QStringLiteral("x"));

        // A fresh search field: every value, match anywhere, case ignored.
        const ChipFilterBySearch d;
        QCOMPARE(d.group, 0);
        QCOMPARE(d.patternSyntax, 3);
        QCOMPARE(d.caseSensitive, false);
        QVERIFY(d.pattern.isNull());
    }

    void groupValues_data()
    {
        QTest::addColumn<int>("group");
        QTest::addColumn<QStringList>("found");

        const QStringList all{"tPn", "tSe", "tMk", "tDe", "tPa", "tVo", "tAu", "r0", "r1", "r2", "r3",
                              "r4", "r5", "r6", "r7", "r8", "r9"};
        QTest::newRow("0 All: no id, version or speed; match key and auxiliary") << 0 << all;
        QTest::newRow("-1 as All") << -1 << all;
        QTest::newRow("17 as All") << 17 << all;
        QTest::newRow("INT_MIN as All") << INT_MIN << all;
        QTest::newRow("INT_MAX as All") << INT_MAX << all;
        QTest::newRow("1 Series") << 1 << QStringList{"tSe"};
        QTest::newRow("2 Part Number") << 2 << QStringList{"tPn"};
        QTest::newRow("3 Device") << 3 << QStringList{"tDe"};
        QTest::newRow("4 Device Version") << 4 << QStringList{"tDv"};
        QTest::newRow("5 Package") << 5 << QStringList{"tPa"};
        QTest::newRow("6 Speed") << 6 << QStringList{"tSp"};
        QTest::newRow("7 Voltage") << 7 << QStringList{"tVo"};
        for (int g = 8; g <= 16; ++g)
            QTest::addRow("%d resource %d", g, g - 8) << g << QStringList{QStringLiteral("r%1").arg(g - 8)};
    }

    void groupValues()
    {
        QFETCH(int, group);
        QFETCH(QStringList, found);

        const ChipInfo chip = tokenChip();
        QStringList actual;
        for (const QString& token : tokens(chip)) {
            if (DEV::matchFilter(chip, search(group, 2, true, token)))
                actual << token;
        }
        QCOMPARE(actual, found);
    }

    void missingResource_data()
    {
        QTest::addColumn<int>("group");
        QTest::addColumn<int>("syntax");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<bool>("expected");

        // The chip has eight counts, "5" to "13": no PLL entry.
        for (int syntax : Syntaxes)
            QTest::addRow("PLL, \"0\", syntax %d", syntax) << 16 << syntax << "0" << true;
        QTest::newRow("DSP is there, \"0\"") << 15 << 3 << "0" << false;
        QTest::newRow("PLL, empty pattern exactly") << 16 << 2 << emptyString() << true;
        QTest::newRow("PLL, star") << 16 << 0 << "*" << true;
        QTest::newRow("PLL, question mark") << 16 << 0 << "?" << false;
        QTest::newRow("PLL, regexp ^$") << 16 << 1 << "^$" << true;
        QTest::newRow("PLL, some text") << 16 << 3 << "1" << false;
    }

    void missingResource()
    {
        QFETCH(int, group);
        QFETCH(int, syntax);
        QFETCH(QString, pattern);
        QFETCH(bool, expected);

        ChipInfo chip = fullChip();
        chip.resources = chip.resources.mid(0, 8);
        QCOMPARE(DEV::matchFilter(chip, search(group, syntax, true, pattern)), expected);
    }

    void emptyCellRule_data()
    {
        QTest::addColumn<QString>("scenario");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<int>("syntax");
        QTest::addColumn<bool>("cs");
        QTest::addColumn<bool>("expected");

        for (int syntax : Syntaxes) {
            const bool anywhere = syntax != 0 && syntax != 1 && syntax != 2;
            for (bool cs : {false, true}) {
                auto row = [&](const char* scenario, const char* pattern, bool expected) {
                    QTest::addRow("%s, \"%s\", syntax %d, cs %d", scenario, pattern, syntax, int(cs))
                        << QString::fromLatin1(scenario) << QString::fromLatin1(pattern) << syntax << cs
                        << expected;
                };
                row("empty auxiliary", "0", true);
                row("empty resource", "0", true);
                row("empty speed only", "0", false);
                row("empty version only", "0", false);
                row("empty auxiliary", "00", false);
                row("value is 0", "0", true);
                row("value contains 0", "0", anywhere);
            }
        }
    }

    void emptyCellRule()
    {
        QFETCH(QString, scenario);
        QFETCH(QString, pattern);
        QFETCH(int, syntax);
        QFETCH(bool, cs);
        QFETCH(bool, expected);

        ChipInfo chip = fullChip();
        if (scenario == "empty auxiliary")
            chip.auxiliary = emptyString();
        else if (scenario == "empty resource")
            chip.resources[4] = emptyString();
        else if (scenario == "empty speed only")
            chip.speed = emptyString();
        else if (scenario == "empty version only")
            chip.deviceVersion = QString();
        else if (scenario == "value is 0")
            chip.package = "0";
        else if (scenario == "value contains 0")
            chip.resources[2] = "10";
        QCOMPARE(DEV::matchFilter(chip, search(0, syntax, cs, pattern)), expected);
    }

    void syntax_data()
    {
        QTest::addColumn<int>("syntax");
        QTest::addColumn<bool>("cs");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("expected");

        QTest::newRow("wild: prefix") << 0 << true << "gw*" << "gw1n-9" << true;
        QTest::newRow("wild: anchored at start") << 0 << true << "1n*" << "gw1n-9" << false;
        QTest::newRow("wild: anchored at end") << 0 << true << "*1n" << "gw1n-9" << false;
        QTest::newRow("wild: star, empty value") << 0 << true << "*" << emptyString() << true;
        QTest::newRow("wild: ? is one char") << 0 << true << "?" << "a" << true;
        QTest::newRow("wild: ? is not two") << 0 << true << "?" << "ab" << false;
        QTest::newRow("wild: set") << 0 << true << "[ab]c" << "bc" << true;
        QTest::newRow("wild: dot is literal") << 0 << true << "a.c" << "abc" << false;
        QTest::newRow("wild: unclosed set") << 0 << true << "[" << "[" << false;
        QTest::newRow("wild: case ignored") << 0 << false << "GW*" << "gw1n" << true;
        QTest::newRow("wild: case counts") << 0 << true << "GW*" << "gw1n" << false;
        QTest::newRow("wild: empty pattern") << 0 << false << emptyString() << "a" << false;

        QTest::newRow("regexp: whole value") << 1 << true << "a.c" << "abc" << true;
        QTest::newRow("regexp: part is not enough") << 1 << true << "b" << "abc" << false;
        QTest::newRow("regexp: unbalanced paren") << 1 << false << "(" << "(" << false;
        QTest::newRow("regexp: unbalanced, empty value") << 1 << false << "(" << emptyString() << false;
        QTest::newRow("regexp: case ignored") << 1 << false << "A.C" << "abc" << true;
        QTest::newRow("regexp: case counts") << 1 << true << "A.C" << "abc" << false;

        QTest::newRow("exact: equal") << 2 << true << "abc" << "abc" << true;
        QTest::newRow("exact: prefix") << 2 << true << "ab" << "abc" << false;
        QTest::newRow("exact: no wild cards") << 2 << true << "a*" << "abc" << false;
        QTest::newRow("exact: case ignored") << 2 << false << "ABC" << "abc" << true;
        QTest::newRow("exact: case counts") << 2 << true << "ABC" << "abc" << false;
        QTest::newRow("exact: empty pattern, empty value") << 2 << false << emptyString() << emptyString()
                                                           << true;

        // 3, and every number that means nothing else.
        for (int syntax : {3, -1, 4, 99}) {
            QTest::addRow("anywhere %d: inside", syntax) << syntax << true << "1n" << "gw1n-9" << true;
            QTest::addRow("anywhere %d: literal metacharacters", syntax) << syntax << true << "(a." << "x(a.b" << true;
            QTest::addRow("anywhere %d: not an expression", syntax) << syntax << true << "a.c" << "abc" << false;
            QTest::addRow("anywhere %d: case ignored", syntax) << syntax << false << "n-" << "GW1N-9" << true;
            QTest::addRow("anywhere %d: case counts", syntax) << syntax << true << "n-" << "GW1N-9" << false;
            QTest::addRow("anywhere %d: empty pattern", syntax) << syntax << true << emptyString() << "abc" << true;
        }
    }

    void syntax()
    {
        QFETCH(int, syntax);
        QFETCH(bool, cs);
        QFETCH(QString, pattern);
        QFETCH(QString, value);
        QFETCH(bool, expected);

        ChipInfo chip = fullChip();
        chip.series = value;
        QCOMPARE(DEV::matchFilter(chip, search(1, syntax, cs, pattern)), expected);
    }

    void invalidExpressionIsSilent()
    {
        ChipInfo withEmpty = fullChip();
        withEmpty.auxiliary = emptyString();
        const QList<ChipInfo> chips{fullChip(), withEmpty};
        const DeviceDb& db = *m_db;

        TestHelpers::MessageCapture capture;
        for (const char* pattern : {"(", "[", "a{2", ")"})
            QVERIFY2(db.filterChips(search(0, 1, true, QString::fromLatin1(pattern)), chips).isEmpty(), pattern);
        QVERIFY(db.filterChips(search(0, 0, true, "["), chips).isEmpty());
        QCOMPARE(capture.count(), 0);
    }

    void filterChipsKeepsOrder()
    {
        QList<ChipInfo> chips;
        for (const char* entry : {"c1:abc", "c2:xyz", "c3:ABC", "c4:abc", "c5:ab", "c6:abc"}) {
            ChipInfo c = fullChip();
            const QStringList parts = QString::fromLatin1(entry).split(':');
            c.deviceId = parts.at(0);
            c.series = parts.at(1);
            chips << c;
        }
        chips << chips.last() << chips.first(); // duplicates stay, adjacent or not

        const DeviceDb& db = *m_db;
        QCOMPARE(ids(db.filterChips(search(1, 2, false, "abc"), chips)),
                 (QStringList{"c1", "c3", "c4", "c6", "c6", "c1"}));
        QCOMPARE(ids(db.filterChips(search(1, 2, true, "abc"), chips)), (QStringList{"c1", "c4", "c6", "c6", "c1"}));
        QVERIFY(db.filterChips(search(0, 3, false, emptyString()), {}).isEmpty());
        QCOMPARE(db.filterChips(search(0, 3, false, emptyString()), chips).size(), chips.size());
    }

    // The library's matcher against the literal reference, over random chips
    // and searches. Seeded, so every run checks the same cases.
    void matchesReference()
    {
        QRandomGenerator rng(20240611u);
        QList<ChipInfo> chips;
        for (int i = 0; i < 120; ++i)
            chips << randomChip(rng, i);

        TestHelpers::MessageCapture capture;
        const DeviceDb& db = *m_db;
        int matched = 0;
        int tested = 0;
        for (int round = 0; round < 250; ++round) {
            const ChipFilterBySearch f = randomSearch(rng);
            const QString what = QStringLiteral("group %1, syntax %2, cs %3, pattern \"%4\"")
                                     .arg(f.group)
                                     .arg(f.patternSyntax)
                                     .arg(f.caseSensitive)
                                     .arg(f.pattern);
            QStringList expected;
            for (const ChipInfo& chip : chips) {
                const bool ref = Reference::matchSearch(chip, f);
                QVERIFY2(DEV::matchFilter(chip, f) == ref, qPrintable(what + QStringLiteral(", ") + chip.deviceId));
                if (ref)
                    expected << chip.deviceId;
                ++tested;
            }
            QVERIFY2(ids(db.filterChips(f, chips)) == expected, qPrintable(what));
            matched += expected.size();
        }
        // Guard against a generator that only ever produces one answer.
        QVERIFY(matched > tested / 20);
        QVERIFY(matched < tested - tested / 20);
        QCOMPARE(capture.count(), 0);
    }
    // The same comparison over records loaded from a file, whose equal
    // values share their data, mixed with deep copies built by the caller
    // and with copies of the database's records.
    void matchesReferenceOnSharedValues()
    {
        QRandomGenerator rng(20261121u);
        QByteArray file;
        for (int i = 0; i < 300; ++i) {
            const ChipInfo c = randomChip(rng, i);
            QStringList columns{c.deviceId, c.partNumber, c.series, c.matchKey, c.device, c.deviceVersion,
                                c.package, c.voltage, c.speed, c.auxiliary};
            columns += c.resources;
            file += columns.join(QLatin1Char(',')).toUtf8() + '\n';
        }
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("shared.csv"));
        QVERIFY(TestHelpers::writeFile(path, file));
        TestHelpers::MessageCapture capture; // short lines are reported
        const DeviceDb db(path);

        QList<ChipInfo> chips;
        for (const ChipInfo& c : db.allChipInfo()) {
            chips << c;
            if (rng.bounded(3) == 0) {
                ChipInfo deep = c;
                for (QString* m : {&deep.partNumber, &deep.series, &deep.matchKey, &deep.device, &deep.package,
                                   &deep.auxiliary, &deep.voltage, &deep.speed, &deep.deviceVersion})
                    *m = QString(m->constData(), m->size());
                QStringList counts;
                for (const QString& r : c.resources)
                    counts << QString(r.constData(), r.size());
                deep.resources = counts;
                chips << deep;
            }
        }
        QVERIFY(chips.size() > 250);

        for (int round = 0; round < 400; ++round) {
            const ChipFilterBySearch f = randomSearch(rng);
            QStringList expected;
            for (const ChipInfo& chip : chips) {
                if (Reference::matchSearch(chip, f))
                    expected << chip.deviceId;
            }
            const QStringList got = ids(db.filterChips(f, chips));
            QVERIFY2(got == expected, qPrintable(QStringLiteral("group %1, syntax %2, cs %3, pattern \"%4\"")
                                                     .arg(f.group)
                                                     .arg(f.patternSyntax)
                                                     .arg(f.caseSensitive)
                                                     .arg(f.pattern)));
        }
    }
};

QTEST_GUILESS_MAIN(TestSearchFilter)
#include "tst_searchfilter.moc"
