// SPDX-License-Identifier: BSD-3-Clause
#include "chipsearch.h"

#include "chipcolumns.h"
#include "devicedb.h"
#include "devicedb_p.h"
#include "parallel_p.h"
#include "search_p.h"
#include "tuning_p.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <iterator>
#include <mutex>
#include <utility>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace DEV {

namespace {

using pimpl::sameText;

// ASCII's capitals in lower case; other units below 0x80 as they are.
inline char folded(ushort u)
{
    return char(u + (ushort(u - 'A') < 26 ? 32 : 0));
}

/*
 * What an all-column search reads of a chip, in two parts: the values that
 * every chip of one device identifier shares, which neighbours in a
 * catalogue have in common and which are therefore folded and decided once
 * for a run of such chips, and the chip's own.
 */
enum class Part { Device, Own, Series };

bool sameDeviceValues(const ChipInfo& a, const ChipInfo& b)
{
    return sameText(a.series, b.series) && sameText(a.matchKey, b.matchKey) && sameText(a.device, b.device)
        && sameText(a.package, b.package) && sameText(a.auxiliary, b.auxiliary) && a.resources == b.resources;
}

template <typename Visit>
void visitPart(const ChipInfo& chip, Part part, Visit visit)
{
    if (part != Part::Device) {
        visit(part == Part::Own ? chip.partNumber : chip.series);
        if (part == Part::Own)
            visit(chip.voltage);
        return;
    }
    for (const QString* value : {&chip.series, &chip.matchKey, &chip.device, &chip.package, &chip.auxiliary})
        visit(*value);
    for (const QString& count : chip.resources)
        visit(count);
}

constexpr size_t NotFound = size_t(-1);

// The first position where @p needle (m >= 1 bytes) starts in @p text, or NotFound.
size_t find(const char* text, size_t size, const char* needle, size_t m)
{
    if (m > size)
        return NotFound;
    const size_t last = size - m; // the last position a match may start at
    size_t i = 0;
#if defined(__SSE2__)
    // Sixteen positions at a time, where both the needle's first and its
    // last byte stand; only those are compared in full. Both loads end
    // within the text: the second at i + 15 + m - 1 <= last + m - 1.
    const __m128i head = _mm_set1_epi8(needle[0]);
    const __m128i tail = _mm_set1_epi8(needle[m - 1]);
    for (; i + 15 <= last; i += 16) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + i));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + i + m - 1));
        unsigned hits = unsigned(_mm_movemask_epi8(_mm_and_si128(_mm_cmpeq_epi8(a, head), _mm_cmpeq_epi8(b, tail))));
        while (hits) {
            const size_t at = i + size_t(__builtin_ctz(hits));
            if (std::memcmp(text + at, needle, m) == 0)
                return at;
            hits &= hits - 1;
        }
    }
#endif
    for (; i <= last; ++i) {
        if (text[i] == needle[0] && std::memcmp(text + i, needle, m) == 0)
            return i;
    }
    return NotFound;
}

// Writes the @p n units at @p units folded to @p out and returns the end; ORs
// every unit into @p wide, so that wide < 0x80 tells that all were ASCII.
char* foldInto(char* out, const ushort* units, qsizetype n, ushort& wide)
{
    qsizetype i = 0;
#if defined(__SSE2__)
    // Eight units at a time: capitals are those that lie 0 to 25 above 'A'
    // (compared without sign), and get 32 added; beyond ASCII the bytes are
    // wrong, but then the whole segment is dropped.
    const __m128i a = _mm_set1_epi16('A');
    const __m128i sign = _mm_set1_epi16(short(0x8000));
    const __m128i letters = _mm_set1_epi16(short(26 ^ 0x8000));
    const __m128i lower = _mm_set1_epi16(32);
    __m128i all = _mm_setzero_si128();
    const auto eight = [&](qsizetype at) {
        __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + at));
        all = _mm_or_si128(all, v);
        const __m128i capital = _mm_cmplt_epi16(_mm_xor_si128(_mm_sub_epi16(v, a), sign), letters);
        v = _mm_add_epi16(v, _mm_and_si128(capital, lower));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + (at - i)), _mm_packus_epi16(v, v));
    };
    for (; i + 8 <= n; i += 8, out += 8)
        eight(i);
    // The last few units of a longer value as the last eight, again.
    if (i < n && n >= 8) {
        eight(n - 8);
        out += n - i;
        i = n;
    }
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(all, _mm_set1_epi16(short(0xFF80))), _mm_setzero_si128()))
        != 0xFFFF)
        wide |= 0x80;
#endif
    for (; i < n; ++i) {
        wide |= units[i];
        *out++ = folded(units[i]);
    }
    return out;
}

/*
 * Folded texts, one segment after another: each value lower-cased and
 * followed by a NUL, so that a pattern without NUL matches inside one value
 * only, as searching the values one by one would. Empty values are left out:
 * no pattern that folded text serves is found in them.
 */
struct Segments
{
    std::vector<char> text;
    std::vector<quint32> ends;

    /*
     * Appends the segment of @p part of @p chip; false, appending nothing,
     * when a value holds a unit beyond ASCII: Unicode case folding is more
     * than lower-casing A to Z, so such chips are decided the plain way.
     */
    bool append(const ChipInfo& chip, Part part)
    {
        qsizetype size = 0;
        visitPart(chip, part, [&size](const QString& value) { size += value.size() + 1; });
        const size_t start = text.size();
        text.resize(start + size_t(size));
        char* out = text.data() + start;
        ushort wide = 0;
        visitPart(chip, part, [&](const QString& value) {
            if (value.isEmpty())
                return;
            out = foldInto(out, reinterpret_cast<const ushort*>(value.constData()), value.size(), wide);
            *out++ = '\0';
        });
        text.resize(wide < 0x80 ? size_t(out - text.data()) : start);
        if (wide < 0x80)
            ends.push_back(quint32(text.size()));
        return wide < 0x80;
    }

    bool holds(size_t i, const QByteArray& needle) const
    {
        const size_t start = i == 0 ? 0 : ends[i - 1];
        return find(text.data() + start, ends[i] - start, needle.constData(), size_t(needle.size()))
            != NotFound;
    }

    // Sets found[i] for every segment i that holds the needle.
    void scan(const QByteArray& needle, char* found) const
    {
        const char* begin = text.data();
        const size_t size = size_t(text.size());
        size_t i = 0;
        for (size_t at = 0;;) {
            const size_t hit = find(begin + at, size - at, needle.constData(), size_t(needle.size()));
            if (hit == NotFound)
                return;
            at += hit;
            while (ends[i] <= at)
                ++i;
            found[i] = 1;
            // The rest of this segment cannot change its verdict.
            at = ends[i++];
        }
    }
};

/*
 * The folded text of a stretch of positions: the device values once for
 * each run of neighbours that share them (a group), the chip's own values
 * for every chip. Chips with units beyond ASCII are listed apart.
 */
struct Stretch
{
    int first = 0;
    Segments devices;
    Segments own; // one segment per position, empty for those listed apart
    std::vector<int> groupOf; // per position: its segment in devices, or -1
    std::vector<int> unfolded; // ascending

    void add(int k, const ChipInfo& chip, const ChipInfo* previous)
    {
        int group = -1;
        if (previous && !groupOf.empty() && groupOf.back() >= 0 && sameDeviceValues(chip, *previous))
            group = groupOf.back();
        else if (devices.append(chip, Part::Device))
            group = int(devices.ends.size()) - 1;
        const size_t before = own.ends.size();
        if (group < 0 || !own.append(chip, Part::Own)) {
            unfolded.push_back(k);
            group = -1;
        }
        if (own.ends.size() == before)
            own.ends.push_back(quint32(own.text.size()));
        groupOf.push_back(group);
    }
};

} // namespace

QByteArray pimpl::foldedNeedle(const ChipFilterBySearch& filter)
{
    const bool anywhere = filter.patternSyntax < 0 || filter.patternSyntax > 2;
    // The empty pattern is found in every value, empty ones too, and "0"
    // also finds empty counts: neither is a matter of the text.
    if (!anywhere || filter.caseSensitive || searchGroupColumn(filter.group) != -1 || filter.pattern.isEmpty()
        || filter.pattern == QLatin1String("0"))
        return QByteArray();
    QByteArray needle;
    for (const QChar c : filter.pattern) {
        if (c.unicode() >= 0x80 || c.isNull())
            return QByteArray();
        needle.append(folded(c.unicode()));
    }
    return needle;
}

QVector<int> pimpl::foldedRows(const QList<ChipInfo>& chips, const ChipFilterBySearch& filter,
                               const QByteArray& needle)
{
    std::vector<char> verdicts(size_t(chips.size()), 0);
    const int n = int(chips.size());
    const int parts = pimpl::partsFor(n, pimpl::tuning().searchParallelFrom);
    std::vector<std::vector<int>> plain(static_cast<size_t>(parts));
    pimpl::runParts(parts, [&](int p) {
        const int from = int(pimpl::partStart(n, p, parts)), to = int(pimpl::partStart(n, p + 1, parts));
        // Each chip is folded as it is reached, its device values only when
        // they differ from the chip's before. A series that holds the
        // pattern (a typed prefix of part numbers often is one) settles
        // every chip of the series without anything else read.
        Segments series, device, own;
        const QString* seriesOf = nullptr;
        bool seriesHolds = false;
        bool deviceHolds = false;
        for (int k = from; k < to; ++k) {
            const ChipInfo& chip = chips.at(k);
            if (!seriesOf || !sameText(chip.series, *seriesOf)) {
                seriesOf = &chip.series;
                series.text.clear();
                series.ends.clear();
                seriesHolds = series.append(chip, Part::Series) && series.holds(0, needle);
            }
            if (seriesHolds) {
                verdicts[size_t(k)] = 1;
                continue;
            }
            if (k == from || device.ends.empty() || !sameDeviceValues(chip, chips.at(k - 1))) {
                device.text.clear();
                device.ends.clear();
                deviceHolds = device.append(chip, Part::Device) && device.holds(0, needle);
            }
            // A match in the device values settles the chip whatever its own hold.
            own.text.clear();
            own.ends.clear();
            if (deviceHolds)
                verdicts[size_t(k)] = 1;
            else if (device.ends.empty() || !own.append(chip, Part::Own))
                plain[size_t(p)].push_back(k);
            else
                verdicts[size_t(k)] = own.holds(0, needle) ? 1 : 0;
        }
    });
    for (const std::vector<int>& rows : plain) {
        std::vector<char> wide(rows.size(), 0);
        decidePlainly(int(rows.size()), [&](int k) -> const ChipInfo& { return chips.at(rows[size_t(k)]); }, filter,
                      wide);
        for (size_t k = 0; k < rows.size(); ++k)
            verdicts[size_t(rows[k])] = wide[k];
    }
    return rowsOf(verdicts);
}

class ChipSearch::Private
{
public:
    QList<ChipInfo> chips;
    int size = 0;
    std::vector<Stretch> stretches; // by position
    int unfolded = 0;

    void prepare()
    {
        std::mutex done;
        pimpl::inParts(size, pimpl::tuning().searchParallelFrom, [&](int from, int to) {
            Stretch stretch;
            stretch.first = from;
            stretch.groupOf.reserve(size_t(to - from));
            stretch.own.ends.reserve(size_t(to - from));
            stretch.own.text.reserve(size_t(to - from) * 32);
            stretch.devices.text.reserve(size_t(to - from) * 32);
            for (int k = from; k < to; ++k)
                stretch.add(k, chips.at(k), k > from ? &chips.at(k - 1) : nullptr);
            const std::lock_guard<std::mutex> lock(done);
            unfolded += int(stretch.unfolded.size());
            stretches.push_back(std::move(stretch));
        });
        std::sort(stretches.begin(), stretches.end(), [](const Stretch& l, const Stretch& r) { return l.first < r.first; });
    }

    // The stretch that holds position @p k.
    size_t stretchOf(int k) const
    {
        const auto after = std::upper_bound(stretches.begin(), stretches.end(), k,
                                            [](int k, const Stretch& stretch) { return k < stretch.first; });
        return size_t(after - stretches.begin()) - 1;
    }

    // Sets verdicts[i] for the position among[i] (or i itself without among).
    void decide(const ChipFilterBySearch& filter, const QVector<int>* among, std::vector<char>& verdicts) const
    {
        const int n = among ? int(among->size()) : size;
        const auto position = [among](int i) { return among ? among->at(i) : i; };
        const QByteArray needle = pimpl::foldedNeedle(filter);
        // Where many chips need deciding one by one, the plain way, which
        // prepares the pattern once for all of them, is the quicker one.
        if (needle.isEmpty() || unfolded * 16 > size) {
            pimpl::decidePlainly(n, [&](int i) -> const ChipInfo& { return chips.at(position(i)); }, filter, verdicts);
            return;
        }
        std::vector<char> all;
        if (!among || among->size() * 2 > size) {
            // Many candidates: one pass over all the text is quicker than
            // visiting their segments one by one.
            all.assign(size_t(size), 0);
            // Each stretch on a thread of its own: they were cut as the
            // tuning was when the search was prepared.
            pimpl::runParts(int(stretches.size()), [&](int s) {
                const Stretch& stretch = stretches[size_t(s)];
                const int from = stretch.first;
                std::vector<char> groups(stretch.devices.ends.size(), 0);
                stretch.devices.scan(needle, groups.data());
                char* verdicts = all.data() + from;
                size_t undecided = 0;
                for (size_t i = 0; i < stretch.groupOf.size(); ++i) {
                    verdicts[i] = stretch.groupOf[i] >= 0 ? groups[size_t(stretch.groupOf[i])] : 0;
                    undecided += verdicts[i] ? 0 : 1;
                }
                // A short pattern is often in the device values of most
                // chips; then only the others' own values are looked at.
                if (undecided * 4 > stretch.groupOf.size()) {
                    stretch.own.scan(needle, verdicts);
                } else {
                    for (size_t i = 0; i < stretch.groupOf.size(); ++i) {
                        if (!verdicts[i])
                            verdicts[i] = stretch.own.holds(i, needle) ? 1 : 0;
                    }
                }
            });
            for (const Stretch& stretch : stretches) {
                for (int k : stretch.unfolded)
                    all[size_t(k)] = matchFilter(chips.at(k), filter) ? 1 : 0;
            }
            if (!among) {
                verdicts.swap(all);
                return;
            }
        }
        pimpl::inParts(n, pimpl::tuning().searchParallelFrom, [&](int from, int to) {
            // Each group is decided once, when its first candidate is reached.
            std::vector<std::vector<char>> groups(stretches.size());
            for (int i = from; i < to; ++i) {
                const int k = position(i);
                if (!all.empty()) {
                    verdicts[size_t(i)] = all[size_t(k)];
                    continue;
                }
                const size_t s = stretchOf(k);
                const Stretch& stretch = stretches[s];
                const int group = stretch.groupOf[size_t(k - stretch.first)];
                if (group < 0) {
                    verdicts[size_t(i)] = matchFilter(chips.at(k), filter) ? 1 : 0;
                    continue;
                }
                std::vector<char>& known = groups[s];
                if (known.empty())
                    known.assign(stretch.devices.ends.size(), 0);
                char& verdict = known[size_t(group)];
                if (verdict == 0)
                    verdict = stretch.devices.holds(size_t(group), needle) ? 2 : 1;
                verdicts[size_t(i)] = verdict == 2 || stretch.own.holds(size_t(k - stretch.first), needle) ? 1 : 0;
            }
        });
    }
};

ChipSearch::ChipSearch()
    : d(std::make_shared<Private>())
{
}

ChipSearch::ChipSearch(const QList<ChipInfo>& chips)
{
    auto p = std::make_shared<Private>();
    p->chips = chips;
    p->size = int(chips.size());
    p->prepare();
    d = std::move(p);
}

ChipSearch::ChipSearch(const ChipSearch& other) = default;
ChipSearch& ChipSearch::operator=(const ChipSearch& other) = default;
ChipSearch::~ChipSearch() = default;

QList<ChipInfo> ChipSearch::chips() const
{
    return d->chips;
}

QVector<int> ChipSearch::filterRows(const ChipFilterBySearch& filter) const
{
    std::vector<char> verdicts(size_t(d->size), 0);
    d->decide(filter, nullptr, verdicts);
    return pimpl::rowsOf(verdicts);
}

QVector<int> ChipSearch::filterRows(const ChipFilterBySearch& filter, const QVector<int>& among) const
{
    const auto inside = [this](int k) { return k >= 0 && k < d->size; };
    const bool allInside = std::all_of(among.begin(), among.end(), inside);
    QVector<int> kept;
    if (!allInside)
        std::copy_if(among.begin(), among.end(), std::back_inserter(kept), inside);
    const QVector<int>& candidates = allInside ? among : kept;
    // Every position, as while the first keys of a word match everything:
    // the same as searching them all.
    if (candidates.size() == d->size
        && std::adjacent_find(candidates.begin(), candidates.end(), std::greater_equal<int>()) == candidates.end())
        return filterRows(filter);
    std::vector<char> verdicts(size_t(candidates.size()), 0);
    d->decide(filter, &candidates, verdicts);
    QVector<int> hits;
    hits.reserve(int(std::count(verdicts.begin(), verdicts.end(), 1)));
    for (int i = 0; i < candidates.size(); ++i) {
        if (verdicts[size_t(i)])
            hits.append(candidates.at(i));
    }
    return hits;
}

QList<ChipInfo> ChipSearch::filterChips(const ChipFilterBySearch& filter) const
{
    return pimpl::chipsAt(d->chips, filterRows(filter));
}

// A query of the database, defined with the other searches.
ChipSearch DeviceDb::preparedSearch() const
{
    std::call_once(d->searchPrepared, [this] { d->search = std::make_shared<const ChipSearch>(d->chips); });
    return *d->search;
}

} // namespace DEV
