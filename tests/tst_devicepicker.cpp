// The devicepicker example, run as a process: usage errors, the data file,
// the screenshot, and the interactive path through getSelectedChip(), with
// the dialog answered by the program's DEVICEPICKER_AUTOANSWER test aid.

#include "testhelpers.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QTest>

using TestHelpers::lines;

namespace {

/// Runs the program; @p answer, when not empty, is how the dialog gets answered.
TestHelpers::Run run(const QStringList& arguments, const QByteArray& answer = QByteArray(),
                     QProcessEnvironment environment = QProcessEnvironment::systemEnvironment())
{
    environment.remove(QStringLiteral("DEVICEPICKER_AUTOANSWER"));
    if (!answer.isEmpty())
        environment.insert(QStringLiteral("DEVICEPICKER_AUTOANSWER"), QString::fromLatin1(answer));
    return TestHelpers::runProgram(QStringLiteral(DEVICEPICKER_PATH), arguments, environment);
}

/// The catalogue the program reads when not given --data: the copy beside bin/.
QString bundledCatalogue()
{
    return QFileInfo(QStringLiteral(DEVICEPICKER_PATH)).dir().filePath(QStringLiteral("../data/device/device_info.csv"));
}

const QStringList MemberNames{"deviceId", "partNumber", "series", "matchKey", "device", "deviceVersion", "package",
                              "voltage", "speed", "auxiliary"};

/// The text format, built here independently of the program: one
/// "name: value" line per member, "name:" alone for an empty value.
QStringList expectedLines(const DEV::ChipInfo& chip)
{
    const QStringList values = TestHelpers::fields(chip).mid(0, 10) << chip.resources.join(", ");
    QStringList out;
    for (int i = 0; i < values.size(); ++i) {
        const QString name = MemberNames.value(i, QStringLiteral("resources"));
        out << (values.at(i).isEmpty() ? name + ":" : name + ": " + values.at(i));
    }
    return out;
}

QJsonObject expectedJson(const DEV::ChipInfo& chip)
{
    QJsonObject out{{"resources", QJsonArray::fromStringList(chip.resources)}};
    for (int i = 0; i < MemberNames.size(); ++i)
        out.insert(MemberNames.at(i), TestHelpers::fields(chip).at(i));
    return out;
}

/// The trimmed lines of @p path, or of the part between its two "[host-example]" markers.
QStringList trimmedLines(const QString& path, bool marked)
{
    QFile file(path);
    QString text = file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    if (marked)
        text = text.section(QLatin1String("[host-example]"), 1, 1).section('\n', 1, -2);
    QStringList out;
    for (const QString& line : text.split('\n'))
        out << line.trimmed();
    return out;
}

} // namespace

class TestDevicePicker : public QObject
{
    Q_OBJECT

private slots:
    void usageErrors_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<QString>("message");
        // Answered, so that an error that slipped through ends instead of hanging.
        const QByteArray accept("accept");
        QTest::newRow("unknown option") << QStringList{"--colour"} << accept << "unknown option 'colour'\n";
        QTest::newRow("stray argument") << QStringList{"zr9k31-013"} << accept << "unexpected argument 'zr9k31-013'\n";
        QTest::newRow("missing value") << QStringList{"--preset"} << accept << "missing value after '--preset'\n";
        QTest::newRow("repeated option") << QStringList{"--preset", "a", "--preset", "b"} << accept
                                         << "--preset given more than once\n";
        QTest::newRow("empty data") << QStringList{"--data", ""} << accept << "--data needs a file name\n";
        QTest::newRow("json and screenshot") << QStringList{"--json", "--screenshot", "x.png"} << accept
                                             << "--json and --screenshot cannot be combined\n";
        QTest::newRow("missing data file") << QStringList{"--data", "/nonexistent/device_info.csv"} << accept
                                           << "cannot read data file: /nonexistent/device_info.csv\n";
        QTest::newRow("unwritable screenshot") << QStringList{"--screenshot", "/nonexistent/dir/shot.png"} << accept
                                               << "cannot write screenshot: /nonexistent/dir/shot.png\n";
        QTest::newRow("unknown answer") << QStringList{"--preset", "zr9k31-013"} << QByteArray("maybe")
                                        << "DEVICEPICKER_AUTOANSWER must be accept or reject\n";
        // Offscreen and nobody to answer: waiting would never end.
        QTest::newRow("no display") << QStringList{"--preset", "zr9k31-013"} << QByteArray() << "no display";
    }
    void usageErrors()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, answer);
        QFETCH(QString, message);
        const TestHelpers::Run r = run(arguments, answer);
        QCOMPARE(r.status, 2);
        QCOMPARE(r.out, QByteArray());
        QCOMPARE(lines(r.err).size(), 1);
        QVERIFY2(r.err.startsWith("devicepicker: " + message.toUtf8()), r.err.constData());
    }

    void acceptPrintsChip_data()
    {
        QTest::addColumn<QString>("data");
        QTest::addColumn<QString>("preset");
        QTest::addColumn<QString>("id");
        QTest::addColumn<bool>("json");
        QTest::newRow("text") << bundledCatalogue() << "zr9k31-013" << "zr9k31a-015" << false;
        QTest::newRow("json") << bundledCatalogue() << "zr9k31-013" << "zr9k31a-015" << true;
        // Only in the fixture, with a device version and a short resource list.
        QTest::newRow("data file, json") << DEVICEPICKER_FIXTURE << "qa2-001" << "qa2-001" << true;
        QTest::newRow("data file, text") << DEVICEPICKER_FIXTURE << "qa1-001" << "qa1-001" << false;
    }
    void acceptPrintsChip()
    {
        QFETCH(QString, data);
        QFETCH(QString, preset);
        QFETCH(QString, id);
        QFETCH(bool, json);
        QStringList arguments{"--preset", preset};
        if (data != bundledCatalogue())
            arguments << "--data" << data;
        if (json)
            arguments << "--json";
        const TestHelpers::Run r = run(arguments, "accept");
        QVERIFY2(r.status == 0, r.err.constData());
        const DEV::ChipInfo chip = DEV::DeviceDb(data).findByID(id);
        QCOMPARE(chip.deviceId, id);
        if (json)
            QCOMPARE(QJsonDocument::fromJson(r.out).object(), expectedJson(chip));
        else
            QCOMPARE(lines(r.out), expectedLines(chip));
    }

    void nothingChosen_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("cancel") << QStringList{"--preset", "zr9k31-013"} << QByteArray("reject");
        QTest::newRow("cancel, json") << QStringList{"--preset", "zr9k31-013", "--json"} << QByteArray("reject");
        QTest::newRow("OK, unknown preset") << QStringList{"--preset", "zr0-000"} << QByteArray("accept");
        QTest::newRow("OK, no preset") << QStringList{} << QByteArray("accept");
    }

    void nothingChosen()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, answer);
        const TestHelpers::Run r = run(arguments, answer);
        QCOMPARE(r.status, 1);
        QCOMPARE(r.out, QByteArray());
        // Answered as asked: OK was clickable, not cancelled in its stead.
        QVERIFY2(!r.err.contains("disabled"), r.err.constData());
    }

    void screenshot_data()
    {
        QTest::addColumn<bool>("display");
        QTest::newRow("offscreen") << true;
        // Without any display the program picks the offscreen platform itself.
        QTest::newRow("no display variables") << false;
    }
    void screenshot()
    {
        QFETCH(bool, display);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"})
            display ? void() : environment.remove(QString::fromLatin1(name));
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("selector.png"));
        const TestHelpers::Run r = run({"--screenshot", path, "--preset", "zr9k31-013"}, QByteArray(), environment);
        QVERIFY2(r.status == 0, r.err.constData());
        QCOMPARE(r.out, QByteArray());
        const QImage image(path, "PNG");
        // The dialog's size hint, which it opens at.
        QCOMPARE(image.size(), QSize(800, 450));
        // A rendered dialog, not a blank canvas: rows, text and selection bring many colours.
        QSet<QRgb> colours;
        for (int i = 0; i < image.width() * image.height(); i += 7)
            colours.insert(image.pixel(i % image.width(), i / image.width()));
        QVERIFY2(colours.size() > 20, qPrintable(QString::number(colours.size())));
    }

    void help()
    {
        const TestHelpers::Run r = run({"--help"});
        QCOMPARE(r.status, 0);
        QVERIFY(r.out.startsWith("Usage: "));
        for (const char* option : {"--data <FILE>", "--preset <ID>", "--json", "--screenshot <FILE>"})
            QVERIFY2(r.out.contains(option), option);
        QVERIFY(!r.out.contains("AUTOANSWER"));
        const TestHelpers::Run version = run({"--version"});
        QCOMPARE(version.status, 0);
        QCOMPARE(version.out, QByteArray("devicepicker " DEVICEPICKER_VERSION "\n"));
    }

    void readmeShowsTheHostExample()
    {
        const QString block = trimmedLines(QStringLiteral(DEVICEPICKER_MAIN), true).join('\n');
        QVERIFY(block.count('\n') >= 2 && block.contains("getSelectedChip("));
        QVERIFY2(trimmedLines(QStringLiteral(DEVICE_README), false).join('\n').contains(block),
                 "README.md no longer shows the [host-example] block of examples/devicepicker/main.cpp");
    }
};

QTEST_GUILESS_MAIN(TestDevicePicker)
#include "tst_devicepicker.moc"
