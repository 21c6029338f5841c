// SPDX-License-Identifier: BSD-3-Clause
#include "boardcatalogue.h"

#include "devicedb.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFile>
#include <QHash>
#include <QRegularExpression>

namespace DEV {

class pimpl::BoardCataloguePrivate
{
public:
    QList<Board> boards;
    QHash<QString, int> byId;
    QStringList problems;
};

namespace {

// The fields of @p line, or none when a quote is out of place.
QStringList splitFields(const QString& line)
{
    static const QRegularExpression field(QStringLiteral(R"re(\G\s*(?:"((?:[^"]|"")*)"|([^,"]*))\s*(,|$))re"));
    QStringList fields;
    for (int at = 0;;) {
        const QRegularExpressionMatch m = field.match(line, at);
        if (!m.hasMatch())
            return {};
        fields << (m.capturedStart(1) >= 0 ? m.captured(1).replace(QLatin1String("\"\""), QLatin1String("\"")) : m.captured(2).trimmed());
        if (m.capturedLength(3) == 0)
            return fields;
        at = m.capturedEnd();
    }
}

} // namespace

BoardCatalogue::BoardCatalogue(const QString& fileName, const DeviceDb& db)
    : d(new pimpl::BoardCataloguePrivate)
{
    QFile file(fileName);
    const bool readable = file.open(QIODevice::ReadOnly);
    const auto problem = [&](int line, const QString& message) {
        d->problems << (line ? QStringLiteral("%1:%2: %3").arg(fileName).arg(line).arg(message) : fileName + message);
        qWarning().noquote() << d->problems.constLast();
    };
    if (!readable)
        problem(0, QStringLiteral(": cannot be read"));
    const QStringList lines = QString::fromUtf8(readable ? file.readAll() : QByteArray()).remove(QChar(0xfeff)).split(QLatin1Char('\n'));
    QHash<QString, int> lineOf;
    for (int n = 1; n <= lines.size(); ++n) {
        const QString line = lines.at(n - 1).trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        const QStringList f = splitFields(line);
        if (f.size() != 6 || f.at(0).isEmpty()) {
            problem(n, f.isEmpty() ? QStringLiteral("line skipped: a quote out of place")
                       : f.size() != 6 ? QStringLiteral("line skipped: %1 fields instead of 6").arg(f.size())
                                       : QStringLiteral("line skipped: no board identifier"));
        } else if (lineOf.contains(f.at(0))) {
            problem(n, QStringLiteral("line skipped: board identifier '%1' is already on line %2").arg(f.at(0)).arg(lineOf[f.at(0)]));
        } else {
            lineOf.insert(f.at(0), n);
            d->byId.insert(f.at(0), int(d->boards.size()));
            d->boards << Board{f.at(0), f.at(1), f.at(2), f.at(3), f.at(4), f.at(5), db.findByPN(f.at(4)).value(0)};
            if (d->boards.constLast().chip.partNumber.isEmpty())
                problem(n, QStringLiteral("chip '%1' of board '%2' is not in the device catalogue").arg(f.at(4), f.at(0)));
        }
    }
}

BoardCatalogue::~BoardCatalogue() = default;

QString BoardCatalogue::defaultDataFile()
{
    return QCoreApplication::applicationDirPath() + QLatin1String("/../data/device/boards.csv");
}

QList<Board> BoardCatalogue::boards() const
{
    return d->boards;
}

Board BoardCatalogue::find(const QString& id) const
{
    const auto found = d->byId.constFind(id);
    return found == d->byId.constEnd() ? Board() : d->boards.at(*found);
}

QList<Board> BoardCatalogue::search(const QString& text) const
{
    const auto has = [&text](const QString& value) { return value.contains(text, Qt::CaseInsensitive); };
    QList<Board> found;
    for (const Board& b : qAsConst(d->boards)) {
        if (has(b.id) || has(b.name) || has(b.maker) || has(b.partNumber))
            found << b;
    }
    return found;
}

QStringList BoardCatalogue::problems() const
{
    return d->problems;
}

} // namespace DEV
