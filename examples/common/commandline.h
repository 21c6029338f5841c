// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_EXAMPLES_COMMANDLINE_H
#define DEV_EXAMPLES_COMMANDLINE_H

// Output and error conventions shared by the example programs: results go
// to standard output as raw bytes, a usage error is one line on standard
// error, "<program>: <message>", and exit status 2.

#include <QByteArray>
#include <QCoreApplication>
#include <QString>

#include <cstdio>

namespace ExampleCommandLine {

constexpr int BadUsage = 2;

inline void printOut(const QByteArray& bytes)
{
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
}

/// Prints "<application name>: <message>" on standard error; returns BadUsage.
inline int usageError(const QString& message)
{
    std::fprintf(stderr, "%s: %s\n", qPrintable(QCoreApplication::applicationName()), qPrintable(message));
    return BadUsage;
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
