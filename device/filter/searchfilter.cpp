#include "chipfilter.h"

#include "devicedb.h"

#include <QRegExp>
#include <QStringView>

#include <algorithm>
#include <vector>

namespace DEV {

namespace {

// Group numbers of the search menu; groups 8 to 16 are the resource columns
// IO to PLL, in the order of ChipInfo::resources.
constexpr int FirstResourceGroup = 8;
constexpr int LastResourceGroup = 16;

/*
 * Verdicts of one search for values already tested, keyed by the identity of
 * the value's character data.
 *
 * The database stores each distinct value once and shares it, so a search
 * over 100,000 chips meets a few thousand distinct strings and resource lists
 * many times over. A value is identified by its data pointer and length:
 * while the searched list is alive, equal keys mean equal contents. Values
 * that are not shared (records a caller built one by one) simply miss; when
 * almost everything misses the cache stops being consulted.
 */
class VerdictCache
{
public:
    enum Verdict : signed char { Unknown = -1, No = 0, Yes = 1 };

    Verdict find(const void* data, int size) const
    {
        if (m_slots.empty())
            return Unknown;
        const size_t mask = m_slots.size() - 1;
        for (size_t i = slotOf(data, size) & mask;; i = (i + 1) & mask) {
            const Slot& slot = m_slots[i];
            if (!slot.data)
                return Unknown;
            if (slot.data == data && slot.size == size)
                return Verdict(slot.verdict);
        }
    }

    void insert(const void* data, int size, bool verdict)
    {
        if ((m_used + 1) * 2 > m_slots.size())
            grow();
        const size_t mask = m_slots.size() - 1;
        size_t i = slotOf(data, size) & mask;
        while (m_slots[i].data)
            i = (i + 1) & mask;
        m_slots[i] = Slot{data, size, verdict ? Yes : No};
        ++m_used;
    }

private:
    struct Slot
    {
        const void* data;
        int size;
        signed char verdict;
    };

    static size_t slotOf(const void* data, int size)
    {
        // Fibonacci hashing spreads the aligned pointers over the table.
        return size_t((quintptr(data) ^ quintptr(size)) * quintptr(0x9E3779B97F4A7C15ull) >> 20);
    }

    void grow()
    {
        std::vector<Slot> old(std::max<size_t>(1024, m_slots.size() * 2), Slot{nullptr, 0, Unknown});
        old.swap(m_slots);
        m_used = 0;
        for (const Slot& slot : old) {
            if (slot.data)
                insert(slot.data, slot.size, slot.verdict == Yes);
        }
    }

    std::vector<Slot> m_slots;
    size_t m_used = 0;
};

/*
 * Case-insensitive "contains" for the common case of plain ASCII text, where
 * Unicode case folding is just ASCII lower-casing. Answers -1 when either
 * side holds anything else, leaving the general comparison to Qt.
 */
int asciiContainsFolded(QStringView value, QStringView foldedNeedle)
{
    const qsizetype n = value.size();
    const qsizetype m = foldedNeedle.size();
    const char16_t* h = reinterpret_cast<const char16_t*>(value.data());
    char16_t bits = 0;
    for (qsizetype i = 0; i < n; ++i)
        bits |= h[i];
    if (bits >= 0x80)
        return -1;
    if (m == 0)
        return 1;
    if (m > n)
        return 0;
    const char16_t* p = reinterpret_cast<const char16_t*>(foldedNeedle.data());
    const auto fold = [](char16_t c) { return char16_t(c >= u'A' && c <= u'Z' ? c + 32 : c); };
    const char16_t first = p[0];
    for (qsizetype i = 0; i + m <= n; ++i) {
        if (fold(h[i]) != first)
            continue;
        qsizetype k = 1;
        while (k < m && fold(h[i + k]) == p[k])
            ++k;
        if (k == m)
            return 1;
    }
    return 0;
}

/*
 * One search, prepared once and applied to many chips. This runs on every
 * keystroke over lists of up to ~100,000 chips, so the values are walked in
 * place (no per-chip list), the pattern is compiled once and, when searching
 * a list, each distinct value is decided once.
 *
 * A matcher holds a QRegExp, whose matching updates internal state even
 * through const calls; keep each matcher local to one call on one thread.
 */
class SearchMatcher
{
public:
    explicit SearchMatcher(const ChipFilterBySearch& filter, bool remember = false)
        : m_group(filter.group >= 0 && filter.group <= LastResourceGroup ? filter.group : 0)
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

    bool matches(const ChipInfo& chip)
    {
        switch (m_group) {
        case 1:
            return value(chip.series);
        case 2:
            return value(chip.partNumber);
        case 3:
            return value(chip.device);
        case 4:
            return value(chip.deviceVersion);
        case 5:
            return value(chip.package);
        case 6:
            return value(chip.speed);
        case 7:
            return value(chip.voltage);
        default:
            break;
        }
        if (m_group >= FirstResourceGroup) {
            const int index = m_group - FirstResourceGroup;
            return value(index < chip.resources.size() ? chip.resources.at(index) : m_missing);
        }
        // "All" leaves out the device version and the speed grade but takes
        // the match key and auxiliary attribute, which the table does not
        // show; the single columns are the way to search the former. The
        // order only decides how early the walk may stop.
        return value(chip.series) || value(chip.partNumber) || value(chip.matchKey) || value(chip.device)
            || value(chip.package) || value(chip.auxiliary) || value(chip.voltage) || counts(chip.resources);
    }

private:
    enum class Mode { Expression, Exactly, Anywhere, Nothing };

    // Tries to fill the cache only while it pays: once a good sample of
    // look-ups has mostly missed, the values are evidently not shared.
    bool caching() const { return m_remember && (m_lookups < 4096 || m_hits * 4 > m_lookups); }

    bool value(const QString& v)
    {
        if (!caching())
            return decide(v);
        ++m_lookups;
        const VerdictCache::Verdict known = m_values.find(v.constData(), v.size());
        if (known != VerdictCache::Unknown) {
            ++m_hits;
            return known == VerdictCache::Yes;
        }
        const bool verdict = decide(v);
        m_values.insert(v.constData(), v.size(), verdict);
        return verdict;
    }

    bool counts(const QStringList& list)
    {
        if (list.isEmpty())
            return false;
        if (!caching())
            return anyCount(list);
        ++m_lookups;
        // The address of the first entry identifies the shared list.
        const void* data = &list.constFirst();
        const VerdictCache::Verdict known = m_lists.find(data, list.size());
        if (known != VerdictCache::Unknown) {
            ++m_hits;
            return known == VerdictCache::Yes;
        }
        const bool verdict = anyCount(list);
        m_lists.insert(data, list.size(), verdict);
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
            return m_regExp.exactMatch(v);
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

    const int m_group;
    const Qt::CaseSensitivity m_cs;
    const QString m_pattern;
    const bool m_emptyCellRule;
    const QString m_missing;
    const bool m_remember;
    Mode m_mode = Mode::Anywhere;
    QRegExp m_regExp;
    QString m_foldedPattern;
    bool m_asciiPattern = false;
    VerdictCache m_values;
    VerdictCache m_lists;
    int m_lookups = 0;
    int m_hits = 0;
};

} // namespace

bool matchFilter(const ChipInfo& info, const ChipFilterBySearch& filter)
{
    return SearchMatcher(filter).matches(info);
}

QList<ChipInfo> DeviceDb::filterChips(const ChipFilterBySearch& filter, const QList<ChipInfo>& chips) const
{
    SearchMatcher matcher(filter, true);
    QList<ChipInfo> result;
    const QList<ChipInfo> list = chips;
    for (const ChipInfo& chip : list) {
        if (matcher.matches(chip))
            result.append(chip);
    }
    return result;
}

} // namespace DEV
