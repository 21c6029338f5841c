// SPDX-License-Identifier: BSD-3-Clause
// The filters: which attribute criteria are set and how they compare, and the free-text search against the plain
// reference, which stands for the values each group looks at, each syntax and the "0" rule.

#include "reference/reference.h"
#include "testhelpers.h"

#include <chiprequirements.h>
#include <foldedindex_p.h>
#include <textscan_p.h>

using DEV::ChipFilter;
using DEV::ChipFilterBySearch;
using DEV::ChipInfo;
using L = QStringList;

static const std::pair<QString ChipFilter::*, QString ChipInfo::*> Criteria[] = {
    {&ChipFilter::partNumber, &ChipInfo::partNumber}, {&ChipFilter::series, &ChipInfo::series},
    {&ChipFilter::matchKey, &ChipInfo::matchKey},     {&ChipFilter::device, &ChipInfo::device},
    {&ChipFilter::deviceVersion, &ChipInfo::deviceVersion}, {&ChipFilter::package, &ChipInfo::package},
    {&ChipFilter::auxiliary, &ChipInfo::auxiliary},   {&ChipFilter::voltage, &ChipInfo::voltage},
    {&ChipFilter::speed, &ChipInfo::speed}};

// The search by every route against the reference at the default tuning and at one of its extremes, chosen at
// random; a search prepared at either is searched at the other. Chips one by one need no tuning: once is enough.
template <typename Choose>
QString disagreementAtEveryTuning(const QList<ChipInfo>& chips, const ChipFilterBySearch& f, Choose& choose)
{
    const QVector<int> expected = Reference::found(chips, f);
    const auto tunings = TestHelpers::extremeTunings();
    const auto extreme = tunings.at(1 + size_t(choose(int(tunings.size()) - 1))), usual = tunings.front();
    for (const auto& [searched, prepared] : {std::make_pair(usual, extreme), std::make_pair(extreme, usual)}) {
        const DEV::ChipSearch search = [&] {
            const TestHelpers::ScopedTuning tuning(prepared.second);
            return DEV::ChipSearch(chips);
        }();
        const TestHelpers::ScopedTuning tuning(searched.second);
        const QString difference = Reference::disagreement(chips, f, choose, expected, search, searched.first == usual.first);
        if (!difference.isEmpty())
            return QString::fromLatin1(searched.first + ", prepared at " + prepared.first + ": ") + difference;
    }
    return QString();
}

class TestChipFilter : public QObject
{
    Q_OBJECT

private:
    TestHelpers::Catalogues m_files;
    std::unique_ptr<DEV::DeviceDb> m_db;

private Q_SLOTS:
    void initTestCase()
    {
        // Versions descend down the file, so file order is database order.
        m_db = m_files.load("v-c,PN-6,S1,MK6,DEV1,C,PKG1,1.0V,C6,AUX1,100\nv-b,PN-3,S2,MK1,DEV2,BB,PKG1,1.2V,C6,AUX2\n"
                            "dup,PN-4,S2,MK4,DEV2,B,PKG1,1.2V,C6,AUX2\ndup,PN-4,S2,MK4,DEV2,B,PKG1,1.2V,C6,AUX2\n"
                            "v-a,PN-2,S1,MK2,DEV1,A,PKG2,1.0V,C7,AUX1\nv-none,PN-1,S1,MK1,DEV1,,PKG1,1.0V,C6,AUX1\n");
        // Hosts brace-initialise the records, so the declaration order matters.
        const ChipFilter f{"pn", "se", "mk", "de", "dv", "pa", "au", "vo", "sp"};
        QCOMPARE(L({f.partNumber, f.series, f.matchKey, f.device, f.deviceVersion, f.package, f.auxiliary, f.voltage,
                    f.speed}).join(' '), QStringLiteral("pn se mk de dv pa au vo sp"));
        const ChipFilterBySearch fresh;
        QCOMPARE(QVariantList({fresh.group, fresh.patternSyntax, fresh.caseSensitive}), QVariantList({0, 3, false}));
    }

    // One criterion at a time: equal texts only, "Any" is a value, a null criterion is unset, and so is an empty one
    // except for the version.
    void singleCriterion()
    {
        ChipInfo chip;
        for (int i = 0; i < int(std::size(Criteria)); ++i)
            chip.*(Criteria[i].second) = QStringLiteral("v%1").arg(i);
        for (const auto& [criterion, member] : Criteria) {
            const QString own = chip.*member;
            const bool version = member == &ChipInfo::deviceVersion;
            for (const auto& [value, expected] : {std::make_pair(own, true), std::make_pair(own + "X", false),
                                                  std::make_pair(own.toUpper(), false), std::make_pair(" " + own, false),
                                                  std::make_pair(QStringLiteral("Any"), false), std::make_pair(QString(), true),
                                                  std::make_pair(QString(QLatin1String("")), !version)}) {
                ChipFilter filter;
                filter.*criterion = value;
                QVERIFY2(DEV::matchFilter(chip, filter) == expected, qPrintable(own + ": '" + value + "'"));
            }
        }
    }

    // Criteria as "index in Criteria=value", all of them applied, over the database in its order.
    void filterChips_data()
    {
        QTest::addColumn<L>("criteria");
        QTest::addColumn<QString>("expected");
        QTest::newRow("none keeps all, duplicates too") << L{} << "v-c v-b dup dup v-a v-none";
        QTest::newRow("series") << L{"1=S1"} << "v-c v-a v-none";
        QTest::newRow("empty version: unversioned only") << L{"4="} << "v-none";
        QTest::newRow("four criteria") << L{"3=DEV2", "5=PKG1", "8=C6", "2=MK1"} << "v-b";
        QTest::newRow("nothing") << L{"1=S1", "6=AUX2"} << "";
    }
    void filterChips()
    {
        QFETCH(L, criteria);
        QFETCH(QString, expected);
        ChipFilter filter;
        for (const QString& c : criteria) // "4=" sets an empty, not a null value (Qt 6's section() gives null)
            filter.*(Criteria[c.section('=', 0, 0).toInt()].first) = c.section('=', 1) + QLatin1String("");
        const QList<ChipInfo> chips = m_db->filterChips(filter);
        QCOMPARE(TestHelpers::ids(chips).join(' '), expected);
        const QList<DEV::DeviceArg> devices = m_db->filterDevice(filter);
        QCOMPARE(devices.size(), chips.size());
        for (int i = 0; i < chips.size(); ++i)
            QCOMPARE(TestHelpers::fields(devices.at(i)), TestHelpers::fields(chips.at(i)));
    }

    // "COLUMN=VALUE" requirements: the message for the first one refused (the record keeps the others), the minimums
    // read back, and the chips that meet them, smallest first.
    void requirements_data()
    {
        QTest::addColumn<L>("assignments");
        QTest::addColumn<QString>("refused");
        QTest::addColumn<L>("set");
        QTest::addColumn<L>("fitting");
        const L byName{"P-bare", "P-empty", "P-missing", "P1023", "P1024", "P2Mb", "P8"};
        QTest::newRow("none: by part number") << L() << "" << L() << byName;
        QTest::newRow("1Mb is 1024Kb") << L{"SSRAM=1Mb"} << "" << L{"SSRAM=1024Kb"} << L{"P-bare", "P1024", "P2Mb"};
        QTest::newRow("bare is Kb; names in any case and spacing") << L{"user flash=0", " ssram = 1024 "} << ""
            << L{"SSRAM=1024Kb", "User Flash=0Kb"} << L{"P-bare", "P1024", "P2Mb"};
        QTest::newRow("blanks read past; empty and missing are 0") << L{"SSRAM=8"} << "" << L{"SSRAM=8Kb"}
            << L{"P8", "P1023", "P-bare", "P1024", "P2Mb"};
        QTest::newRow("empty value unsets") << L{"SSRAM=1Mb", "ssram="} << "" << L() << byName;
        QTest::newRow("twelve digits at most") << L{"IO=999999999999", "LUT=1234567890123"}
            << "LUT: '1234567890123' is not a whole number" << L{"IO=999999999999"} << L();
        QTest::newRow("no column") << L{"=5"} << "'' is not a resource column (IO, LUT, FF, ROM16, SSRAM, BSRAM, "
            "User Flash, DSP, PLL)" << L() << byName;
        QTest::newRow("no value") << L{"PLL"} << "'PLL' is not COLUMN=VALUE" << L() << byName;
        QTest::newRow("bytes") << L{"BSRAM=2MB"} << "BSRAM: '2MB' is not a size such as 500Kb or 1Mb" << L() << byName;
        QTest::newRow("negative") << L{"DSP=-1"} << "DSP: '-1' is not a whole number" << L() << byName;
        QTest::newRow("Kb on a count") << L{"DSP=1Kb"} << "DSP: '1Kb' is not a whole number" << L() << byName;
    }
    void requirements()
    {
        QFETCH(L, assignments);
        QFETCH(QString, refused);
        QFETCH(L, set);
        QFETCH(L, fitting);
        const auto chip = [](const char* pn, const char* ssram) {
            return "m," + QByteArray(pn) + ",S,k,d,,pk,1.0V,C6,,10,200,300,0," + ssram + ",0,,1,2\n";
        };
        const QList<ChipInfo> chips = m_files.load("m,P-missing,S,k,d,,pk,1.0V,C6,,10,200,300,0\n" + chip("P-empty", "")
            + chip("P8", " 8Kb ") + chip("P1023", "1023Kb") + chip("P1024", "1024Kb") + chip("P-bare", "1024")
            + chip("P2Mb", "2Mb"))->allChipInfo();
        DEV::ChipRequirements needs;
        QString message;
        for (const QString& assignment : assignments) {
            const QString m = needs.set(assignment);
            message = message.isEmpty() ? m : message;
        }
        QCOMPARE(message, refused);
        QCOMPARE(needs.toStrings(), set);
        QCOMPARE(needs.isEmpty(), set.isEmpty());
        L names;
        for (const ChipInfo& c : DEV::smallestFirst(DEV::filterChips(chips, needs), needs))
            names << c.partNumber;
        QCOMPARE(names, fitting);
        // Only the resource columns have amounts and minimums.
        QCOMPARE(DEV::resourceAmount(chips.first(), int(DEV::ChipColumn::Voltage)), 0);
        QCOMPARE(needs.minimumOf(DEV::ChipColumnCount), DEV::ChipRequirements::Unset);
    }

    // The chips of a series in a package, by every resource in column order as numbers, then by part number. The
    // part number picks the record (of a shared one, the record with the id asked for, else the first) whose series
    // and package count. "id/part number[/series/package]" asked for, the ids expected.
    void samePackage_data()
    {
        QTest::addColumn<L>("asked");
        QTest::addColumn<QString>("expected");
        const QString p1 = "c-1 z-1 a-2 a-1 b-1";
        QTest::newRow("IO, LUT as a number, FF, then part number") << L{"a-1", "PA-C6"} << p1;
        QTest::newRow("any chip of the package gives the same list") << L{"b-1", "PB"} << p1;
        QTest::newRow("another package of the series") << L{"d-1", "PD"} << "d-1";
        QTest::newRow("stale record: the database's series and package") << L{"d-1", "PD", "S2", "P1"} << "d-1";
        QTest::newRow("no package: only chips without one") << L{"e-1", "PE"} << "e-2 e-1";
        QTest::newRow("shared part number: the record with the id") << L{"m-2", "PM"} << "m-2 q-1";
        QTest::newRow("shared part number, id unknown: the first") << L{"zz", "PM"} << "m-1";
        QTest::newRow("unknown part number") << L{"a-1", "PX"} << "";
        QTest::newRow("no chip") << L{"", ""} << "";
    }
    void samePackage()
    {
        QFETCH(L, asked);
        QFETCH(QString, expected);
        const auto db = m_files.load("c-1,PC,S1,k,D3,,P1,1.0V,C6,,8,9000,9000\na-1,PA-C6,S1,k,D1,,P1,1.0V,C6,,10,900,300\n"
                                     "b-1,PB,S1,k,D2,A,P1,1.0V,C6,,10,1000,100\na-2,PA-C5,S1,k,D1,,P1,1.0V,C5,,10,900,300\n"
                                     "z-1,PZ,S1,k,D1,,P1,1.0V,C6,,10,900,200\nx-1,PX1,S2,k,DX,,P1,1.0V,C6,,1,1,1\n"
                                     "d-1,PD,S1,k,D1,,P2,1.0V,C6,,1,1,1\ne-1,PE,S1,k,D4,,,1.0V,C6,,5\n"
                                     "e-2,PE2,S1,k,D5,,,1.0V,C6,,4\nn-1,,S1,k,D6,,P9,1.0V,C6,,4\nq-1,PQ,S3,k,DQ,,P4,1.0V,C6,,9\n"
                                     "m-2,PM,S3,k,DM,A,P4,1.0V,C6,,8\nm-1,PM,S3,k,DM,B,P3,1.0V,C6,,8\n");
        ChipInfo chip;
        chip.deviceId = asked.at(0);
        chip.partNumber = asked.at(1);
        chip.series = asked.value(2);
        chip.package = asked.value(3);
        QCOMPARE(TestHelpers::ids(db->samePackage(chip)).join(' '), expected);
    }

    // The bundled catalogue: for every chip, exactly the part numbers of its series and package as the file's lines
    // have them.
    void samePackageOnBundledCatalogue()
    {
        const DEV::DeviceDb* db = DEV::DeviceDb::instance();
        const auto partNumbers = [db](const ChipInfo& chip) {
            L pns;
            for (const ChipInfo& c : db->samePackage(chip))
                pns << c.partNumber;
            return pns;
        };
        QFile file(DEV::DeviceDb::defaultDataFile());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QHash<QString, L> lines;
        for (const QString& line : QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts))
            lines[line.section(',', 2, 2) + '/' + line.section(',', 6, 6)] << line.section(',', 1, 1);
        for (const ChipInfo& chip : db->allChipInfo()) {
            L pns = partNumbers(chip);
            pns.sort();
            L expected = lines.value(chip.series + '/' + chip.package);
            expected.sort();
            QCOMPARE(pns, expected);
        }
    }

    // Catalogues shaped like a large real one, with match keys of their own and with every value distinct, with patterns
    // taken from their own values: stretches of them searched as the round says, and the whole list as typed into the
    // selector.
    void shapedCatalogues_data()
    {
        QTest::addColumn<QByteArray>("shape");
        QTest::newRow("real") << QByteArray("real");
        QTest::newRow("keyed") << QByteArray("keyed");
        QTest::newRow("distinct") << QByteArray("distinct");
    }
    void shapedCatalogues()
    {
        QFETCH(QByteArray, shape);
        const QList<ChipInfo> chips =
            m_files.load(TestHelpers::generatedCatalogue(shape.constData(), TestHelpers::rounds(17000)))->allChipInfo();
        const int step = TestHelpers::rounds(2801);
        QRandomGenerator rng(20261125u);
        const auto choose = [&rng](int n) { return int(rng.bounded(n)); };
        for (int r = 0; r < 6; ++r) {
            const ChipInfo& c = chips.at(r * step);
            const QString texts[] = {c.partNumber.left(r % 9 + 1), c.package, c.resources.value(5),
                                     c.series.left(3).toLower(), QStringLiteral("#none#"), c.voltage};
            const ChipFilterBySearch f{r % 4 == 3 ? 2 : 0, r % 4, r % 3 == 1, texts[r % 6]};
            QString difference = disagreementAtEveryTuning(chips.mid(r * step, 400), f, choose);
            QVERIFY2(difference.isEmpty(), qPrintable(difference));
            if (r % 2) // a package, the start of every series, a voltage
                difference = disagreementAtEveryTuning(chips, ChipFilterBySearch{0, 3, false, texts[r % 6]}, choose);
            QVERIFY2(difference.isEmpty(), qPrintable(difference));
        }
    }

    // Values and chips that meet in the middle of a pattern, letters beyond ASCII in values and patterns (the Kelvin
    // sign is a "k", not a "*"), the searches that folded text cannot serve (on short lists), a short list and one long
    // enough to be split into parts at the default tuning with a match in its very last value.
    void preparedSearch()
    {
        ChipInfo a, b, c;
        a.series = QStringLiteral("ab");
        a.matchKey = QStringLiteral("cd");
        a.partNumber = QStringLiteral("ZR1N-9");
        a.auxiliary = QStringLiteral("*");
        b.package = QString::fromUtf8("\xE2\x84\xAA");
        b.resources = L{QString(), QStringLiteral("12Kb")};
        c.partNumber = QStringLiteral("Q");
        c.voltage = QStringLiteral("k1");
        QList<ChipInfo> chips{a, b, c};
        while (chips.size() < TestHelpers::rounds(17000))
            chips << a << c;
        chips.last().voltage = QStringLiteral("LastV");
        QRandomGenerator rng(20261123u);
        const auto choose = [&rng](int n) { return int(rng.bounded(n)); };
        for (const QList<ChipInfo>& list : {chips.mid(0, 9), chips.mid(int(chips.size()) - 70), chips}) {
            for (const char* pattern : {"bc", "9q", "k", "ZR1n", "r1n-9", "12kb", "0", "", "q", "lastv", "\xC3\xA4",
                                        "\xE2\x84\xAA"}) {
                for (const ChipFilterBySearch& f : {ChipFilterBySearch{0, 3, false, QString::fromUtf8(pattern)},
                                                    ChipFilterBySearch{7, 0, true, QString::fromUtf8(pattern)}}) {
                    const QString difference =
                        list.size() < 100 || f.group == 0 ? disagreementAtEveryTuning(list, f, choose) : QString();
                    QVERIFY2(difference.isEmpty(), qPrintable(difference));
                }
            }
        }
        QCOMPARE(Reference::found(chips, ChipFilterBySearch{0, 3, false, "LASTV"}), QVector<int>{int(chips.size()) - 1});
        for (const DEV::ChipSearch& none : {DEV::ChipSearch(), DEV::ChipSearch(QList<ChipInfo>())})
            QVERIFY(none.filterRows(ChipFilterBySearch{0, 3, false, "a"}).isEmpty() && none.filterRows({}, {0, 1}).isEmpty());
    }

    // The byte kernels against their plain twins: needles of 1 to 18 bytes at every place in texts of up to 48 bytes
    // full of decoys that share the needle's first and last byte, and units around the capitals' edges and beyond
    // U+007F at every place in values of up to 24 units.
    void kernelTwins()
    {
        for (size_t m = 1; m <= 18; ++m) {
            const std::string needle = 'b' + std::string(m - 1, 'c');
            std::string decoys;
            while (decoys.size() < 48) // the needle with a middle byte broken, or a byte that is not its first
                decoys += m > 2 ? needle.substr(0, m / 2) + 'x' + needle.substr(m / 2 + 1) : std::string("c");
            for (size_t size = 0; size <= 48; ++size) {
                for (size_t at = 0; at <= size; ++at) {
                    const std::string text = decoys.substr(0, size).replace(at, m, needle).substr(0, size);
                    QVERIFY2(DEV::pimpl::find(text, needle) == DEV::pimpl::plainFind(text, needle), text.c_str());
                }
            }
        }
        for (int n = 0; n <= 24; ++n) {
            for (const int odd : {0x40, 0x41, 0x5A, 0x5B, 0x60, 0x61, 0x7A, 0x7F, 0x80, 0xFF, 0x100, 0x212A, 0xFFFF}) {
                for (int at = 0; at <= n; ++at) {
                    const QString ascii = QStringLiteral("@AZ[`az{").repeated(4).left(n);
                    const QString value = (ascii.left(at) + QChar(ushort(odd)) + ascii.mid(at + 1)).left(n);
                    QByteArray fast(n, 0), plain(n, 0);
                    const bool narrow = DEV::pimpl::plainFold(value, plain.data());
                    QVERIFY2(DEV::pimpl::fold(value, fast.data()) == narrow && (!narrow || fast == plain), qPrintable(value));
                }
            }
        }
    }

    // The folded index against the reference chip by chip, at every tuning: Undecided only where a value searched
    // goes beyond ASCII, and otherwise Found exactly where the reference finds the chip; over a whole list, once and
    // prepared, and among given positions, few and many.
    void foldedVerdicts()
    {
        QRandomGenerator rng(20261126u);
        const auto choose = [&rng](int n) { return int(rng.bounded(n)); };
        const QList<ChipInfo> chips = Reference::randomChips(choose, 300, 20);
        QVector<int> few, many;
        for (int k = 0; k < chips.size(); ++k)
            (k % 3 ? many : few) << k;
        for (const auto& [name, tuning] : TestHelpers::extremeTunings()) {
            const TestHelpers::ScopedTuning scoped(tuning);
            const DEV::pimpl::FoldedChips prepared(chips);
            for (int round = 0; round < TestHelpers::rounds(20); ++round) {
                const ChipFilterBySearch f{0, 3, false, Reference::randomText(choose, true, round % 4 == 0)};
                const QByteArray needle = DEV::pimpl::foldedPattern(f.pattern);
                std::vector<char> once(chips.size()), all(chips.size()), some(chips.size());
                if (needle.isEmpty() || f.pattern == QLatin1String("0")) // "0" also finds empty values
                    continue;
                DEV::pimpl::findFolded(chips, needle, once.data());
                prepared.find(needle, all.data());
                prepared.findAmong(needle, few, some.data());
                prepared.findAmong(needle, many, some.data() + few.size());
                const QVector<int> order = few + many;
                for (int k = 0; k < chips.size(); ++k) {
                    const char expected = Reference::matchSearch(chips.at(k), f) ? DEV::pimpl::Found : DEV::pimpl::Missed;
                    const bool wide = Reference::beyondAscii(chips.at(k));
                    for (const char verdict : {once[size_t(k)], all[size_t(k)], some[size_t(order.indexOf(k))]})
                        QVERIFY2(verdict == expected || (wide && verdict == DEV::pimpl::Undecided), name.constData());
                }
            }
        }
    }

    // The scanning kernel's edges, by every route: the pattern at the end of values whose length puts it in the last
    // bytes of a sixteen-byte block, before, at and after where blocks hand over to single bytes; at the start; missed
    // by one letter at the end; values as long as the pattern and one shorter; fillers of the pattern with a letter
    // broken, which pass the kernel's first look; a value of each length followed by one that starts with the pattern.
    // In a chip's own values and in its device's, among chips with nothing to search and one beyond ASCII; the list's
    // last values end with the pattern; and behind many chips whose device holds the pattern.
    void kernelEdges_data()
    {
        QTest::addColumn<QString>("pattern");
        for (const char* pattern : {"q", "Qz", "q-Q", "zr1n", "zr1n-mvpg256-c7", "zr1n-mvpg256-c7/", "zr1n-mvpg256-c7/i",
                                    "zr1n-mvpg256-c7/i6-zr9k31aq113-mv"})
            QTest::newRow(pattern) << QString::fromLatin1(pattern);
    }
    void kernelEdges()
    {
        QFETCH(QString, pattern);
        const int m = int(pattern.size());
        QString broken = m == 1 ? QStringLiteral("#") : pattern;
        broken[m / 2] = QLatin1Char('#');
        const auto filler = [&broken](int n) { return broken.repeated(n / broken.size() + 1).left(n); };
        QList<ChipInfo> edges;
        for (int length : {1, 2, 3, 14, 15, 16, 17, 18, 30, 31, 32, 33, 34, 46, 47, 48, 49, std::max(m - 1, 1), m, m + 1}) {
            L values{pattern.left(length)};
            if (length >= m)
                values = L{filler(length - m) + broken, filler(length - m) + (length % 2 ? pattern.toUpper() : pattern),
                           pattern + filler(length - m)};
            for (const QString& value : values) {
                edges << ChipInfo{} << ChipInfo{};
                edges[edges.size() - 2].partNumber = value;
                edges.last().package = value;
            }
            ChipInfo own, shared; // a value of this length, then one that starts with the pattern
            own.partNumber = shared.series = filler(length);
            own.matchKey = shared.device = pattern + filler(2);
            edges << own << shared;
        }
        edges[5].voltage = QString::fromUtf8("\xE2\x84\xAA");
        edges.last().partNumber = edges.last().package = filler(33 - m) + pattern;
        QList<ChipInfo> behind{ChipInfo()};
        behind.first().series = pattern;
        while (behind.size() < 3 * edges.size())
            behind << behind.first();
        QRandomGenerator rng(20261124u);
        const auto choose = [&rng](int n) { return int(rng.bounded(n)); };
        for (const QList<ChipInfo>& list : {edges, behind + edges}) {
            const ChipFilterBySearch f{0, 3, false, pattern};
            QVERIFY(!Reference::found(edges, f).isEmpty());
            for (int round = 0; round < 4; ++round) {
                const QString difference = disagreementAtEveryTuning(list, f, choose);
                QVERIFY2(difference.isEmpty(), qPrintable(difference));
            }
        }
    }

    // The library's search against the literal reference, over random chips and searches, seeded so every run checks
    // the same cases: a list short enough to be searched value by value, records built one by one, and loaded ones
    // that share equal values mixed with built ones that look equal but share nothing, and a duplicate far from its
    // original; then a list long enough to be split into parts at the default tuning.
    void searchAgreesWithReference()
    {
        QRandomGenerator rng(20261121u);
        const auto choose = [&rng](int n) { return int(rng.bounded(n)); };
        const QList<ChipInfo> built = Reference::randomChips(choose, 300, 40);
        TestHelpers::MessageCapture capture;
        QList<ChipInfo> loaded = Reference::loadedCopy(built, m_files.path(QStringLiteral("chips.csv")));
        loaded << built.mid(0, 100) << loaded.first(); // equal values, some shared and some not; a far duplicate
        const int loadMessages = capture.count(); // short lines are reported
        const QList<QList<ChipInfo>> lists{built.mid(0, 63), built, loaded, Reference::randomChips(choose, 200, 3)};
        // Lists with many chips beyond ASCII, which folded text leaves to the plain matcher, and with few: more than one
        // chip in sixteen, and fewer.
        QSet<bool> many;
        for (const QList<ChipInfo>& chips : lists)
            many << (std::count_if(chips.begin(), chips.end(), &Reference::beyondAscii) * 16 > chips.size());
        QCOMPARE(many.size(), 2);
        int matched = 0;
        const int rounds = TestHelpers::rounds(400);
        for (int round = 0; round < rounds; ++round) {
            const ChipFilterBySearch f = Reference::randomSearch(choose);
            const QList<ChipInfo>& chips = lists.at(round % lists.size());
            const QString difference = disagreementAtEveryTuning(chips, f, choose);
            QVERIFY2(difference.isEmpty(), qPrintable(difference));
            matched += int(Reference::found(chips, f).size() * 1000 / chips.size());
        }
        // Guard against a generator that only ever produces one answer.
        QVERIFY(matched > rounds * 50 && matched < rounds * 950);
        // A record of nothing but empty values, which "0" finds.
        QCOMPARE(DEV::filterChips({ChipInfo()}, ChipFilterBySearch{0, 3, false, "0"}).size(), 1);
        QList<ChipInfo> longList;
        while (longList.size() < TestHelpers::rounds(17000))
            longList << loaded << built;
        for (int round = 0; round < TestHelpers::rounds(4); ++round) {
            const QString difference = disagreementAtEveryTuning(longList, Reference::randomSearch(choose), choose);
            QVERIFY2(difference.isEmpty(), qPrintable(difference));
        }
        QCOMPARE(capture.count(), loadMessages); // a pattern that is not a valid expression is not reported
    }
};

QTEST_GUILESS_MAIN(TestChipFilter)
#include "tst_chipfilter.moc"
