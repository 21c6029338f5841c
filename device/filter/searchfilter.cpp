// SPDX-License-Identifier: BSD-3-Clause
#include "chipfilter.h"

#include "chipcolumns.h"
#include "devicedb.h"
#include "search_p.h"

#include <QRegExp>
#include <QStringView>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace DEV {

namespace {

// Recent verdicts of one search, keyed by the identity of a value's shared
// data, small and direct-mapped (see "Search" in docs/performance.md); a
// value that is not shared just misses.
class VerdictCache
{
public:
    enum Verdict { Unknown, No, Yes };

    Verdict find(const void* key)
    {
        const quintptr slot = m_slots[slotOf(key)];
        const bool found = (slot & ~VerdictBit) == quintptr(key);
        // A list whose values are nearly all distinct would only pay for
        // the look-ups: after a first stretch that shows it, stop asking.
        if (m_lookups < TrialLookups) {
            m_found += found ? 1 : 0;
            if (++m_lookups == TrialLookups)
                m_worthIt = m_found * 16 >= m_lookups;
        }
        if (!found)
            return Unknown;
        return (slot & VerdictBit) ? Yes : No;
    }

    bool worthIt() const { return m_worthIt; }

    void insert(const void* key, bool verdict) { m_slots[slotOf(key)] = quintptr(key) | (verdict ? VerdictBit : 0); }

private:
    // Keys are addresses of pointer-aligned objects, so bit 0 is free to
    // hold the verdict.
    static constexpr quintptr VerdictBit = 1;
    static constexpr int SlotBits = 11;

    static size_t slotOf(const void* key)
    {
        return size_t((quint64(quintptr(key)) * 0x9E3779B97F4A7C15ull) >> (64 - SlotBits));
    }

    static constexpr int TrialLookups = 4096;

    std::array<quintptr, size_t(1) << SlotBits> m_slots{};
    int m_lookups = 0;
    int m_found = 0;
    bool m_worthIt = true;
};

/*
 * Case-insensitive "contains" for the common case of plain ASCII text, where
 * Unicode case folding is just ASCII lower-casing. Answers -1 when the value
 * holds anything else, leaving the general comparison to Qt; the needle is
 * ASCII and already lower-cased. A match inside plain ASCII stands whatever
 * else the value holds, but "no match" is only certain once every character
 * was seen to be ASCII.
 */
inline char16_t foldAscii(char16_t c)
{
    return char16_t(c >= u'A' && c <= u'Z' ? c + 32 : c);
}

inline bool matchesAt(const char16_t* h, const char16_t* p, qsizetype m)
{
    for (qsizetype k = 1; k < m; ++k) {
        if (foldAscii(h[k]) != p[k])
            return false;
    }
    return true;
}

int asciiContainsFolded(QStringView value, QStringView foldedNeedle)
{
    const qsizetype n = value.size();
    const qsizetype m = foldedNeedle.size();
    if (m == 0)
        return 1; // found at position 0 of any value, as QString::indexOf has it
    if (n < m)
        return 0; // whatever the characters, as QString::indexOf has it too
    const char16_t* h = reinterpret_cast<const char16_t*>(value.data());
    const char16_t* p = reinterpret_cast<const char16_t*>(foldedNeedle.data());
    qsizetype i = 0;
#if defined(__SSE2__)
    // Eight characters at a time: any outside ASCII, and where the needle's
    // first character stands in either letter case. For a lower-case letter
    // c, (x | 0x20) == c holds exactly for x == c and its capital.
    const char16_t first = p[0];
    const __m128i nonAscii = _mm_set1_epi16(short(0xFF80));
    const __m128i caseBit = _mm_set1_epi16(first >= u'a' && first <= u'z' ? 0x20 : 0);
    const __m128i wanted = _mm_set1_epi16(short(first));
    const __m128i zero = _mm_setzero_si128();
    for (; i + 8 <= n; i += 8) {
        const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(h + i));
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(chunk, nonAscii), zero)) != 0xFFFF)
            return -1;
        int hits = _mm_movemask_epi8(_mm_cmpeq_epi16(_mm_or_si128(chunk, caseBit), wanted));
        while (hits) {
            const int bit = __builtin_ctz(unsigned(hits));
            const qsizetype at = i + bit / 2;
            if (at + m <= n && matchesAt(h + at, p, m))
                return 1;
            hits &= ~(3 << bit);
        }
    }
#endif
    for (; i < n; ++i) {
        if (h[i] >= 0x80)
            return -1;
        if (i + m <= n && foldAscii(h[i]) == p[0] && matchesAt(h + i, p, m))
            return 1;
    }
    return 0;
}

/*
 * The identity of a string's shared data: strings that share their data
 * share the one data header, and its address is at hand without touching the
 * characters. QString::data_ptr() is public API, if undocumented; it is only
 * read here. Two strings with different headers may still be equal, which
 * costs a second decision, never a wrong one. Qt 5 gives every string a
 * header (non-const data_ptr() only because it could be written through, so
 * the const_cast changes nothing). Qt 6 gives none to empty strings and
 * literals, which would all look alike: they have no identity (null), and
 * are decided each time.
 */
const void* sharedDataOf(const QString& s)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    return const_cast<QString&>(s).data_ptr().d_ptr();
#else
    return const_cast<QString&>(s).data_ptr();
#endif
}

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

// One search, prepared once and applied to many chips (see "Search" in
// docs/performance.md). It holds a QRegExp, whose matching updates internal
// state even through const calls: keep each matcher local to one call on one
// thread.
class SearchMatcher
{
public:
    explicit SearchMatcher(const ChipFilterBySearch& filter, bool remember = false)
        : m_column(searchGroupColumn(filter.group))
        , m_cs(filter.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive)
        , m_pattern(filter.pattern)
        , m_emptyCellRule(filter.pattern == QLatin1String("0"))
        // A missing resource count reads as an empty cell, not a null one.
        , m_missing(QLatin1String(""))
        , m_remember(remember)
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
        if (m_mode == Mode::Anywhere && m_cs == Qt::CaseInsensitive) {
            m_foldedPattern = m_pattern;
            bool ascii = true;
            for (QChar& c : m_foldedPattern) {
                ascii = ascii && c.unicode() < 0x80;
                if (c >= QLatin1Char('A') && c <= QLatin1Char('Z'))
                    c = QChar(c.unicode() + 32);
            }
            m_asciiPattern = ascii;
        }
    }

    ~SearchMatcher() { releaseSearchExpression(m_regExp); }
    SearchMatcher(const SearchMatcher&) = delete;
    SearchMatcher& operator=(const SearchMatcher&) = delete;

    bool matches(const ChipInfo& chip)
    {
        if (m_column == int(ChipColumn::PartNumber))
            return decide(chip.partNumber);
        if (m_column >= FirstResourceColumn) {
            const int index = m_column - FirstResourceColumn;
            return value(index < chip.resources.size() ? chip.resources.at(index) : m_missing);
        }
        if (m_column >= 0)
            return value(chipColumnValue(chip, m_column));
        // "All" leaves out the device version and the speed grade but takes
        // the match key and auxiliary attribute, which the table does not
        // show; the single columns are the way to search the former. The
        // order only decides how early the walk may stop.
        // Part numbers are nearly all distinct: remembering them would only
        // fill the cache.
        return deviceValues(chip) || decide(chip.partNumber) || value(chip.voltage);
    }

private:
    enum class Mode { Expression, Exactly, Anywhere, Nothing };

    // The values that every chip of one device identifier shares. Such
    // chips stand next to each other in a catalogue, so the verdict on the
    // chip before is kept with the identities of its values and serves as
    // long as they stay the same.
    bool deviceValues(const ChipInfo& chip)
    {
        if (!m_remember)
            return decideDeviceValues(chip);
        // A text is known by where its characters lie and how many there
        // are, which two chips share only for the same text, literals and
        // raw data included; a list by its first element. Qt 5 gives every
        // text a header of its own, which already says as much and is read
        // without a trip to memory.
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
        const auto id = [](const QString& v) { return TextId{v.constData(), v.size()}; };
#else
        const auto id = [](const QString& v) { return TextId{sharedDataOf(v), 0}; };
#endif
        const DeviceValueIds ids{{id(chip.series), id(chip.matchKey), id(chip.device), id(chip.package),
                                  id(chip.auxiliary)},
                                 chip.resources.isEmpty() ? nullptr : &chip.resources.constFirst()};
        if (!m_haveDeviceValues || ids != m_lastDeviceValues) {
            m_haveDeviceValues = true;
            m_lastDeviceValues = ids;
            m_lastDeviceVerdict = decideDeviceValues(chip);
        }
        return m_lastDeviceVerdict;
    }

    bool decideDeviceValues(const ChipInfo& chip)
    {
        return value(chip.series) || value(chip.matchKey) || value(chip.device) || value(chip.package)
            || value(chip.auxiliary) || counts(chip.resources);
    }

    bool value(const QString& v)
    {
        if (!m_remember)
            return decide(v);
        return remembered(m_values, sharedDataOf(v), [&] { return decide(v); });
    }

    bool counts(const QStringList& list)
    {
        if (list.isEmpty())
            return false;
        if (!m_remember)
            return anyCount(list);
        // Lists that share their data share their first element.
        return remembered(m_lists, &list.constFirst(), [&] { return anyCount(list); });
    }

    template <typename Decide>
    static bool remembered(VerdictCache& cache, const void* key, Decide decideNow)
    {
        if (!key || !cache.worthIt())
            return decideNow();
        const VerdictCache::Verdict known = cache.find(key);
        if (known != VerdictCache::Unknown)
            return known == VerdictCache::Yes;
        const bool verdict = decideNow();
        cache.insert(key, verdict);
        return verdict;
    }

    bool anyCount(const QStringList& list)
    {
        for (const QString& count : list) {
            if (decide(count))
                return true;
        }
        return false;
    }

    // Whether one value matches. The chip table shows an empty count as "0",
    // so a search for "0" also accepts every empty value.
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
            if (m_asciiPattern) {
                const int found = asciiContainsFolded(v, m_foldedPattern);
                if (found >= 0)
                    return found == 1;
            }
            return v.indexOf(m_pattern, 0, m_cs) != -1;
        case Mode::Nothing:
            break;
        }
        return false;
    }

    // -1 for all columns
    const int m_column;
    const Qt::CaseSensitivity m_cs;
    const QString m_pattern;
    const bool m_emptyCellRule;
    const QString m_missing;
    const bool m_remember;
    Mode m_mode = Mode::Anywhere;
    std::optional<QRegExp> m_regExp;
    QString m_foldedPattern;
    bool m_asciiPattern = false;
    VerdictCache m_values;
    VerdictCache m_lists;
    using TextId = std::pair<const void*, qsizetype>;
    using DeviceValueIds = std::pair<std::array<TextId, 5>, const QString*>;
    DeviceValueIds m_lastDeviceValues{};
    bool m_haveDeviceValues = false;
    bool m_lastDeviceVerdict = false;
};

/*
 * A long list's records and their texts lie all over the heap, and deciding
 * a chip is mostly waiting for them to arrive from memory. Asking for them a
 * few chips ahead lets those waits overlap: first the record, then, once it
 * has arrived, the data of the texts it points to.
 */
constexpr int PrefetchAhead = 8;

inline void prefetch(const void* p)
{
#if defined(__GNUC__)
    __builtin_prefetch(p);
#else
    Q_UNUSED(p);
#endif
}

inline void prefetchValues(const ChipInfo& chip)
{
    for (QString ChipInfo::*text : pimpl::AllGroupTexts)
        prefetch(sharedDataOf(chip.*text));
}

// Sets verdicts[i] for chips [from, to) of @p list.
void decideRange(const QList<ChipInfo>& list, const ChipFilterBySearch& filter, int from, int to,
                 std::vector<char>& verdicts)
{
    SearchMatcher matcher(filter, true);
    for (int i = from; i < to; ++i) {
        if (i + 2 * PrefetchAhead < to)
            prefetch(&list.at(i + 2 * PrefetchAhead));
        if (i + PrefetchAhead < to)
            prefetchValues(list.at(i + PrefetchAhead));
        verdicts[size_t(i)] = matcher.matches(list.at(i)) ? 1 : 0;
    }
}

/*
 * Sets verdicts[i] for every chip of @p list, a long list in two halves at
 * once, each with a matcher (and verdict cache) of its own: the verdict of a
 * chip depends on nothing but the chip and the filter, so the result is the
 * same as on one thread.
 */
void decideInParallel(const QList<ChipInfo>& list, const ChipFilterBySearch& filter, std::vector<char>& verdicts)
{
    pimpl::inHalves(int(list.size()), [&](int from, int to) { decideRange(list, filter, from, to, verdicts); });
}

} // namespace

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
    std::vector<char> verdicts(size_t(chips.size()), 0);
    decideInParallel(chips, filter, verdicts);
    return pimpl::rowsOf(verdicts);
}

QList<ChipInfo> filterChips(const QList<ChipInfo>& chips, const ChipFilterBySearch& filter)
{
    return pimpl::chipsAt(chips, filterRows(chips, filter));
}

} // namespace DEV
