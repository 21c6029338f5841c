// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_EXAMPLES_COMMANDLINE_H
#define DEV_EXAMPLES_COMMANDLINE_H

// Output and error conventions shared by the example programs: results go
// to standard output as raw bytes, a usage error is one line on standard
// error, "<program>: <message>", and exit status 2.

#include <boardcatalogue.h>
#include <devicedb.h>

#include <QByteArray>
#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QString>

#include <cstdio>
#include <memory>

namespace ExampleCommandLine {

/// Exit statuses, which scripts branch on: something found and printed,
/// nothing found, bad usage (including an unreadable data file).
enum ExitStatus { Found = 0, NothingFound = 1, BadUsage = 2 };

inline void printOut(const QByteArray& bytes)
{
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
}

/// -h, --help, as both programs take it.
inline QCommandLineOption helpOption()
{
    return QCommandLineOption(QStringList{QStringLiteral("h"), QStringLiteral("help")},
                              QStringLiteral("Show this help and exit."));
}

/// Where the programs look for the catalogue when no file is given, in this
/// order: beside the program, where DeviceDb::instance() reads it (the build
/// tree, or an installation under any prefix), then device/device_info.csv
/// in the system's data directories, $XDG_DATA_HOME and then each of
/// $XDG_DATA_DIRS (the Debian packages install /usr/share/device/).
inline QStringList catalogueCandidates()
{
    QStringList files{QDir::cleanPath(DEV::DeviceDb::defaultDataFile())};
    for (const QString& dir : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation))
        files << QDir::cleanPath(dir + QLatin1String("/device/device_info.csv"));
    return files;
}

/// The first of catalogueCandidates() that exists, or an empty string.
inline QString installedCatalogue()
{
    for (const QString& file : catalogueCandidates()) {
        if (QFileInfo(file).isFile())
            return file;
    }
    return QString();
}

/// The bundled boards: boards.csv beside the catalogue found, wherever that is.
inline QString installedBoards()
{
    const QString catalogue = installedCatalogue();
    return catalogue.isEmpty() ? QDir::cleanPath(DEV::BoardCatalogue::defaultDataFile())
                               : QFileInfo(catalogue).dir().filePath(QStringLiteral("boards.csv"));
}

/// The complaint when no catalogue is found: every place looked at.
inline QString noCatalogue()
{
    return QStringLiteral("no catalogue at %1; name one with --data FILE")
        .arg(catalogueCandidates().join(QLatin1String(", ")));
}

/// --data FILE, as both programs take it.
inline QCommandLineOption dataOption()
{
    return QCommandLineOption(QStringLiteral("data"),
                              QStringLiteral("Read the catalogue from FILE instead of the installed one (see "
                                             "\"Catalogue\" below)."),
                              QStringLiteral("FILE"));
}

/// The end of both programs' --help: where the catalogue is looked for, and
/// on its own last line the file this run would read.
inline QString catalogueHelp()
{
    const QString found = installedCatalogue();
    return QStringLiteral("\nCatalogue: without --data, the one beside the program is read,\n"
                          "../data/device/device_info.csv from the program's folder (a build tree, or\n"
                          "an installation under any prefix), else device/device_info.csv in the first\n"
                          "data directory that has it: $XDG_DATA_HOME (~/.local/share), then each of\n"
                          "$XDG_DATA_DIRS (/usr/local/share:/usr/share). The Debian packages install\n"
                          "/usr/share/device/device_info.csv.\n"
                          "Catalogue read: %1\n")
        .arg(found.isEmpty() ? QStringLiteral("none found") : found);
}

/// Prints "<application name>: <message>" on standard error; returns BadUsage.
inline int usageError(const QString& message)
{
    std::fprintf(stderr, "%s: %s\n", qPrintable(QCoreApplication::applicationName()), qPrintable(message));
    return BadUsage;
}

/// An option that takes a value followed by another option, as in
/// "--series --json": the parser would take "--json" as the series and the
/// output format would silently change. The complaint, or an empty string.
/// ("--search=--json" still searches for "--json".)
inline QString missingValue(const QStringList& arguments, const QList<QCommandLineOption>& options)
{
    QStringList known;
    QStringList takingValue;
    for (const QCommandLineOption& option : options) {
        for (const QString& name : option.names()) {
            known << (name.size() == 1 ? QLatin1String("-") : QLatin1String("--")) + name;
            if (!option.valueName().isEmpty())
                takingValue << known.constLast();
        }
    }
    for (int i = 1; i + 1 < arguments.size() && arguments.at(i) != QLatin1String("--"); ++i) {
        if (takingValue.contains(arguments.at(i)) && known.contains(arguments.at(i + 1).section(QLatin1Char('='), 0, 0)))
            return QStringLiteral("missing value after '%1'").arg(arguments.at(i));
    }
    return QString();
}

/// The misuse both programs reject alike, or an empty string: an option
/// whose value is missing, a stray argument (unless @p takesArguments), or
/// an option taking a value given twice (silently keeping only the last of
/// two --series would hide a script bug).
inline QString misuse(const QCommandLineParser& parser, const QList<QCommandLineOption>& options,
                      bool takesArguments = false)
{
    const QString missing = missingValue(QCoreApplication::arguments(), options);
    if (!missing.isEmpty())
        return missing;
    if (!takesArguments && !parser.positionalArguments().isEmpty())
        return QStringLiteral("unexpected argument '%1'").arg(parser.positionalArguments().constFirst());
    for (const QCommandLineOption& option : options) {
        if (!option.valueName().isEmpty() && parser.values(option).size() > 1)
            return QStringLiteral("--%1 given more than once").arg(option.names().constLast());
    }
    return QString();
}

/// While a data file loads: the loader's message for each malformed line
/// is held back, since a broken catalogue would bury the terminal; the
/// caller prints one summary line instead. Everything else passes on.
inline QtMessageHandler& handlerAroundLoading()
{
    static QtMessageHandler outer = nullptr;
    return outer;
}

inline void holdBackSkippedLines(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (type == QtCriticalMsg && message.startsWith(QLatin1String("incorrect device info entry")))
        return;
    if (handlerAroundLoading())
        handlerAroundLoading()(type, context, message);
}

/// The database of @p dataFile or, when it is empty, of installedCatalogue():
/// the process-wide one when that is the catalogue beside the program (@p own
/// then stays empty). Null, with @p error set, when there is no catalogue,
/// the file cannot be read, or, if @p needChips, it holds no chip: the
/// library would only log that and carry on empty, which would pass for
/// "nothing found". Malformed lines are counted on standard error in one
/// line, "N lines skipped; first at line K".
inline DEV::DeviceDb* openDatabase(const QString& dataFile, std::unique_ptr<DEV::DeviceDb>* own, QString* error,
                                   bool needChips = false)
{
    const QString path = dataFile.isEmpty() ? installedCatalogue() : dataFile;
    if (path.isEmpty()) {
        *error = noCatalogue();
        return nullptr;
    }
    const QFileInfo file(path);
    if (!file.isFile() || !file.isReadable()) {
        *error = QStringLiteral("cannot read data file: %1").arg(QDir::cleanPath(path));
        return nullptr;
    }
    const bool beside = dataFile.isEmpty() && path == catalogueCandidates().constFirst();
    handlerAroundLoading() = qInstallMessageHandler(holdBackSkippedLines);
    if (!beside)
        own->reset(new DEV::DeviceDb(path));
    DEV::DeviceDb* db = beside ? DEV::DeviceDb::instance() : own->get();
    qInstallMessageHandler(handlerAroundLoading());
    const DEV::DeviceDb::LoadReport report = db->loadReport();
    if (report.skippedLines > 0) {
        std::fprintf(stderr, "%s: %d %s skipped; first at line %d\n", qPrintable(QCoreApplication::applicationName()),
                     report.skippedLines, report.skippedLines == 1 ? "line" : "lines", report.firstSkippedLine);
    }
    if (needChips && report.chips == 0) {
        *error = QStringLiteral("no chips in data file: %1").arg(QDir::cleanPath(path));
        return nullptr;
    }
    return db;
}

/// Qt's parser texts read "Unknown option 'x'."; ours are lower-case fragments.
inline QString asFragment(QString text)
{
    if (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    if (!text.isEmpty())
        text[0] = text.at(0).toLower();
    return text;
}

} // namespace ExampleCommandLine

#endif // DEV_EXAMPLES_COMMANDLINE_H
