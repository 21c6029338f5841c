// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_EXAMPLES_COMMANDLINE_H
#define DEV_EXAMPLES_COMMANDLINE_H

// Output and error conventions shared by the example programs: results go
// to standard output as raw bytes, a usage error is one line on standard
// error, "<program>: <message>", and exit status 2.

#include <devicedb.h>

#include <QByteArray>
#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
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

/// --data FILE, as both programs take it.
inline QCommandLineOption dataOption()
{
    return QCommandLineOption(QStringLiteral("data"),
                              QStringLiteral("Read the catalogue from FILE instead of the bundled one."),
                              QStringLiteral("FILE"));
}

/// Prints "<application name>: <message>" on standard error; returns BadUsage.
inline int usageError(const QString& message)
{
    std::fprintf(stderr, "%s: %s\n", qPrintable(QCoreApplication::applicationName()), qPrintable(message));
    return BadUsage;
}

/// The misuse both programs reject alike, or an empty string: a stray
/// argument, or an option taking a value given twice (silently keeping only
/// the last of two --series would hide a script bug).
inline QString misuse(const QCommandLineParser& parser, const QList<QCommandLineOption>& options)
{
    if (!parser.positionalArguments().isEmpty())
        return QStringLiteral("unexpected argument '%1'").arg(parser.positionalArguments().constFirst());
    for (const QCommandLineOption& option : options) {
        if (!option.valueName().isEmpty() && parser.values(option).size() > 1)
            return QStringLiteral("--%1 given more than once").arg(option.names().constLast());
    }
    return QString();
}

/// The database of @p dataFile, or the process-wide one of the catalogue
/// beside the program when @p dataFile is empty (@p own then stays empty).
/// Null, with @p error set, when the file cannot be read: the library would
/// only log that and carry on empty, which would pass for "nothing found".
inline DEV::DeviceDb* openDatabase(const QString& dataFile, std::unique_ptr<DEV::DeviceDb>* own, QString* error)
{
    const QString path = dataFile.isEmpty() ? DEV::DeviceDb::defaultDataFile() : dataFile;
    const QFileInfo file(path);
    if (!file.isFile() || !file.isReadable()) {
        *error = QStringLiteral("cannot read data file: %1").arg(QDir::cleanPath(path));
        return nullptr;
    }
    if (dataFile.isEmpty())
        return DEV::DeviceDb::instance();
    own->reset(new DEV::DeviceDb(dataFile));
    return own->get();
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
