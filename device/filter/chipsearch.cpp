// SPDX-License-Identifier: BSD-3-Clause
#include "chipsearch.h"

#include "chipcolumns.h"
#include "search_p.h"

#include <QByteArray>

#include <cstring>
#include <mutex>
#include <utility>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace DEV {

namespace {

/*
 * The folded values of a stretch of chips, one segment per chip: each value
 * it has, lower-cased, followed by a NUL. A pattern without NUL can then
 * match inside one value only, as searching the values one by one would.
 * A chip with a letter beyond ASCII gets an empty segment and is listed
 * apart: Unicode case folding is more than lower-casing A to Z.
 */
struct Stretch
{
    int first = 0;              // position of the stretch's first chip in the list
    QByteArray text;            // the segments, one after the other
    std::vector<quint32> ends;  // where each chip's segment ends in text
    std::vector<int> unfolded;  // positions in the list of chips decided one by one
};

// ASCII's capitals in lower case; other units below 0x80 as they are.
inline char folded(ushort u)
{
    return char(u + (ushort(u - 'A') < 26 ? 32 : 0));
}

// Writes @p value folded and a NUL at @p out; returns the end, and in @p wide
// whether any unit lay beyond ASCII.
char* writeFolded(char* out, const QString& value, ushort& wide)
{
    const ushort* units = reinterpret_cast<const ushort*>(value.constData());
    for (qsizetype i = 0, n = value.size(); i < n; ++i) {
        const ushort u = units[i];
        wide |= u;
        *out++ = folded(u);
    }
    *out++ = '\0';
    return out;
}

// Appends the segment of @p chip to @p text; false, appending nothing, if a
// value holds a letter beyond ASCII.
bool appendChip(QByteArray& text, const ChipInfo& chip)
{
    qsizetype size = 0;
    for (QString ChipInfo::*value : pimpl::AllGroupTexts)
        size += (chip.*value).size() + 1;
    for (const QString& count : chip.resources)
        size += count.size() + 1;
    const qsizetype start = text.size();
    text.resize(start + size);
    char* out = text.data() + start;
    ushort wide = 0;
    // Empty values are left out: no pattern the text serves is found in them.
    for (QString ChipInfo::*value : pimpl::AllGroupTexts) {
        if (!(chip.*value).isEmpty())
            out = writeFolded(out, chip.*value, wide);
    }
    for (const QString& count : chip.resources) {
        if (!count.isEmpty())
            out = writeFolded(out, count, wide);
    }
    text.resize(wide >= 0x80 ? start : out - text.constData());
    return wide < 0x80;
}

Stretch prepare(const QList<ChipInfo>& chips, int from, int to)
{
    Stretch stretch;
    stretch.first = from;
    stretch.ends.reserve(size_t(to - from));
    for (int i = from; i < to; ++i) {
        if (!appendChip(stretch.text, chips.at(i)))
            stretch.unfolded.push_back(i);
        stretch.ends.push_back(quint32(stretch.text.size()));
    }
    stretch.text.squeeze();
    return stretch;
}

constexpr size_t NotFound = size_t(-1);

// The first position at or after @p from where @p needle (m >= 1 bytes) starts in @p text, or NotFound.
size_t find(const char* text, size_t size, size_t from, const char* needle, size_t m)
{
    if (m > size)
        return NotFound;
    const size_t last = size - m; // the last position a match may start at
    size_t i = from;
#if defined(__SSE2__)
    // Sixteen positions at a time, where both the needle's first and its
    // last byte stand; only those are compared in full.
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

// Sets verdicts[i] for the chips of @p stretch whose segment holds @p needle.
void scan(const Stretch& stretch, const QByteArray& needle, std::vector<char>& verdicts)
{
    const char* text = stretch.text.constData();
    const size_t size = size_t(stretch.text.size());
    size_t chip = 0;
    for (size_t at = 0;;) {
        at = find(text, size, at, needle.constData(), size_t(needle.size()));
        if (at == NotFound)
            return;
        while (stretch.ends[chip] <= at)
            ++chip;
        verdicts[size_t(stretch.first) + chip] = 1;
        // The rest of this chip's segment cannot change its verdict.
        at = stretch.ends[chip];
        ++chip;
    }
}

// The pattern as the prepared text can answer it, folded; empty when it cannot.
QByteArray foldedNeedle(const ChipFilterBySearch& filter)
{
    const bool anywhere = filter.patternSyntax < 0 || filter.patternSyntax > 2;
    // The empty pattern is found in every value, empty ones too, and "0"
    // also finds empty counts: neither is a matter of the text.
    if (!anywhere || filter.caseSensitive || searchGroupColumn(filter.group) != -1 || filter.pattern.isEmpty()
        || filter.pattern == QLatin1String("0"))
        return QByteArray();
    QByteArray needle;
    needle.reserve(int(filter.pattern.size()));
    for (const QChar c : filter.pattern) {
        if (c.unicode() >= 0x80 || c.isNull())
            return QByteArray();
        needle.append(folded(c.unicode()));
    }
    return needle;
}

} // namespace

class ChipSearch::Private
{
public:
    QList<ChipInfo> chips;
    std::vector<Stretch> stretches;
    int unfolded = 0;
};

ChipSearch::ChipSearch()
    : d(std::make_shared<Private>())
{
}

ChipSearch::ChipSearch(const QList<ChipInfo>& chips)
{
    auto p = std::make_shared<Private>();
    p->chips = chips;
    std::mutex done;
    pimpl::inHalves(int(chips.size()), [&](int from, int to) {
        Stretch stretch = prepare(p->chips, from, to);
        const std::lock_guard<std::mutex> lock(done);
        p->stretches.push_back(std::move(stretch));
    });
    for (const Stretch& stretch : p->stretches)
        p->unfolded += int(stretch.unfolded.size());
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
    const QByteArray needle = foldedNeedle(filter);
    // Where many chips need deciding one by one, the ordinary search, which
    // prepares the pattern once for all of them, is the quicker way.
    if (needle.isEmpty() || d->unfolded * 16 > d->chips.size())
        return DEV::filterRows(d->chips, filter);

    std::vector<char> verdicts(size_t(d->chips.size()), 0);
    // The stretches were prepared as the halves are cut here.
    pimpl::inHalves(int(d->chips.size()), [&](int from, int to) {
        for (const Stretch& stretch : d->stretches) {
            if (stretch.first >= from && stretch.first < to)
                scan(stretch, needle, verdicts);
        }
    });
    for (const Stretch& stretch : d->stretches) {
        for (int i : stretch.unfolded)
            verdicts[size_t(i)] = matchFilter(d->chips.at(i), filter) ? 1 : 0;
    }
    return pimpl::rowsOf(verdicts);
}

QList<ChipInfo> ChipSearch::filterChips(const ChipFilterBySearch& filter) const
{
    return pimpl::chipsAt(d->chips, filterRows(filter));
}

} // namespace DEV
