// SPDX-License-Identifier: BSD-3-Clause
#include "cataloguecheck.h"

#include <chipcolumns.h>
#include <devicedb.h>

#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QTextStream>

#include <algorithm>
#include <utility>

namespace CatalogueCheck {

namespace {

// Fields before the resource counts: identifier, part number, series, match
// key, device, version, package, voltage, speed, auxiliary.
constexpr int FixedFields = 10;
constexpr int ResourceCount = DEV::ChipColumnCount - DEV::FirstResourceColumn;

struct Finding
{
    int line;
    QString message;
};

// The first line of a device identifier, with the resources all its lines
// should repeat.
struct FirstOfDevice
{
    int line;
    QStringList resources;
};

// What is wrong with one resource count as written, or nothing. An empty
// count is a plain 0, and blanks around a count are read past everywhere.
QString countProblem(const QString& written, int column)
{
    const QString count = written.trimmed();
    static const QRegularExpression number(QStringLiteral("^[0-9]+$"));
    static const QRegularExpression size(QStringLiteral("^[0-9]+(Kb)?$"));
    if (count.isEmpty())
        return QString();
    const QString header = DEV::chipColumnHeader(column);
    if (DEV::chipColumnKind(column) == DEV::ColumnKind::Kilobits) {
        if (!size.match(count).hasMatch())
            return QStringLiteral("%1 size '%2' is not written like 72Kb").arg(header, count);
    } else if (!number.match(count).hasMatch()) {
        return QStringLiteral("%1 count '%2' is not a number").arg(header, count);
    }
    return QString();
}

class Checker
{
public:
    // Reading in text mode drops every carriage return, also those that end
    // no line and so may have split a field or a value in two.
    void checkCarriageReturns(const QByteArray& bytes)
    {
        const QList<QByteArray> lines = bytes.split('\n');
        for (int i = 0; i < lines.size(); ++i) {
            const int cr = lines.at(i).indexOf('\r');
            if (cr >= 0 && cr < lines.at(i).size() - 1)
                report(i + 1, QStringLiteral("stray carriage return"));
        }
    }

    // One line as the loader's text stream hands it over.
    void check(int line, const QString& text)
    {
        if (text.isEmpty())
            return;
        if (text.at(text.size() - 1).isSpace())
            report(line, QStringLiteral("trailing white space"));

        const QStringList fields = text.split(QLatin1Char(','));
        if (fields.size() <= 7) {
            report(line, QStringLiteral("skipped by the loader: %1 of at least 8 fields").arg(fields.size()));
            return;
        }
        const QStringList resources = fields.mid(FixedFields);
        if (resources.size() != ResourceCount)
            report(line, QStringLiteral("%1 resource counts instead of %2").arg(resources.size()).arg(ResourceCount));
        for (int i = 0; i < resources.size() && i < ResourceCount; ++i) {
            const QString problem = countProblem(resources.at(i), DEV::FirstResourceColumn + i);
            if (!problem.isEmpty())
                report(line, problem);
        }

        const QString id = fields.at(0).trimmed();
        const QString partNumber = fields.at(1).trimmed();
        if (partNumbers.contains(partNumber))
            report(line, QStringLiteral("part number '%1' is already on line %2").arg(partNumber).arg(partNumbers[partNumber]));
        else
            partNumbers.insert(partNumber, line);
        const auto device = devices.constFind(id);
        if (device == devices.constEnd())
            devices.insert(id, FirstOfDevice{line, resources});
        else if (device->resources != resources)
            report(line, QStringLiteral("resources differ from line %1, which has the same device identifier '%2'")
                             .arg(device->line)
                             .arg(id));
        if (DEV::deviceIdCompatFor9k31(id) != id)
            renamed.append({line, id});
    }

    // Identifiers the look-ups translate are found under their new name only.
    void checkRenamed()
    {
        for (const auto& [line, id] : qAsConst(renamed)) {
            const QString current = DEV::deviceIdCompatFor9k31(id);
            if (!devices.contains(current))
                report(line, QStringLiteral("device identifier '%1' is looked up as '%2', which no line has").arg(id, current));
        }
        std::stable_sort(found.begin(), found.end(),
                         [](const Finding& l, const Finding& r) { return l.line < r.line; });
    }

    QList<Finding> found;

private:
    void report(int line, const QString& message) { found << Finding{line, message}; }

    QHash<QString, int> partNumbers;
    QHash<QString, FirstOfDevice> devices;
    // Lines with an identifier the look-ups rename, and that identifier.
    QList<std::pair<int, QString>> renamed;
};

} // namespace

QStringList findings(const QString& path, bool* readable)
{
    QFile file(path);
    *readable = file.open(QIODevice::ReadOnly);
    if (!*readable)
        return {};
    Checker checker;
    checker.checkCarriageReturns(file.readAll());
    // Then opened and decoded exactly as the loader opens and decodes it.
    file.close();
    *readable = file.open(QIODevice::ReadOnly | QIODevice::Text);
    QTextStream stream(&file);
    for (int line = 1; !stream.atEnd(); ++line)
        checker.check(line, stream.readLine());
    checker.checkRenamed();

    QStringList texts;
    for (const Finding& f : qAsConst(checker.found))
        texts << QStringLiteral("%1:%2: %3").arg(path).arg(f.line).arg(f.message);
    return texts;
}

} // namespace CatalogueCheck
