#include "chipfilter.h"

#include "devicedb.h"

#include <QRegExp>

namespace DEV {

namespace {

// Group numbers of the search menu; groups 8 to 16 are the resource columns
// IO to PLL, in the order of ChipInfo::resources.
constexpr int FirstResourceGroup = 8;
constexpr int LastResourceGroup = 16;

/*
 * One search, prepared once and applied to many chips. This runs on every
 * keystroke over lists of up to ~100,000 chips, so the values are walked in
 * place (no per-chip list) and the pattern is compiled once.
 *
 * A matcher holds a QRegExp, whose matching updates internal state even
 * through const calls; keep each matcher local to one call on one thread.
 */
class SearchMatcher
{
public:
    explicit SearchMatcher(const ChipFilterBySearch& filter)
        : m_group(filter.group >= 0 && filter.group <= LastResourceGroup ? filter.group : 0)
        , m_cs(filter.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive)
        , m_pattern(filter.pattern)
        , m_emptyCellRule(filter.pattern == QLatin1String("0"))
        // A missing resource count reads as an empty cell, not a null one.
        , m_missing(QLatin1String(""))
    {
        switch (filter.patternSyntax) {
        case 0:
        case 1:
            m_regExp = QRegExp(m_pattern, m_cs, filter.patternSyntax == 0 ? QRegExp::WildcardUnix : QRegExp::RegExp);
            // A half-typed expression such as "(" is normal while the user
            // types; it simply finds nothing.
            m_mode = m_regExp.isValid() ? Mode::Expression : Mode::Nothing;
            break;
        case 2:
            m_mode = Mode::Exactly;
            break;
        default:
            m_mode = Mode::Anywhere;
            break;
        }
    }

    bool matches(const ChipInfo& chip)
    {
        // The chip table shows an empty count as "0"; searching for what is
        // shown must find it.
        if (m_emptyCellRule && anyValue(chip, [](const QString& v) { return v.isEmpty(); }))
            return true;

        switch (m_mode) {
        case Mode::Expression:
            return anyValue(chip, [this](const QString& v) { return m_regExp.exactMatch(v); });
        case Mode::Exactly:
            return anyValue(chip, [this](const QString& v) { return m_pattern.compare(v, m_cs) == 0; });
        case Mode::Anywhere:
            return anyValue(chip, [this](const QString& v) { return v.indexOf(m_pattern, 0, m_cs) != -1; });
        case Mode::Nothing:
            break;
        }
        return false;
    }

private:
    enum class Mode { Expression, Exactly, Anywhere, Nothing };

    // True as soon as @p test accepts one of the values of the group, tried
    // in the group's order. "All" leaves out the device version and the speed
    // grade but takes the match key and auxiliary attribute, which the table
    // does not show; the single columns are the way to search the former.
    template <typename Test>
    bool anyValue(const ChipInfo& chip, Test test) const
    {
        switch (m_group) {
        case 1:
            return test(chip.series);
        case 2:
            return test(chip.partNumber);
        case 3:
            return test(chip.device);
        case 4:
            return test(chip.deviceVersion);
        case 5:
            return test(chip.package);
        case 6:
            return test(chip.speed);
        case 7:
            return test(chip.voltage);
        default:
            break;
        }

        if (m_group >= FirstResourceGroup) {
            const int index = m_group - FirstResourceGroup;
            return test(index < chip.resources.size() ? chip.resources.at(index) : m_missing);
        }

        if (test(chip.series) || test(chip.partNumber) || test(chip.matchKey) || test(chip.device)
            || test(chip.package) || test(chip.auxiliary) || test(chip.voltage))
            return true;
        for (const QString& count : chip.resources) {
            if (test(count))
                return true;
        }
        return false;
    }

    const int m_group;
    const Qt::CaseSensitivity m_cs;
    const QString m_pattern;
    const bool m_emptyCellRule;
    const QString m_missing;
    Mode m_mode = Mode::Anywhere;
    QRegExp m_regExp;
};

} // namespace

bool matchFilter(const ChipInfo& info, const ChipFilterBySearch& filter)
{
    return SearchMatcher(filter).matches(info);
}

QList<ChipInfo> DeviceDb::filterChips(const ChipFilterBySearch& filter, const QList<ChipInfo>& chips) const
{
    SearchMatcher matcher(filter);
    QList<ChipInfo> result;
    const QList<ChipInfo> list = chips;
    for (const ChipInfo& chip : list) {
        if (matcher.matches(chip))
            result.append(chip);
    }
    return result;
}

} // namespace DEV
