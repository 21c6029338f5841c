// SPDX-License-Identifier: BSD-3-Clause
#include "chipfilter.h"

#include "chipcolumns.h"
#include "devicedb.h"
#include "parallel_p.h"
#include "search_p.h"
#include "tuning_p.h"

#include <QRegExp>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace DEV {

namespace {

/*
 * QRegExp shares compiled patterns through a process-wide cache that Qt
 * guards with a mutex of its own, which ThreadSanitizer cannot see into while
 * Qt itself is not instrumented. The cache is touched when an expression is
 * first prepared and when it is destroyed, and nowhere else: these two
 * functions, which tests/sanitizers/tsan.supp names, so that every other
 * access is still checked.
 */
Q_NEVER_INLINE bool compileSearchExpression(std::optional<QRegExp>& expression, const QString& pattern,
                                            Qt::CaseSensitivity cs, QRegExp::PatternSyntax syntax)
{
    expression.emplace(pattern, cs, syntax);
    return expression->isValid();
}

Q_NEVER_INLINE void releaseSearchExpression(std::optional<QRegExp>& expression)
{
    expression.reset();
}

/*
 * What a search matches, value by value: the definition that the folded
 * search must agree with. It holds a QRegExp, whose matching updates
 * internal state even through const calls: keep each matcher local to one
 * thread.
 */
class SearchMatcher
{
public:
    explicit SearchMatcher(const ChipFilterBySearch& filter)
        : m_column(searchGroupColumn(filter.group))
        , m_cs(filter.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive)
        , m_pattern(filter.pattern)
        , m_emptyCellRule(filter.pattern == QLatin1String("0"))
    {
        switch (filter.patternSyntax) {
        case 0:
        case 1:
            // A half-typed expression such as "(" is normal while the user
            // types; it simply finds nothing.
            m_mode = compileSearchExpression(m_regExp, m_pattern, m_cs,
                                             filter.patternSyntax == 0 ? QRegExp::WildcardUnix : QRegExp::RegExp)
                ? Mode::Expression
                : Mode::Nothing;
            break;
        case 2:
            m_mode = Mode::Exactly;
            break;
        default:
            m_mode = Mode::Anywhere;
            break;
        }
    }

    ~SearchMatcher() { releaseSearchExpression(m_regExp); }
    SearchMatcher(const SearchMatcher&) = delete;
    SearchMatcher& operator=(const SearchMatcher&) = delete;

    bool matches(const ChipInfo& chip)
    {
        // A missing resource count reads as an empty cell.
        if (m_column >= 0)
            return decide(chipColumnValue(chip, m_column));
        // "All" leaves out the device version and the speed grade but takes
        // the match key and auxiliary attribute, which the table does not
        // show; the single columns are the way to search the former.
        size_t at = 0;
        for (const QString* value : {&chip.series, &chip.partNumber, &chip.matchKey, &chip.device, &chip.package,
                                     &chip.auxiliary, &chip.voltage}) {
            if (decideAt(at++, *value))
                return true;
        }
        return std::any_of(chip.resources.begin(), chip.resources.end(), [this, &at](const QString& count) {
            return decideAt(at++, count);
        });
    }

private:
    enum class Mode { Expression, Exactly, Anywhere, Nothing };

    // Neighbours in a catalogue share most values, and an expression takes a
    // while: the verdict on the value a place held in the chip before serves
    // while the place holds an equal value. The records outlive the matcher.
    bool decideAt(size_t at, const QString& v)
    {
        if (at >= m_last.size())
            m_last.resize(at + 1);
        std::pair<const QString*, bool>& last = m_last[at];
        if (!last.first || !pimpl::sameText(v, *last.first))
            last = {&v, decide(v)};
        return last.second;
    }

    // The chip table shows an empty count as "0", so a search for "0" also
    // accepts every empty value.
    bool decide(const QString& v)
    {
        if (m_emptyCellRule && v.isEmpty())
            return true;
        switch (m_mode) {
        case Mode::Expression:
            return m_regExp->exactMatch(v);
        case Mode::Exactly:
            return m_pattern.compare(v, m_cs) == 0;
        case Mode::Anywhere:
            return v.contains(m_pattern, m_cs);
        case Mode::Nothing:
            break;
        }
        return false;
    }

    const int m_column; // -1 for all columns
    const Qt::CaseSensitivity m_cs;
    const QString m_pattern;
    const bool m_emptyCellRule;
    Mode m_mode = Mode::Anywhere;
    std::optional<QRegExp> m_regExp;
    std::vector<std::pair<const QString*, bool>> m_last;
};

} // namespace

void pimpl::decidePlainly(int n, const ChipAt& chipAt, const ChipFilterBySearch& filter, std::vector<char>& verdicts)
{
    inParts(n, tuning().searchParallelFrom, [&](int from, int to) {
        SearchMatcher matcher(filter);
        for (int k = from; k < to; ++k)
            verdicts[size_t(k)] = matcher.matches(chipAt(k)) ? 1 : 0;
    });
}

bool matchFilter(const ChipInfo& info, const ChipFilterBySearch& filter)
{
    return SearchMatcher(filter).matches(info);
}

QList<ChipInfo> DeviceDb::filterChips(const ChipFilterBySearch& filter, const QList<ChipInfo>& chips) const
{
    return DEV::filterChips(chips, filter);
}

QVector<int> pimpl::rowsOf(const std::vector<char>& verdicts)
{
    QVector<int> rows;
    rows.reserve(int(std::count(verdicts.begin(), verdicts.end(), 1)));
    for (size_t i = 0; i < verdicts.size(); ++i) {
        if (verdicts[i])
            rows.append(int(i));
    }
    return rows;
}

QList<ChipInfo> pimpl::chipsAt(const QList<ChipInfo>& chips, const QVector<int>& rows)
{
    // Short searches often keep every chip; the input itself is then the
    // answer, and no record is copied.
    if (rows.size() == chips.size())
        return chips;
    QList<ChipInfo> result;
    result.reserve(rows.size());
    for (int i : rows)
        result.append(chips.at(i));
    return result;
}

QVector<int> filterRows(const QList<ChipInfo>& chips, const ChipFilterBySearch& filter)
{
    const QByteArray needle = chips.size() >= pimpl::tuning().foldFrom ? pimpl::foldedNeedle(filter) : QByteArray();
    if (!needle.isEmpty())
        return pimpl::foldedRows(chips, filter, needle);
    std::vector<char> verdicts(size_t(chips.size()), 0);
    pimpl::decidePlainly(int(chips.size()), [&chips](int k) -> const ChipInfo& { return chips.at(k); }, filter,
                         verdicts);
    return pimpl::rowsOf(verdicts);
}

QList<ChipInfo> filterChips(const QList<ChipInfo>& chips, const ChipFilterBySearch& filter)
{
    return pimpl::chipsAt(chips, filterRows(chips, filter));
}

} // namespace DEV
