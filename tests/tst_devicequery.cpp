// The devicequery tool, run as a process the way build scripts run it: exit
// statuses, selections and their order, the exact output formats, and the
// one-line errors for bad usage.

#include "testhelpers.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using TestHelpers::lines;

namespace {

/// Runs the tool on the fixture catalogue, or on the bundled one when
/// @p fixture is false or another catalogue is named.
TestHelpers::Run run(QStringList arguments, bool fixture = true)
{
    if (fixture && !arguments.contains(QStringLiteral("--data")))
        arguments = QStringList{QStringLiteral("--data"), QStringLiteral(DEVICEQUERY_FIXTURE)} + arguments;
    return TestHelpers::runProgram(QStringLiteral(DEVICEQUERY_PATH), arguments);
}

/// The device identifiers of --csv output, in output order.
QStringList ids(const QByteArray& csv)
{
    QStringList out;
    for (const QString& line : lines(csv))
        out << line.section(QLatin1Char(','), 0, 0);
    return out;
}

} // namespace

class TestDeviceQuery : public QObject
{
    Q_OBJECT

private slots:
    void usageErrors_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        QTest::newRow("unknown option") << QStringList{"--colour"} << "unknown option 'colour'";
        QTest::newRow("missing value") << QStringList{"--id"} << "missing value after '--id'";
        QTest::newRow("unknown group") << QStringList{"--search", "x", "--in", "name"} << "unknown search group 'name'";
        QTest::newRow("group 17") << QStringList{"--search", "x", "--in", "17"} << "unknown search group '17'";
        QTest::newRow("unknown mode") << QStringList{"--search", "x", "--mode", "glob"} << "unknown search mode 'glob'";
        QTest::newRow("csv and json") << QStringList{"--csv", "--json"} << "choose only one of --csv, --json and --count";
        QTest::newRow("header alone") << QStringList{"--header"} << "--header needs --csv";
        QTest::newRow("key without pn") << QStringList{"--key", "K"} << "--key needs --pn";
        QTest::newRow("id and pn") << QStringList{"--id", "a", "--pn", "b"} << "--id and --pn cannot be combined";
        QTest::newRow("mode without search") << QStringList{"--mode", "exact"} << "--in, --mode and --case need --search";
        QTest::newRow("repeated filter") << QStringList{"--series", "QA", "--series", "QB"} << "--series given more than once";
        QTest::newRow("positional") << QStringList{"QA1"} << "unexpected argument 'QA1'";
        QTest::newRow("bare version among others") << QStringList{"--count", "--version"} << "missing value after '--version'";
        QTest::newRow("missing data file") << QStringList{"--data", "/nonexistent/device_info.csv"}
                                           << "cannot read data file: /nonexistent/device_info.csv";
    }

    void usageErrors()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        const TestHelpers::Run r = run(arguments);
        QCOMPARE(r.status, 2);
        QCOMPARE(r.out, QByteArray());
        QCOMPARE(lines(r.err).size(), 1);
        QVERIFY2(r.err.startsWith("devicequery: " + message.toUtf8()), r.err.constData());
    }

    void selection_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QStringList>("expected");
        const QStringList none;
        QTest::newRow("series, newest version first") << QStringList{"--series", "QB"}
                                                      << QStringList{"qb1-003", "qb1-002", "qb1-001"};
        QTest::newRow("no --version: every version") << QStringList{"--series", "QA"} << QStringList{"qa2-001", "qa1-001"};
        QTest::newRow("--version \"\": unversioned only") << QStringList{"--series", "QA", "--version", ""}
                                                          << QStringList{"qa1-001"};
        QTest::newRow("version case counts") << QStringList{"--version", "B"} << QStringList{"qb1-002"};
        QTest::newRow("two filters") << QStringList{"--package", "LQ144", "--voltage", "3.3V"}
                                     << QStringList{"qb1-002", "qb1-001"};
        QTest::newRow("old id resolves to new") << QStringList{"--id", "zr9k31-013"} << QStringList{"zr9k31a-015"};
        QTest::newRow("id then filter") << QStringList{"--id", "qb1-002", "--speed", "C7"} << none;
        QTest::newRow("pn") << QStringList{"--pn", "QB1-UVLQ144C7"} << QStringList{"qb1-001"};
        QTest::newRow("pn and key") << QStringList{"--pn", "QB1-UVLQ144C7", "--key", "QB1_LQ144"} << QStringList{"qb1-001"};
        QTest::newRow("pn and wrong key") << QStringList{"--pn", "QB1-UVLQ144C7", "--key", "QB1_LQ144B"} << none;
        QTest::newRow("search all finds match key") << QStringList{"--search", "lq144b"} << QStringList{"qb1-003"};
        QTest::newRow("search with case") << QStringList{"--search", "lq144b", "--case"} << none;
        QTest::newRow("search over filter") << QStringList{"--series", "QA", "--search", "LQ144"} << none;
        QTest::newRow("search speed by name") << QStringList{"--search", "C8", "--in", "SPEED"} << QStringList{"qb1-003"};
        QTest::newRow("wildcard") << QStringList{"--search", "qb1-uv*", "--in", "part-number", "--mode", "wildcard"}
                                  << QStringList{"qb1-002", "qb1-001"};
        QTest::newRow("wildcard with case") << QStringList{"--search", "qb1-uv*", "--in", "2", "--mode", "wildcard", "--case"}
                                            << none;
        QTest::newRow("regexp whole value") << QStringList{"--search", "QA[12]-.*", "--in", "2", "--mode", "regexp"}
                                            << QStringList{"qa2-001", "qa1-001"};
        QTest::newRow("exact") << QStringList{"--search", "bg256", "--in", "package", "--mode", "exact"}
                               << QStringList{"qa2-001"};
        QTest::newRow("exact, part only") << QStringList{"--search", "bg25", "--in", "package", "--mode", "exact"} << none;
        QTest::newRow("0 finds a missing count") << QStringList{"--search", "0", "--in", "pll"} << QStringList{"qa2-001"};
    }

    void selection()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QStringList, expected);
        const TestHelpers::Run r = run(arguments << "--csv");
        QCOMPARE(r.err, QByteArray());
        QCOMPARE(r.status, expected.isEmpty() ? 1 : 0);
        QCOMPARE(ids(r.out), expected);
    }

    void output_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<int>("status");
        // The table pads every column but the last; empty and missing counts read 0.
        QTest::newRow("table") << QStringList{"--series", "QA"}
                               << QByteArray("Device ID  Part Number    Series  Device  Device Version  Package  Speed  "
                                             "Voltage  IO   LUT   FF    ROM16  SSRAM  BSRAM  User Flash  DSP  PLL\n"
                                             "qa2-001    QA2-LVBG256C6  QA      QA2     A               BG256    C6     "
                                             "1.0V     120  4608  4608  0      144Kb  180Kb  0           4    0\n"
                                             "qa1-001    QA1-LVQN32C5   QA      QA1                     QN32     C5     "
                                             "1.0V     24   1152  1152  18Kb   72Kb   72Kb   64Kb        0    2\n")
                               << 0;
        QTest::newRow("table, nothing matched") << QStringList{"--series", "QC"} << QByteArray() << 1;
        QTest::newRow("csv header") << QStringList{"--csv", "--header", "--pn", "QA1-LVQN32C5"}
                                    << QByteArray("deviceId,partNumber,series,matchKey,device,deviceVersion,package,"
                                                  "voltage,speed,auxiliary,IO,LUT,FF,ROM16,SSRAM,BSRAM,User Flash,DSP,PLL\n"
                                                  "qa1-001,QA1-LVQN32C5,QA,QA1_QN32,QA1,,QN32,1.0V,C5,,24,1152,1152,"
                                                  "18Kb,72Kb,72Kb,64Kb,,2\n") << 0;
        QTest::newRow("count") << QStringList{"--count"} << QByteArray("7\n") << 0;
        QTest::newRow("count unversioned") << QStringList{"--count", "--version", ""} << QByteArray("3\n") << 0;
        QTest::newRow("count, nothing matched") << QStringList{"--count", "--speed", "C9"} << QByteArray("0\n") << 1;
    }

    void output()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, output);
        QFETCH(int, status);
        const TestHelpers::Run r = run(arguments);
        QCOMPARE(r.out, output);
        QCOMPARE(r.status, status);
    }

    // Chips of one device version have no defined order, so compare as sets.
    void csvRoundTrip()
    {
        QFile fixture(QStringLiteral(DEVICEQUERY_FIXTURE));
        QVERIFY(fixture.open(QIODevice::ReadOnly));
        QStringList original = lines(fixture.readAll());
        original.sort();
        QTemporaryDir dir;
        QString data = QStringLiteral(DEVICEQUERY_FIXTURE);
        for (int round = 0; round < 2; ++round) {
            const TestHelpers::Run r = run({"--data", data, "--csv"});
            QCOMPARE(r.status, 0);
            QStringList got = lines(r.out);
            got.sort();
            QCOMPARE(got, original);
            data = dir.filePath(QStringLiteral("again.csv"));
            QFile copy(data);
            QVERIFY(copy.open(QIODevice::WriteOnly) && copy.write(r.out) == r.out.size());
        }
    }

    void json()
    {
        const TestHelpers::Run r = run({"--json", "--series", "QA"});
        QCOMPARE(r.status, 0);
        QJsonParseError error;
        const QJsonArray chips = QJsonDocument::fromJson(r.out, &error).array();
        QCOMPARE(error.error, QJsonParseError::NoError);
        QCOMPARE(chips.size(), 2);
        const QJsonObject expected{
            {"deviceId", "qa2-001"}, {"partNumber", "QA2-LVBG256C6"}, {"series", "QA"}, {"matchKey", "QA2_BG256"},
            {"device", "QA2"},       {"deviceVersion", "A"},          {"package", "BG256"}, {"voltage", "1.0V"},
            {"speed", "C6"},         {"auxiliary", "ext"},
            {"resources", QJsonArray{"120", "4608", "4608", "", "144Kb", "180Kb", "", "4"}}};
        QCOMPARE(chips.at(0).toObject(), expected);
        QCOMPARE(chips.at(1).toObject().value("deviceId").toString(), QStringLiteral("qa1-001"));
    }

    void helpAndVersion()
    {
        const TestHelpers::Run help = run({"--help"}, false);
        QCOMPARE(help.status, 0);
        QVERIFY(help.out.startsWith("Usage: "));
        QVERIFY(help.out.contains("--search <TEXT>"));
        const TestHelpers::Run version = run({"--version"}, false);
        QCOMPARE(version.status, 0);
        QCOMPARE(version.out, QByteArray("devicequery " DEVICEQUERY_VERSION "\n"));
    }

    void bundledCatalogue()
    {
        const TestHelpers::Run old = run({"--id", "zr9k31-013", "--csv"}, false);
        QCOMPARE(old.status, 0);
        const QStringList found = ids(old.out);
        QVERIFY(!found.isEmpty());
        QCOMPARE(found.count(QStringLiteral("zr9k31a-015")), found.size());

        const TestHelpers::Run all = run({"--count"}, false);
        QCOMPARE(all.status, 0);
        QVERIFY2(all.out.trimmed().toInt() > 400, all.out.constData());
    }
};

QTEST_GUILESS_MAIN(TestDeviceQuery)
#include "tst_devicequery.moc"
