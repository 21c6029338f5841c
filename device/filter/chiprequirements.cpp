// SPDX-License-Identifier: BSD-3-Clause
#include "chiprequirements.h"

#include "devicedb.h"

#include <QCoreApplication>
#include <QStringView>

#include <algorithm>
#include <vector>

namespace DEV {

namespace {

constexpr int ResourceCount = ChipColumnCount - FirstResourceColumn;

bool isResourceColumn(int column)
{
    return column >= FirstResourceColumn && column < ChipColumnCount;
}

bool isMemory(int column)
{
    return chipColumnKind(column) == ColumnKind::Kilobits;
}

// Letter case and spaces do not count: "user flash" and "UserFlash" both
// name the User Flash column.
QString squeezed(const QString& name)
{
    QString s = name.toLower();
    s.remove(QLatin1Char(' '));
    return s;
}

int resourceColumnNamed(const QString& name)
{
    const QString wanted = squeezed(name);
    for (int column = FirstResourceColumn; column < ChipColumnCount; ++column) {
        if (squeezed(chipColumnHeader(column)) == wanted)
            return column;
    }
    return -1;
}

// A whole number of at least 0, for memory in kilobits with an optional
// "Kb" or "Mb" (1Mb = 1024Kb); -1 when @p text is not one. A requirement
// compares what a count says, units and all, while the table sorts by
// QString::toInt() with only "Kb" cut out (toIntCuttingKb() in
// chipcolumns.cpp), where "2Mb" counts 0. Twelve digits at most keep the
// product with 1024 far inside qint64.
qint64 amountWithUnit(QStringView text, bool memory)
{
    text = text.trimmed();
    qint64 scale = 1;
    if (memory && text.endsWith(QLatin1String("Mb"))) {
        scale = 1024;
        text.chop(2);
    } else if (memory && text.endsWith(QLatin1String("Kb"))) {
        text.chop(2);
    }
    if (text.isEmpty() || text.size() > 12)
        return -1;
    qint64 value = 0;
    for (const QChar c : text) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return -1;
        value = value * 10 + (c.unicode() - '0');
    }
    return value * scale;
}

// What set() says when it cannot read a requirement, translated in the
// context "DEV::ChipRequirements".
const char* const NotAColumn = QT_TRANSLATE_NOOP(
    "DEV::ChipRequirements", "'%1' is not a resource column (IO, LUT, FF, ROM16, SSRAM, BSRAM, User Flash, DSP, PLL)");
const char* const NotASize = QT_TRANSLATE_NOOP("DEV::ChipRequirements", "%1: '%2' is not a size such as 500Kb or 1Mb");
const char* const NotANumber = QT_TRANSLATE_NOOP("DEV::ChipRequirements", "%1: '%2' is not a whole number");
const char* const NotAnAssignment = QT_TRANSLATE_NOOP("DEV::ChipRequirements", "'%1' is not COLUMN=VALUE");

QString message(const char* text)
{
    return QCoreApplication::translate("DEV::ChipRequirements", text);
}

} // namespace

bool ChipRequirements::isEmpty() const
{
    return std::all_of(minimum.begin(), minimum.end(), [](qint64 m) { return m == Unset; });
}

qint64 ChipRequirements::minimumOf(int column) const
{
    return isResourceColumn(column) ? minimum[size_t(column - FirstResourceColumn)] : Unset;
}

QString ChipRequirements::set(const QString& column, const QString& value)
{
    const int c = resourceColumnNamed(column);
    if (c < 0)
        return message(NotAColumn).arg(column);
    qint64 amount = Unset;
    if (!value.trimmed().isEmpty()) {
        amount = amountWithUnit(value, isMemory(c));
        if (amount < 0) {
            return message(isMemory(c) ? NotASize : NotANumber).arg(chipColumnHeader(c), value);
        }
    }
    minimum[size_t(c - FirstResourceColumn)] = amount;
    return QString();
}

QString ChipRequirements::set(const QString& assignment)
{
    const int equals = assignment.indexOf(QLatin1Char('='));
    if (equals < 0)
        return message(NotAnAssignment).arg(assignment);
    return set(assignment.left(equals).trimmed(), assignment.mid(equals + 1));
}

QStringList ChipRequirements::toStrings() const
{
    QStringList texts;
    for (int column = FirstResourceColumn; column < ChipColumnCount; ++column) {
        const qint64 m = minimumOf(column);
        if (m != Unset)
            texts << chipColumnHeader(column) + QLatin1Char('=') + QString::number(m)
                    + (isMemory(column) ? QStringLiteral("Kb") : QString());
    }
    return texts;
}

qint64 resourceAmount(const ChipInfo& chip, int column)
{
    if (!isResourceColumn(column))
        return 0;
    return std::max<qint64>(0, amountWithUnit(chipColumnValue(chip, column), isMemory(column)));
}

bool matchFilter(const ChipInfo& info, const ChipRequirements& requirements)
{
    for (int column = FirstResourceColumn; column < ChipColumnCount; ++column) {
        const qint64 m = requirements.minimumOf(column);
        if (m != ChipRequirements::Unset && resourceAmount(info, column) < m)
            return false;
    }
    return true;
}

QList<ChipInfo> filterChips(const QList<ChipInfo>& chips, const ChipRequirements& requirements)
{
    if (requirements.isEmpty())
        return chips;
    QList<ChipInfo> result;
    for (const ChipInfo& chip : chips) {
        if (matchFilter(chip, requirements))
            result.append(chip);
    }
    return result;
}

QList<ChipInfo> smallestFirst(QList<ChipInfo> chips, const ChipRequirements& requirements)
{
    std::vector<int> required;
    for (int column = FirstResourceColumn; column < ChipColumnCount; ++column) {
        if (requirements.minimumOf(column) != ChipRequirements::Unset)
            required.push_back(column);
    }
    struct Keyed
    {
        std::array<qint64, ResourceCount> amounts;
        int row;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(size_t(chips.size()));
    for (int row = 0; row < chips.size(); ++row) {
        Keyed k{{}, row};
        for (size_t i = 0; i < required.size(); ++i)
            k.amounts[i] = resourceAmount(chips.at(row), required[i]);
        keyed.push_back(k);
    }
    std::stable_sort(keyed.begin(), keyed.end(), [&chips](const Keyed& l, const Keyed& r) {
        if (l.amounts != r.amounts)
            return l.amounts < r.amounts;
        return chips.at(l.row).partNumber.compare(chips.at(r.row).partNumber) < 0;
    });
    QList<ChipInfo> ordered;
    ordered.reserve(chips.size());
    for (const Keyed& k : keyed)
        ordered.append(chips.at(k.row));
    return ordered;
}

QList<ChipInfo> DeviceDb::samePackage(const ChipInfo& chip) const
{
    const QList<ChipInfo> records = findByPN(chip.partNumber);
    if (chip.partNumber.isEmpty() || records.isEmpty())
        return {};
    const auto known = std::find_if(records.begin(), records.end(),
                              [&chip](const ChipInfo& r) { return r.deviceId == chip.deviceId; });
    const ChipInfo& record = known != records.end() ? *known : records.first();
    // Not a ChipFilter: there an empty package would mean any package.
    QList<ChipInfo> mates;
    for (const ChipInfo& c : allChipInfo()) {
        if (c.series == record.series && c.package == record.package)
            mates.append(c);
    }
    ChipRequirements every;
    every.minimum.fill(0);
    return smallestFirst(mates, every);
}

} // namespace DEV
