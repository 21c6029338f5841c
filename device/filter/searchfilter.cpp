// SPDX-License-Identifier: BSD-3-Clause
#include "chipfilter.h"

#include "chipcolumns.h"
#include "chipinfo_p.h"
#include "devicedb.h"
#include "foldedindex_p.h"
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
 * What a search matches: the values of a chip its group names, each tested as
 * its syntax says, the first match deciding. This is the definition every
 * faster way must agree with, and it keeps nothing from chip to chip. It
 * holds a QRegExp, whose matching updates internal state even through const
 * calls: keep each matcher local to one thread.
 */
class SearchMatcher
{
public:
    explicit SearchMatcher(const ChipFilterBySearch& filter)
        : m_filter(filter)
        , m_column(searchGroupColumn(filter.group))
        , m_cs(filter.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive)
        , m_emptyCellRule(filter.pattern == QLatin1String("0"))
    {
        // A half-typed expression such as "(" is normal while the user
        // types; it simply finds nothing.
        if (filter.patternSyntax == 0 || filter.patternSyntax == 1)
            m_valid = compileSearchExpression(m_regExp, filter.pattern, m_cs,
                                              filter.patternSyntax == 0 ? QRegExp::WildcardUnix : QRegExp::RegExp);
    }

    ~SearchMatcher() { releaseSearchExpression(m_regExp); }
    SearchMatcher(const SearchMatcher&) = delete;
    SearchMatcher& operator=(const SearchMatcher&) = delete;

    bool matches(const ChipInfo& chip)
    {
        return anyValue(chip, [this](size_t, const QString& value) { return decide(value); });
    }

protected:
    // Whether decide(place, value) holds for a value the group names, asked
    // in the group's order up to the first that does.
    template <typename Decide>
    bool anyValue(const ChipInfo& chip, Decide decide) const
    {
        // A missing resource count reads as an empty cell.
        if (m_column >= 0)
            return decide(0, chipColumnValue(chip, m_column));
        // "All" leaves out the device version and the speed grade but takes
        // the match key and auxiliary attribute, which the table does not
        // show; the single columns are the way to search the former.
        size_t place = 0;
        for (const QString* value : {&chip.series, &chip.partNumber, &chip.matchKey, &chip.device, &chip.package,
                                     &chip.auxiliary, &chip.voltage}) {
            if (decide(place++, *value))
                return true;
        }
        return std::any_of(chip.resources.begin(), chip.resources.end(),
                           [&](const QString& count) { return decide(place++, count); });
    }

    // The chip table shows an empty count as "0", so a search for "0" also
    // accepts every empty value.
    bool decide(const QString& v)
    {
        if (m_emptyCellRule && v.isEmpty())
            return true;
        if (m_regExp)
            return m_valid && m_regExp->exactMatch(v);
        if (m_filter.patternSyntax == 2)
            return m_filter.pattern.compare(v, m_cs) == 0;
        return v.contains(m_filter.pattern, m_cs);
    }

private:
    const ChipFilterBySearch m_filter;
    const int m_column; // -1 for all columns
    const Qt::CaseSensitivity m_cs;
    const bool m_emptyCellRule;
    bool m_valid = false;
    std::optional<QRegExp> m_regExp;
};

/*
 * The matcher's fast twin for a list of chips. Neighbours in a catalogue
 * share most values, and an expression takes a while: each place keeps the
 * verdict on the value it held in the chip before, which serves while it
 * holds an equal value. The records outlive the matcher.
 */
class RunMatcher : public SearchMatcher
{
public:
    using SearchMatcher::SearchMatcher;

    bool matches(const ChipInfo& chip)
    {
        return anyValue(chip, [this](size_t place, const QString& value) {
            if (place >= m_last.size())
                m_last.resize(place + 1);
            std::pair<const QString*, bool>& last = m_last[place];
            if (!last.first || !pimpl::sameText(value, *last.first))
                last = {&value, decide(value)};
            return last.second;
        });
    }

private:
    std::vector<std::pair<const QString*, bool>> m_last;
};

// The pattern of @p filter as folded text, or empty when folded text cannot
// answer the search: only a pattern anywhere in any value of the "All" group,
// either letter case, is a matter of the text alone, and neither the empty
// pattern nor "0", which find empty values.
QByteArray foldedNeedle(const ChipFilterBySearch& filter)
{
    const bool anywhere = filter.patternSyntax < 0 || filter.patternSyntax > 2;
    if (!anywhere || filter.caseSensitive || searchGroupColumn(filter.group) != -1
        || filter.pattern == QLatin1String("0"))
        return QByteArray();
    return pimpl::foldedPattern(filter.pattern);
}

} // namespace

QVector<int> pimpl::searchRows(const ChipFilterBySearch& filter, int n, const ChipAt& chipAt,
                               const FoldedFind& foldedFind)
{
    std::vector<char> verdicts(size_t(n), Undecided);
    const QByteArray needle = foldedFind ? foldedNeedle(filter) : QByteArray();
    if (!needle.isEmpty())
        foldedFind(needle, verdicts.data());
    std::vector<int> open;
    for (auto at = verdicts.begin(); (at = std::find(at, verdicts.end(), Undecided)) != verdicts.end(); ++at)
        open.push_back(int(at - verdicts.begin()));
    inParts(qint64(open.size()), tuning().searchParallelFrom, [&](int from, int to) {
        RunMatcher matcher(filter);
        for (int i = from; i < to; ++i)
            verdicts[size_t(open[size_t(i)])] = matcher.matches(chipAt(open[size_t(i)])) ? Found : Missed;
    });
    QVector<int> rows;
    rows.reserve(int(std::count(verdicts.begin(), verdicts.end(), Found)));
    for (int i = 0; i < n; ++i) {
        if (verdicts[size_t(i)] == Found)
            rows.append(i);
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

bool matchFilter(const ChipInfo& info, const ChipFilterBySearch& filter)
{
    return SearchMatcher(filter).matches(info);
}

QVector<int> filterRows(const QList<ChipInfo>& chips, const ChipFilterBySearch& filter)
{
    pimpl::FoldedFind folded;
    if (chips.size() >= pimpl::tuning().foldFrom)
        folded = [&chips](const QByteArray& needle, char* verdicts) { pimpl::findFolded(chips, needle, verdicts); };
    return pimpl::searchRows(filter, int(chips.size()), [&chips](int k) -> const ChipInfo& { return chips.at(k); },
                             folded);
}

QList<ChipInfo> filterChips(const QList<ChipInfo>& chips, const ChipFilterBySearch& filter)
{
    return pimpl::chipsAt(chips, filterRows(chips, filter));
}

QList<ChipInfo> DeviceDb::filterChips(const ChipFilterBySearch& filter, const QList<ChipInfo>& chips) const
{
    return DEV::filterChips(chips, filter);
}

} // namespace DEV
