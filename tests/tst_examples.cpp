// SPDX-License-Identifier: BSD-3-Clause
// The example programs as processes, the way scripts run them (devicepicker's dialog answered by its
// DEVICEPICKER_AUTOANSWER test aid), and the shipped German translation.

#include "chiprequirements.h"
#include "deviceselector.h"
#include "deviceselectordialog.h"
#include "searchlineedit.h"
#include "testhelpers.h"

#include <QtWidgets>

using TestHelpers::runProgram;
using L = QStringList;

// The selector's minimum field for resource @p column.
static QLineEdit* field(const QWidget& selector, const QString& column)
{
    for (auto* edit : selector.findChildren<QLineEdit*>()) {
        if (edit->accessibleName() == "Minimum " + column)
            return edit;
    }
    qFatal("no minimum field for %s", qPrintable(column));
}

class TestExamples : public QObject
{
    Q_OBJECT
    TestHelpers::Catalogues m_files;
    // The sources, this build's programs, and the small catalogue they are run on.
    const QString m_source = TestHelpers::testPath("source");
    const QString m_query = TestHelpers::testPath("devicequery"), m_picker = TestHelpers::testPath("devicepicker");
    const QString m_fixture = m_source + "/tests/data/query_fixture.csv";

private Q_SLOTS:
    // devicepicker --recent keeps its settings here, never in the home directory of whoever runs the tests.
    void initTestCase() { qputenv("XDG_CONFIG_HOME", m_files.path("config").toUtf8()); }

    // "program|answer[|status[|dead]]" and arguments, then the exact output. A line "program: ..." is the one-line
    // error of status 2 with nothing on standard output; nothing (or "0" from --count, "[]" from --json) is status 1;
    // else 0, unless a status is given. "dead": DISPLAY names no X server, and no platform is chosen.
    void outputAndStatus_data()
    {
        QTest::addColumn<QString>("run");
        QTest::addColumn<L>("arguments");
        QTest::addColumn<QString>("expected");
        QFile file(m_fixture);
        const L fixture = QString(file.open(QIODevice::ReadOnly) ? file.readAll() : "").split('\n', Qt::SkipEmptyParts);
        const auto query = [this](const char* tag, const L& arguments, const QString& expected) {
            QTest::newRow(tag) << "devicequery" << L{"--data", m_fixture} + arguments << expected;
        };
        // Chips by id, in the order expected; --csv prints their lines of the data file unchanged.
        const auto select = [&](const char* tag, const L& arguments, const L& ids) {
            QString csv;
            for (const QString& id : ids)
                csv += fixture.filter(QRegularExpression(QLatin1Char('^') + id + QLatin1Char(','))).value(0) + '\n';
            query(tag, arguments + L{"--csv"}, csv);
        };
        const QString qa2Table = "Device ID  Part Number    Series  Device  Device Version  Package  Speed  Voltage  IO   "
            "LUT   FF    ROM16  SSRAM  BSRAM  User Flash  DSP  PLL\nqa2-001    QA2-LVBG256C6  QA      QA2     A               "
            "BG256    C6     1.0V     120  4608  4608  0      144Kb  180Kb  0           4    0\n";
        const QString qa2Json = QJsonDocument::fromJson(R"([{"auxiliary":"ext",)"
            R"("device":"QA2","deviceId":"qa2-001","deviceVersion":"A","matchKey":"QA2_BG256","package":"BG256",)"
            R"("partNumber":"QA2-LVBG256C6","resources":["120","4608","4608","","144Kb","180Kb","","4"],)"
            R"("series":"QA","speed":"C6","voltage":"1.0V"}])").toJson();
        query("table: columns padded but the last, empty and missing counts 0", {"--pn", "QA2-LVBG256C6"}, qa2Table);
        query("csv header", {"--csv", "--header", "--pn", "QA1-LVQN32C5"}, "deviceId,partNumber,series,matchKey,device,"
              "deviceVersion,package,voltage,speed,auxiliary,IO,LUT,FF,ROM16,SSRAM,BSRAM,User Flash,DSP,PLL\n"
                  + fixture.first() + '\n');
        query("json", {"--json", "--pn", "QA2-LVBG256C6"}, qa2Json);
        query("count", {"--count"}, "7\n");
        query("count of nothing", {"--count", "--speed", "C9"}, "0\n");
        select("newest device version first", {"--series", "QB"}, {"qb1-003", "qb1-002", "qb1-001"});
        select("--version \"\": unversioned only", {"--series", "QA", "--version", ""}, {"qa1-001"});
        select("old id resolves to new, filters apply", {"--id", "zr9k31-013", "--speed", "C6"}, {"zr9k31a-015"});
        select("pn and another chip's key", {"--pn", "QB1-UVLQ144C7", "--key", "QB1_LQ144B"}, {});
        select("search within the filters, group by name", {"--series", "QB", "--search", "c8", "--in", "SPEED"}, {"qb1-003"});
        select("wildcard in group 2", {"--search", "qb1-uv*", "--in", "2", "--mode", "wildcard"}, {"qb1-002", "qb1-001"});
        select("--min: at least, any case, 1Mb is 1024Kb; --smallest: required counts, then part number",
               {"--min", "io=100", "--min", "SSRAM=1Mb", "--smallest"}, {"zr9k31-013", "zr9k31a-015"});
        select("--smallest: IO before BSRAM", {"--min", "BSRAM=0", "--min", "IO=100", "--smallest"},
               {"qb1-003", "qb1-001", "qb1-002", "qa2-001", "zr9k31-013", "zr9k31a-015"});
        query("--min: an empty or missing count is 0", {"--count", "--min", "dsp=1", "--min", "pll=1"}, "5\n");
        query("--min 1025Kb is more than 1Mb", {"--count", "--min", "user flash=1025Kb"}, "0\n");
        query("--min: not a number", {"--min", "LUT=2k"}, "devicequery: LUT: '2k' is not a whole number\n");
        query("--min: bytes are no unit", {"--min", "BSRAM=64KB"},
              "devicequery: BSRAM: '64KB' is not a size such as 500Kb or 1Mb\n");
        query("--min: not a resource", {"--min", "Speed=6"}, "devicequery: 'Speed' is not a resource column (IO, LUT, "
              "FF, ROM16, SSRAM, BSRAM, User Flash, DSP, PLL)\n");
        query("--smallest alone", {"--smallest"}, "devicequery: --smallest needs --min\n");
        QTest::newRow("--version among others filters") << "devicequery" << L{"--count", "--version"}
                                                         << "devicequery: missing value after '--version'\n";
        QTest::newRow("option instead of a value") << "devicequery" << L{"--series", "--json"}
                                                   << "devicequery: missing value after '--series'\n";
        QTest::newRow("invalid regular expression") << "devicequery" << L{"--search", "a(", "--mode", "regexp"}
                                                    << "devicequery: invalid regular expression 'a(': unexpected end\n";
        query("json of nothing", {"--json", "--speed", "C9"}, "[]\n");
        query("--same-package: the table of --pn", {"--same-package", "QA2-LVBG256C6"}, qa2Table);
        query("--same-package: the JSON of --pn", {"--same-package", "QA2-LVBG256C6", "--json"}, qa2Json);
        select("--same-package: equal resources, by part number", {"--same-package", "QB1-UVLQ144I7"},
               {"qb1-003", "qb1-001", "qb1-002"});
        select("--same-package: old and new device", {"--same-package", "ZR9K31AA-LVBG484C6"}, {"zr9k31-013", "zr9k31a-015"});
        query("--same-package: filters narrow", {"--same-package", "QB1-LVLQ144C8", "--voltage", "3.3V", "--count"}, "2\n");
        query("--same-package: unknown", {"--same-package", "QB1"}, "devicequery: unknown part number 'QB1'\n");
        query("--same-package and --pn", {"--same-package", "QX", "--pn", "QX"},
              "devicequery: choose only one of --id, --pn and --same-package\n");
        query("--compare: a * where values differ, an empty cell last; a repeat counts once",
              {"--compare", "QB1-LVLQ144C8", "QB1-UVLQ144C7", "QB1-LVLQ144C8"},
              "* Part Number     QB1-LVLQ144C8  QB1-UVLQ144C7\n  Series          QB             QB\n"
              "  Device          QB1            QB1\n* Device Version  b\n  Package         LQ144          LQ144\n"
              "* Speed           C8             C7\n* Voltage         1.2V           3.3V\n"
              "  IO              100            100\n  LUT             8640           8640\n"
              "  FF              6480           6480\n  ROM16           0              0\n"
              "  SSRAM           0              0\n  BSRAM           270Kb          270Kb\n"
              "  User Flash      0              0\n  DSP             10             10\n"
              "  PLL             2              2\n* Device ID       qb1-003        qb1-001\n");
        query("--compare --csv: empty and missing counts 0", {"--compare", "QA1-LVQN32C5", "QA2-LVBG256C6", "--csv"},
              "attribute,differs,QA1-LVQN32C5,QA2-LVBG256C6\nPart Number,1,QA1-LVQN32C5,QA2-LVBG256C6\nSeries,0,QA,QA\n"
              "Device,1,QA1,QA2\nDevice Version,1,,A\nPackage,1,QN32,BG256\nSpeed,1,C5,C6\nVoltage,0,1.0V,1.0V\n"
              "IO,1,24,120\nLUT,1,1152,4608\nFF,1,1152,4608\nROM16,1,18Kb,0\nSSRAM,1,72Kb,144Kb\nBSRAM,1,72Kb,180Kb\n"
              "User Flash,1,64Kb,0\nDSP,1,0,4\nPLL,1,2,0\nDevice ID,1,qa1-001,qa2-001\n");
        query("--compare: unknown", {"--compare", "QA1-LVQN32C5", "QX"}, "devicequery: unknown part number 'QX'\n");
        query("--compare alone", {"--compare"}, "devicequery: --compare needs at least one part number\n");
        query("--compare with a filter", {"--compare", "QA1-LVQN32C5", "--series", "QA"},
              "devicequery: --compare takes no other option than --data, --csv and --json\n");
        query("part number without --compare", {"QA1-LVQN32C5"}, "devicequery: unexpected argument 'QA1-LVQN32C5'\n");
        const QString bad = m_files.write("bad\nx,y\n\nzz\n");
        QTest::newRow("bad lines summed up, no chips") << "devicepicker" << L{"--data", bad}
            << "devicepicker: 3 lines skipped; first at line 1\ndevicepicker: no chips in data file: " + bad + '\n';
        QTest::newRow("unknown part number") << "devicepicker|reject|1" << L{"--part-number", "QX"}
                                             << "devicepicker: unknown part number 'QX'; the dialog opens unfiltered\n";
        const QString exactChip = "deviceId: zr9k31a-015\npartNumber: ZR9K31AA-MVBG484C7/I6\nseries: ZR9K\n"
            "matchKey: ZR9K31A_BG484A\ndevice: ZR9K31A\ndeviceVersion: A\npackage: BG484\nvoltage: 1.2V\nspeed: C7/I6\n"
            "auxiliary:\nresources: 215, 31104, 46656, , 1944Kb, 504Kb, , 27, 2\n";
        QTest::newRow("exact chip of a shared identifier") << "devicepicker|accept" << L{"--part-number", "ZR9K31AA-MVBG484C7/I6"}
                                                           << exactChip;
        // The row of minimums filled in (31104 LUT): the preset chip is shown and chosen, or hidden and nothing is.
        QTest::newRow("picker, a minimum the chip meets") << "devicepicker|accept"
            << L{"--min", "LUT=31104", "--part-number", "ZR9K31AA-MVBG484C7/I6"} << exactChip;
        QTest::newRow("picker, a minimum the chip misses: OK stays off") << "devicepicker|accept|1"
            << L{"--min", "LUT=31105", "--part-number", "ZR9K31AA-MVBG484C7/I6"}
            << "devicepicker: DEVICEPICKER_AUTOANSWER: the button is disabled, cancelling\n";
        QTest::newRow("picker, unknown chip to compare") << "devicepicker" << L{"--compare", "QX"}
                                                         << "devicepicker: --compare: unknown part number 'QX'\n";
        QTest::newRow("picker, --recent and --screenshot") << "devicepicker" << L{"--recent", "--screenshot", "x.png"}
                                                           << "devicepicker: --recent and --screenshot cannot be combined\n";
        QTest::newRow("dead display: --version") << "devicepicker|||dead" << L{"--version"} << "devicepicker " DEVICE_VERSION "\n";
        QTest::newRow("dead display: the dialog") << "devicepicker|||dead" << L()
                                                  << "devicepicker: no display to show the dialog on (try --screenshot FILE)\n";
        QTest::newRow("repeated filter") << "devicequery" << L{"--series", "QA", "--series", "QB"}
                                         << "devicequery: --series given more than once\n";
        QTest::newRow("unreadable data file") << "devicequery" << L{"--data", "/nonexistent/x.csv"}
                                              << "devicequery: cannot read data file: /nonexistent/x.csv\n";
        QTest::newRow("unknown language") << "devicepicker" << L{"--lang", "xx"} << "devicepicker: no translation for language 'xx'\n";
        QTest::newRow("picker, bad minimum") << "devicepicker" << L{"--min", "LUT=2k"}
                                             << "devicepicker: LUT: '2k' is not a whole number\n";
        QTest::newRow("nobody to answer") << "devicepicker" << L()
                                          << "devicepicker: no display to show the dialog on (try --screenshot FILE)\n";
        QTest::newRow("--version") << "devicequery" << L{"--version"} << "devicequery " DEVICE_VERSION "\n";
        QTest::newRow("chosen: the old id picks its successor though both are listed; in German")
            << "devicepicker|accept" << L{"--data", m_fixture, "--preset", "zr9k31-013", "--lang", "de"}
            << "deviceId: zr9k31a-015\npartNumber: ZR9K31AA-LVBG484C6\nseries: ZR9K\nmatchKey: ZR9K31A_BG484A\n"
               "device: ZR9K31A\ndeviceVersion: C\npackage: BG484\nvoltage: 1.0V\nspeed: C6\nauxiliary:\n"
               "resources: 215, 31104, 46656, , 1944Kb, 504Kb, , 27, 2\n";
        QTest::newRow("cancelled, --json") << "devicepicker|reject" << L{"--preset", "zr9k31-013", "--json"} << "";
        QTest::newRow("OK, nothing selected") << "devicepicker|accept" << L() << "";
        // Boards: the bundled ones, and the fixture's, whose problems --check adds to the chip catalogue's finding.
        const QString boards = m_source + "/tests/data/boards_fixture.csv";
        QTest::newRow("--boards --csv, quoted") << "devicequery" << L{"--boards", "--search", "kite", "--csv"}
            << "zb-kite-9k13,Kite 13,Zirra,A,ZR9K13-LVQN88C6/I5,Low-cost evaluation board\nzb-kite-9k31,Kite 31,Zirra,C,"
               "ZR9K31A-LVBG484C6/I5,\"Evaluation board: Ethernet, HDMI, 512 MB DDR3\"\n";
        QTest::newRow("--boards --count") << "devicequery" << L{"--boards", "--search", "ZIRRA", "--count"} << "8\n";
        QTest::newRow("--boards, none found") << "devicequery" << L{"--boards", "--search", "nothing", "--json"} << "[]\n";
        QTest::newRow("--board") << "devicequery" << L{"--board", "zb-kite-9k31", "--csv"}
            << "zr9k31a-007,ZR9K31A-LVBG484C6/I5,ZR9K,ZR9K31A_BG484,ZR9K31A,,BG484,1.0V,C6/I5,,215,31104,46656,,1944Kb,504Kb,,27,2\n";
        QTest::newRow("--board unknown") << "devicequery" << L{"--board", "b-9"} << "devicequery: unknown board 'b-9'\n";
        QTest::newRow("--boards --pn") << "devicequery" << L{"--boards", "--pn", "P"}
            << "devicequery: --boards takes no other option than --boards-file, --data, --search, --csv, --header, --json and --count\n";
        QTest::newRow("--boards-file alone") << "devicequery" << L{"--boards-file", boards}
            << "devicequery: --boards-file needs --boards, --board or --check\n";
        QTest::newRow("--boards, no file") << "devicequery" << L{"--boards", "--boards-file", "/no/b.csv"}
            << "devicequery: cannot read board file: /no/b.csv\n";
        QTest::newRow("--check the bundled boards") << "devicequery||0"
            << L{"--check", "--boards-file", m_source + "/data/device/boards.csv"} << "";
        QTest::newRow("--check boards") << "devicequery||1" << L{"--check", m_fixture, "--boards-file", boards}
            << m_fixture + ":2: 8 resource counts instead of 9\n" + boards + ":6: chip 'NOPE-1' of board 'b-3' is not in "
               "the device catalogue\n" + boards + ":8: line skipped: board identifier 'b-1' is already on line 4\n" + boards
               + ":9: line skipped: 2 fields instead of 6\n" + boards + ":10: line skipped: a quote out of place\n" + boards
               + ":11: line skipped: a quote out of place\n" + boards + ":12: line skipped: no board identifier\n";
    }
    void outputAndStatus()
    {
        QFETCH(QString, run);
        QFETCH(L, arguments);
        QFETCH(QString, expected);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DEVICEPICKER_AUTOANSWER"), run.section('|', 1, 1));
        if (run.endsWith(QLatin1String("|dead"))) {
            environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
            environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
            environment.insert(QStringLiteral("DISPLAY"), QStringLiteral(":9873"));
        }
        const bool query = run.startsWith(QLatin1String("devicequery"));
        const TestHelpers::Run r = runProgram(query ? m_query : m_picker, arguments, environment);
        const bool error = expected.startsWith(run.section('|', 0, 0) + ": ");
        QCOMPARE(QString::fromUtf8(r.err), error ? expected : QString());
        QCOMPARE(QString::fromUtf8(r.out), error ? QString() : expected);
        const bool nothing = expected.isEmpty() || expected == QLatin1String("0\n") || expected == QLatin1String("[]\n");
        QCOMPARE(r.status, run.section('|', 2, 2).isEmpty() ? (error ? 2 : nothing ? 1 : 0) : run.section('|', 2, 2).toInt());
    }

    // --compare --json carries what --csv does: per attribute its name, whether it differs, the chips' values.
    void compareJsonAsCsv()
    {
        const L arguments{"--data", m_fixture, "--compare", "QB1-UVLQ144I7", "ZR9K31-LVBG484C6"};
        const TestHelpers::Run json = runProgram(m_query, arguments + L{"--json"});
        QString csv = "attribute,differs,QB1-UVLQ144I7,ZR9K31-LVBG484C6\n";
        for (const QJsonValue row : QJsonDocument::fromJson(json.out).array()) {
            csv += row["attribute"].toString() + (row["differs"].toBool() ? ",1" : ",0");
            for (const QJsonValue value : row["values"].toArray())
                csv += ',' + value.toString();
            csv += '\n';
        }
        QCOMPARE(json.status, 0);
        QCOMPARE(csv.count('\n'), 18);
        QCOMPARE(QString(runProgram(m_query, arguments + L{"--csv"}).out), csv);
    }

    // Resource minimums through the three ways in: the library, the selector's row typed into by key, devicequery
    // --min. The same chips, neither none nor all of them; hiding the row brings every chip back.
    void requirementsThreeWays_data()
    {
        QTest::addColumn<QByteArray>("catalogue");
        QTest::addColumn<L>("assignments");
        QTest::newRow("bundled, LUT and BSRAM") << QByteArray() << L{"LUT=20000", "BSRAM=500Kb"};
        QTest::newRow("bundled, User Flash and IO") << QByteArray() << L{"User Flash=256Kb", "IO=40"};
        QTest::newRow("real-shaped, three minimums") << TestHelpers::generatedCatalogue("real", 3000)
                                                     << L{"IO=100", "DSP=20", "SSRAM=2Mb"};
    }
    void requirementsThreeWays()
    {
        QFETCH(QByteArray, catalogue);
        QFETCH(L, assignments);
        const QString path = catalogue.isEmpty() ? m_source + "/data/device/device_info.csv" : m_files.write(catalogue);
        DEV::DeviceDb db(path);
        DEV::ChipRequirements needs;
        L arguments{"--data", path, "--csv"};
        for (const QString& assignment : assignments) {
            QVERIFY(needs.set(assignment).isEmpty());
            arguments << "--min" << assignment;
        }
        L library;
        for (const DEV::ChipInfo& chip : DEV::filterChips(db.allChipInfo(), needs))
            library << chip.partNumber;
        L command;
        for (const QString& line : QString(runProgram(m_query, arguments).out).split('\n', Qt::SkipEmptyParts))
            command << line.section(',', 1, 1);
        DEV::DeviceSelector selector(&db);
        selector.setRequirementsVisible(true);
        QCOMPARE(selector.findChildren<QLineEdit*>().size(), 1 + 9); // the search field and one per resource
        for (const QString& assignment : assignments)
            QTest::keyClicks(field(selector, assignment.section('=', 0, 0)), assignment.section('=', 1));
        const auto shown = [&selector] { return TestHelpers::columnTexts(*selector.findChild<QTableView*>()->model(), 0); };
        library.sort();
        command.sort();
        L inSelector = shown();
        inSelector.sort();
        QCOMPARE(inSelector, library);
        QCOMPARE(command, library);
        QVERIFY(!library.isEmpty() && library.size() < db.allChipInfo().size());
        QCOMPARE(selector.requirements().toStrings(), needs.toStrings());
        QSet<QString> series{"Any"}; // the series box lists the series of the fitting chips only
        for (const DEV::ChipInfo& chip : DEV::filterChips(db.allChipInfo(), needs))
            series << chip.series;
        auto* seriesBox = selector.findChild<QComboBox*>("cbSeries");
        QCOMPARE(seriesBox->count(), series.size());
        for (int i = 0; i < seriesBox->count(); ++i)
            QVERIFY(series.contains(seriesBox->itemText(i)));
        // A field that does not read as a minimum is marked and ignored.
        QTest::keyClicks(field(selector, "PLL"), "x");
        QCOMPARE(field(selector, "PLL")->toolTip().section('\n', 0, 0), "PLL: 'x' is not a whole number");
        QCOMPARE(selector.requirements().toStrings(), needs.toStrings());
        selector.setRequirementsVisible(false);
        QCOMPARE(shown().size(), db.allChipInfo().size());
    }

    // Each planted fault is reported on its line, in line order; the bundled catalogue (no file given) is clean.
    void catalogueCheck_data()
    {
        QTest::addColumn<QByteArray>("catalogue");
        QTest::addColumn<L>("findings");
        const QByteArray chip = "a-1,P1,S,k,d,,pk,1.0V,C6,,10,20,30,0,8Kb,72Kb,,1,2";
        QTest::newRow("bundled") << QByteArray() << L();
        QTest::newRow("CR LF line ends, empty line") << chip + "\r\n\r\nb" + QByteArray(chip.mid(1)).replace("P1", "P2") + "\r\n" << L();
        QTest::newRow("too few fields") << QByteArray("x,y\n  \n")
            << L{"1: skipped by the loader: 2 of at least 8 fields", "2: trailing white space",
                 "2: skipped by the loader: 1 of at least 8 fields"};
        QTest::newRow("counts") << QByteArray("a-1,P1,S,k,d,,pk,1.0V,C6,,x,20, 30 ,0,8KB,2Mb,,1,2,3")
            << L{"1: 10 resource counts instead of 9", "1: IO count 'x' is not a number",
                 "1: SSRAM size '8KB' is not written like 72Kb", "1: BSRAM size '2Mb' is not written like 72Kb"};
        QTest::newRow("same part number, same id, other resources") << chip + '\n' + QByteArray(chip).replace("72Kb", "64Kb")
            << L{"2: part number 'P1' is already on line 1",
                 "2: resources differ from line 1, which has the same device identifier 'a-1'"};
        QTest::newRow("renamed onto nothing, trailing blank, stray CR")
            << "zr9k31-013" + chip.mid(3) + " \n\nb" + QByteArray(chip.mid(1)).replace("P1", "P\r2")
            << L{"1: trailing white space",
                 "1: device identifier 'zr9k31-013' is looked up as 'zr9k31a-015', which no line has",
                 "3: stray carriage return"};
    }
    void catalogueCheck()
    {
        QFETCH(QByteArray, catalogue);
        QFETCH(L, findings);
        const QString file = catalogue.isEmpty() ? QString() : m_files.write(catalogue);
        const TestHelpers::Run r = runProgram(m_query, file.isEmpty() ? L{"--check"} : L{"--check", file});
        QCOMPARE(QString::fromUtf8(r.out), findings.isEmpty() ? QString() : file + ':' + findings.join('\n' + file + ':') + '\n');
        QCOMPARE(r.status, findings.isEmpty() ? 0 : 1);
    }

    // On the bundled catalogue beside bin/: a query, the screenshots (the second with the comparison panel), every
    // tool option in --help; the README shows main.cpp's host example.
    void bundledCatalogueScreenshotHelpAndReadme()
    {
        const L found = QString(runProgram(m_query, {"--id", "zr9k31-013", "--csv"}).out).split('\n', Qt::SkipEmptyParts);
        QVERIFY(!found.isEmpty() && found.filter(QRegularExpression("^zr9k31a-015,")) == found);
        const QString png = m_files.path("a.png");
        QCOMPARE(runProgram(m_picker, {"--screenshot", png, "--preset", "zr9k31-013"}).status, 0);
        const QImage image = QImage(png, "PNG").convertToFormat(QImage::Format_RGB32);
        QCOMPARE(image.size(), QSize(800, 450));
        const auto* pixels = reinterpret_cast<const QRgb*>(image.constBits());
        QVERIFY(QSet<QRgb>(pixels, pixels + 800 * 450).size() > 20); // a rendered dialog, not a blank canvas
        QCOMPARE(runProgram(m_picker, {"--screenshot", png, "--compare", "ZR9K31A-LVQN88C6/I5"}).status, 0);
        QCOMPARE(QImage(png).size(), QSize(900, 760)); // with the comparison panel
        QCOMPARE(runProgram(m_picker, {"--screenshot", png, "--boards"}).status, 0);
        const QByteArray help = runProgram(m_query, {"--help"}).out + runProgram(m_picker, {"--help"}).out;
        QVERIFY(help.startsWith("Usage: ") && !help.contains("AUTOANSWER"));
        for (const char* option : {"--search <TEXT>", "--preset <ID>", "--same-package <PN>", "--compare PN [PN...] prints",
                                   "--compare-panel", "--compare <PN>", "--recent ",
                                   "--boards ", "--board <ID>", "--boards-file <FILE>"})
            QVERIFY2(help.contains(option), option);
        QProcessEnvironment german = QProcessEnvironment::systemEnvironment(); // the system's language by default
        german.insert(QStringLiteral("LANGUAGE"), QStringLiteral("de_AT:en"));
        QVERIFY(runProgram(m_picker, {"--help"}, german).out.simplified().contains("LANG) is followed when there is a translation for it; here: de."));
        QFile main(m_source + "/examples/devicepicker/main.cpp"), readme(m_source + "/README.md");
        QVERIFY(main.open(QIODevice::ReadOnly) && readme.open(QIODevice::ReadOnly));
        const QString block = QString::fromUtf8(main.readAll()).section("[host-example]", 1, 1).section('\n', 1, -2);
        QVERIFY2(block.contains("getSelectedChip(")
                     && readme.readAll().contains(QString('\n' + block).replace("\n    ", "\n").toUtf8()),
                 "README.md does not show main.cpp's [host-example] block, one level less indented");
    }

    // Without --data, a program copied elsewhere reads the catalogue beside it, else the first data directory's
    // ($XDG_DATA_HOME, then each of $XDG_DATA_DIRS), and --help names that file; with none, the error lists every
    // place looked at. The catalogues hold 1, 2, 3... chips in the order of the places given, which tells them apart.
    void catalogueBesideTheProgramThenInTheDataDirectories_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<L>("places"); // of beside, home, dir1, dir2
        QTest::addColumn<QString>("read");
        QTest::newRow("beside the program first") << m_query << L{"dir2", "home", "beside"} << "beside";
        QTest::newRow("XDG_DATA_HOME before XDG_DATA_DIRS") << m_query << L{"dir1", "home"} << "home";
        QTest::newRow("the first of XDG_DATA_DIRS that has one") << m_query << L{"dir2"} << "dir2";
        QTest::newRow("none") << m_query << L() << "";
        QTest::newRow("picker: a data directory's") << m_picker << L{"dir1"} << "dir1";
        QTest::newRow("picker: none") << m_picker << L() << "";
    }
    void catalogueBesideTheProgramThenInTheDataDirectories()
    {
        QFETCH(QString, program);
        QFETCH(L, places);
        QFETCH(QString, read);
        const QTemporaryDir dir; // a path without ':', which would split XDG_DATA_DIRS
        const QString root = dir.path();
        const auto file = [&root](const QString& place) {
            return root + (place == "beside" ? "/data" : '/' + place) + "/device/device_info.csv";
        };
        QByteArray chips;
        for (const QString& place : places) {
            chips += TestHelpers::chipLine("x-" + QByteArray::number(places.indexOf(place)), "PN");
            QFile csv(file(place));
            QVERIFY(QDir().mkpath(QFileInfo(csv).path()) && csv.open(QIODevice::WriteOnly) && csv.write(chips) > 0);
        }
        const QString copy = root + "/bin/" + QFileInfo(program).fileName();
        QVERIFY(QDir().mkpath(root + "/bin") && QFile::copy(program, copy));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_DATA_HOME", root + "/home");
        environment.insert("XDG_DATA_DIRS", root + "/dir1:" + root + "/dir2");
        environment.insert("DEVICEPICKER_AUTOANSWER", "reject");
        QVERIFY(runProgram(copy, {"--help"}, environment)
                    .out.endsWith("\nCatalogue read: " + (read.isEmpty() ? "none found" : file(read).toUtf8()) + '\n'));
        const bool query = program == m_query;
        const TestHelpers::Run r = runProgram(copy, query ? L{"--count"} : L(), environment);
        const QString looked = L{file("beside"), file("home"), file("dir1"), file("dir2")}.join(", ");
        // The programs name themselves without the Qt 6 build's suffix, as in every other message.
        QCOMPARE(QString(r.err), read.isEmpty() ? QString(query ? "devicequery" : "devicepicker") + ": no catalogue at " + looked
                                                      + "; name one with --data FILE\n" : QString());
        QCOMPARE(r.status, read.isEmpty() ? 2 : query ? 0 : 1);
        QCOMPARE(QString(r.out), read.isEmpty() || !query ? QString() : QString::number(places.indexOf(read) + 1) + '\n');
    }

    // Under a real X server, "answer:arguments" runs one after the other, and what the last one printed: a second run
    // offers the first run's choice (settings in a directory of the row's own), and the comparison panel's column
    // chosen with Enter is the chip.
    void pickerUnderX_data()
    {
        QTest::addColumn<L>("runs");
        QTest::addColumn<QString>("partNumber");
        QTest::newRow("recent: the second run offers the first run's choice")
            << L{"accept:--recent --part-number ZR9K31AA-MVBG484C7/I6", "reject:--recent --preset zr9k13-001", "recent:--recent"}
            << "ZR9K31AA-MVBG484C7/I6";
        QTest::newRow("the exact chip of a shared identifier") << L{"accept:--part-number ZR9K31AA-MVBG484C7/I6"}
                                                               << "ZR9K31AA-MVBG484C7/I6";
        QTest::newRow("recent: nothing chosen before") << L{"recent:--recent"} << "";
        QTest::newRow("compared: Enter on the last column") << L{"compared:--compare ZR9K31A-LVQN88C6/I5 --compare ZR9K13-LVQN88C7/I6"}
                                                            << "ZR9K13-LVQN88C7/I6";
    }
    void pickerUnderX()
    {
#ifdef __SANITIZE_ADDRESS__ // the X keyboard library's own string reads trip the sanitizer's strict checks
        QSKIP("not under AddressSanitizer");
#endif
        QFETCH(L, runs);
        QFETCH(QString, partNumber);
        QProcessEnvironment x = QProcessEnvironment::systemEnvironment();
        x.remove(QStringLiteral("QT_QPA_PLATFORM"));
        x.insert(QStringLiteral("XDG_CONFIG_HOME"), m_files.path(QTest::currentDataTag()));
        QJsonObject chip;
        for (const QString& run : runs) {
            x.insert(QStringLiteral("DEVICEPICKER_AUTOANSWER"), run.section(':', 0, 0));
            const L arguments = L{"-a", m_picker, "--json"} + run.section(':', 1).split(' ');
            chip = QJsonDocument::fromJson(runProgram(QStandardPaths::findExecutable("xvfb-run"), arguments, x).out).object();
        }
        QCOMPARE(chip["partNumber"].toString(), partNumber);
        QCOMPARE(QFile::exists(m_files.path(QTest::currentDataTag()) + "/Device/devicepicker.conf"), runs.first().contains("--recent"));
    }

    // Refreshed by lupdate, the file stays as it is unless a text was added to or dropped from the code.
    void translationCompleteAndInStepWithTheSources()
    {
        const QString shipped = m_source + "/translations/device_de.ts", fresh = m_files.path("de.ts");
        QVERIFY(QFile::copy(shipped, fresh) && QFile::setPermissions(fresh, QFile::ReadOwner | QFile::WriteOwner));
        const L arguments{m_source + "/device/filter", m_source + "/device/ui", "-no-obsolete", "-locations", "none", "-ts", fresh};
        QCOMPARE(runProgram(TestHelpers::testPath("lupdate"), arguments).status, 0);
        QFile before(shipped), after(fresh);
        QVERIFY(before.open(QIODevice::ReadOnly) && after.open(QIODevice::ReadOnly));
        const QByteArray text = before.readAll();
        QVERIFY(text.contains("<translation>") && !text.contains("unfinished") && !text.contains("<translation></"));
        QCOMPARE(after.readAll(), text);
    }

    // The dialog in German; the headers and the search menu stay English.
    void dialogInGerman()
    {
        QTranslator german;
        QVERIFY(german.load("device_de", TestHelpers::testPath("qmDir")) && qApp->installTranslator(&german));
        const auto db = m_files.load(TestHelpers::chipLine("x-1", "PN-1"));
        DEV::DeviceSelectorDialog dialog(db.get());
        L texts{dialog.windowTitle()};
        for (const char* name : {"label", "label_2", "label_3", "label_5", "label_4", "matchCountLabel"})
            texts << dialog.findChild<QLabel*>(QLatin1String(name))->text();
        auto* search = dialog.findChild<DEV::SearchLineEdit*>();
        QTest::keyClicks(search, QStringLiteral("PN-1"));
        texts << dialog.findChild<QLabel*>(QStringLiteral("matchCountLabel"))->text()
              << dialog.findChild<QAbstractItemModel*>()->headerData(13, Qt::Horizontal).toString()
              << search->rangeActions.first()->text() << search->matchAnywhereAction->text();
        QCOMPARE(texts, (L{"Baustein auswählen", "Serie:", "Baustein:", "Gehäuse:", "Geschwindigkeit:", "Suche:",
                           "(0 Treffer)", "(1 Treffer)", "User Flash", "All", "Match anywhere"}));
    }
};

QTEST_MAIN(TestExamples)
#include "tst_examples.moc"
