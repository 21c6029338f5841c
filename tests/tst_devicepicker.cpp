// The devicepicker example, run as a process: usage errors, the data file,
// the screenshot, and the interactive path through getSelectedChip(), with
// the dialog answered by the program's DEVICEPICKER_AUTOANSWER test aid.

#include <chipinfo.h>
#include <devicedb.h>

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include <climits>

namespace {

struct Result
{
    int status = -1;
    QByteArray out;
    QByteArray err;
};

/// Runs the program on the offscreen platform; @p answer, when not empty, is
/// how the dialog gets answered.
Result run(const QStringList& arguments, const QByteArray& answer = QByteArray(),
           QProcessEnvironment environment = QProcessEnvironment::systemEnvironment())
{
    environment.remove(QStringLiteral("DEVICEPICKER_AUTOANSWER"));
    if (!answer.isEmpty())
        environment.insert(QStringLiteral("DEVICEPICKER_AUTOANSWER"), QString::fromLatin1(answer));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(DEVICEPICKER_PATH), arguments);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit) {
        process.kill();
        process.waitForFinished();
        return {};
    }
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

QStringList lines(const QByteArray& text)
{
    return QString::fromUtf8(text).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

/// The catalogue the program reads when not given --data: the copy beside bin/.
QString bundledCatalogue()
{
    return QFileInfo(QStringLiteral(DEVICEPICKER_PATH)).dir().filePath(
        QStringLiteral("../data/device/device_info.csv"));
}

/// The text format, built here independently of the program: one
/// "name: value" line per member, "name:" alone for an empty value.
QStringList expectedLines(const DEV::ChipInfo& chip)
{
    const QList<QPair<QString, QString>> members{
        {"deviceId", chip.deviceId}, {"partNumber", chip.partNumber}, {"series", chip.series},
        {"matchKey", chip.matchKey}, {"device", chip.device},         {"deviceVersion", chip.deviceVersion},
        {"package", chip.package},   {"voltage", chip.voltage},       {"speed", chip.speed},
        {"auxiliary", chip.auxiliary}, {"resources", chip.resources.join(", ")}};
    QStringList out;
    for (const auto& member : members)
        out << (member.second.isEmpty() ? member.first + ":" : member.first + ": " + member.second);
    return out;
}

QJsonObject expectedJson(const DEV::ChipInfo& chip)
{
    return QJsonObject{{"deviceId", chip.deviceId}, {"partNumber", chip.partNumber}, {"series", chip.series},
                       {"matchKey", chip.matchKey}, {"device", chip.device},         {"deviceVersion", chip.deviceVersion},
                       {"package", chip.package},   {"voltage", chip.voltage},       {"speed", chip.speed},
                       {"auxiliary", chip.auxiliary}, {"resources", QJsonArray::fromStringList(chip.resources)}};
}

/// Lines between the two "[host-example]" markers of @p text, with the
/// common indentation removed.
QStringList markedBlock(const QString& text)
{
    QStringList block;
    bool inside = false;
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        if (line.contains(QLatin1String("[host-example]"))) {
            if (inside)
                break;
            inside = true;
            continue;
        }
        if (inside)
            block << line;
    }
    int indent = INT_MAX;
    for (const QString& line : qAsConst(block)) {
        if (!line.trimmed().isEmpty())
            indent = qMin(indent, int(line.size() - line.trimmed().size()));
    }
    for (QString& line : block)
        line = line.mid(indent);
    return block;
}

QString readText(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromUtf8(file.readAll());
}

} // namespace

class TestDevicePicker : public QObject
{
    Q_OBJECT

private slots:
    void usageErrors_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        QTest::newRow("unknown option") << QStringList{"--colour"} << "unknown option 'colour'";
        QTest::newRow("stray argument") << QStringList{"zr9k31-013"} << "unexpected argument 'zr9k31-013'";
        QTest::newRow("missing value") << QStringList{"--preset"} << "missing value after '--preset'";
        QTest::newRow("repeated option") << QStringList{"--preset", "a", "--preset", "b"}
                                         << "--preset given more than once";
        QTest::newRow("empty data") << QStringList{"--data", ""} << "--data needs a file name";
        QTest::newRow("json and screenshot") << QStringList{"--json", "--screenshot", "x.png"}
                                             << "--json and --screenshot cannot be combined";
        QTest::newRow("missing data file") << QStringList{"--data", "/nonexistent/device_info.csv"}
                                           << "cannot read data file: /nonexistent/device_info.csv";
        QTest::newRow("unwritable screenshot") << QStringList{"--screenshot", "/nonexistent/dir/shot.png"}
                                               << "cannot write screenshot: /nonexistent/dir/shot.png";
    }

    void usageErrors()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        // Answered, so that a usage error that slipped through would end in
        // the dialog being accepted rather than in a hang.
        const Result r = run(arguments, "accept");
        QCOMPARE(r.status, 2);
        QCOMPARE(r.out, QByteArray());
        QCOMPARE(r.err, QByteArray("devicepicker: " + message.toUtf8() + '\n'));
    }

    void unknownAnswerIsAnError()
    {
        const Result r = run({"--preset", "zr9k31-013"}, "maybe");
        QCOMPARE(r.status, 2);
        QCOMPARE(r.out, QByteArray());
        QCOMPARE(r.err, QByteArray("devicepicker: DEVICEPICKER_AUTOANSWER must be accept or reject\n"));
    }

    void noDisplayRefusesToWait()
    {
        // Offscreen and nobody to answer: waiting would never end.
        const Result r = run({"--preset", "zr9k31-013"});
        QCOMPARE(r.status, 2);
        QCOMPARE(r.out, QByteArray());
        QVERIFY2(r.err.startsWith("devicepicker: no display"), r.err.constData());
        QCOMPARE(lines(r.err).size(), 1);
    }

    void acceptPrintsChip()
    {
        const Result r = run({"--preset", "zr9k31-013"}, "accept");
        QVERIFY2(r.status == 0, r.err.constData());
        const DEV::DeviceDb db(bundledCatalogue());
        const DEV::ChipInfo chip = db.findByID(QStringLiteral("zr9k31a-015"));
        QVERIFY(!chip.partNumber.isEmpty());
        QCOMPARE(lines(r.out), expectedLines(chip));
        QCOMPARE(lines(r.out).constFirst(), QStringLiteral("deviceId: zr9k31a-015"));
        QCOMPARE(lines(r.out).constLast().count(QLatin1String(", ")), chip.resources.size() - 1);
    }

    void acceptPrintsJson()
    {
        const Result r = run({"--preset", "zr9k31-013", "--json"}, "accept");
        QCOMPARE(r.status, 0);
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(r.out, &error);
        QCOMPARE(error.error, QJsonParseError::NoError);
        QVERIFY(document.isObject());
        const DEV::DeviceDb db(bundledCatalogue());
        QCOMPARE(document.object(), expectedJson(db.findByID(QStringLiteral("zr9k31a-015"))));
    }

    void dataFileIsUsed()
    {
        // qa2-001 exists only in the fixture, and has a device version and
        // a short resource list: both must survive the trip.
        const Result r = run({"--data", DEVICEPICKER_FIXTURE, "--preset", "qa2-001", "--json"}, "accept");
        QCOMPARE(r.status, 0);
        const DEV::DeviceDb db(QStringLiteral(DEVICEPICKER_FIXTURE));
        const DEV::ChipInfo chip = db.findByID(QStringLiteral("qa2-001"));
        QCOMPARE(chip.deviceVersion, QStringLiteral("A"));
        QCOMPARE(QJsonDocument::fromJson(r.out).object(), expectedJson(chip));
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
        const Result r = run(arguments, answer);
        QCOMPARE(r.status, 1);
        QCOMPARE(r.out, QByteArray());
        // Answered as asked: OK was clickable, not cancelled in its stead.
        QVERIFY2(!r.err.contains("disabled"), r.err.constData());
    }

    void screenshot()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("selector.png"));
        const Result r = run({"--screenshot", path, "--preset", "zr9k31-013"});
        QVERIFY2(r.status == 0, r.err.constData());
        QCOMPARE(r.out, QByteArray());
        QImage image;
        QVERIFY(image.load(path, "PNG"));
        // The dialog's size hint, which it opens at.
        QCOMPARE(image.size(), QSize(800, 450));
        // A rendered dialog, not a blank canvas: rows, text and the selection
        // bring many colours.
        QSet<QRgb> colours;
        for (int y = 0; y < image.height(); y += 3) {
            for (int x = 0; x < image.width(); x += 3)
                colours.insert(image.pixel(x, y));
        }
        QVERIFY2(colours.size() > 20, qPrintable(QString::number(colours.size())));
    }

    void screenshotWithoutDisplayDefaultsToOffscreen()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"})
            environment.remove(QString::fromLatin1(name));
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("plain.png"));
        const Result r = run({"--screenshot", path}, QByteArray(), environment);
        QVERIFY2(r.status == 0, r.err.constData());
        QCOMPARE(QImage(path).size(), QSize(800, 450));
    }

    void help()
    {
        const Result r = run({"--help"});
        QCOMPARE(r.status, 0);
        QVERIFY(r.out.startsWith("Usage: "));
        for (const char* option : {"--data <FILE>", "--preset <ID>", "--json", "--screenshot <FILE>"})
            QVERIFY2(r.out.contains(option), option);
        QVERIFY(!r.out.contains("AUTOANSWER"));
        const Result version = run({"--version"});
        QCOMPARE(version.status, 0);
        QCOMPARE(version.out, QByteArray("devicepicker " DEVICEPICKER_VERSION "\n"));
    }

    void readmeShowsTheHostExample()
    {
        const QStringList block = markedBlock(readText(QStringLiteral(DEVICEPICKER_MAIN)));
        QVERIFY(block.size() >= 3);
        QVERIFY(block.join('\n').contains("getSelectedChip("));
        const QString readme = readText(QStringLiteral(DEVICE_README));
        QVERIFY2(readme.contains(block.join('\n')),
                 "README.md no longer shows the [host-example] block of examples/devicepicker/main.cpp");
    }
};

QTEST_GUILESS_MAIN(TestDevicePicker)
#include "tst_devicepicker.moc"
