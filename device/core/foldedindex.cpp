// SPDX-License-Identifier: BSD-3-Clause
#include "foldedindex_p.h"

#include "chipinfo_p.h"
#include "parallel_p.h"
#include "textscan_p.h"
#include "tuning_p.h"

#include <algorithm>

namespace DEV {
namespace pimpl {

namespace {

/*
 * The values a search of all values reads, in two kinds: those that all chips
 * of one device identifier share, which neighbours in a catalogue mostly have
 * in common, and each chip's own. Together they are the "All" group of
 * ChipFilterBySearch, no more and no fewer.
 */
template <typename Visit>
void sharedValues(const ChipInfo& chip, Visit visit)
{
    for (const QString* value : {&chip.series, &chip.device, &chip.package, &chip.auxiliary})
        visit(*value);
    for (const QString& count : chip.resources)
        visit(count);
}

template <typename Visit>
void ownValues(const ChipInfo& chip, Visit visit)
{
    for (const QString* value : {&chip.partNumber, &chip.matchKey, &chip.voltage})
        visit(*value);
}

bool sameSharedValues(const ChipInfo& a, const ChipInfo& b)
{
    return sameText(a.series, b.series) && sameText(a.device, b.device) && sameText(a.package, b.package)
        && sameText(a.auxiliary, b.auxiliary) && a.resources == b.resources;
}

std::string_view view(const QByteArray& bytes)
{
    return std::string_view(bytes.constData(), size_t(bytes.size()));
}

} // namespace

QByteArray foldedPattern(QStringView pattern)
{
    QByteArray folded(pattern.size(), Qt::Uninitialized);
    if (!fold(pattern, folded.data()) || folded.contains('\0'))
        return QByteArray();
    return folded;
}

// Appends a segment of the values @p values visits; false, leaving the
// segment empty, when one holds a unit beyond U+007F.
template <typename Values>
bool FoldedWindow::Segments::append(Values values)
{
    qsizetype size = 0;
    values([&size](const QString& value) { size += value.size() + 1; });
    const size_t start = text.size();
    text.resize(start + size_t(size));
    char* out = text.data() + start;
    bool ascii = true;
    values([&](const QString& value) {
        if (value.isEmpty() || !ascii)
            return;
        ascii = pimpl::fold(value, out);
        out += value.size();
        *out++ = '\0';
    });
    text.resize(ascii ? size_t(out - text.data()) : start);
    ends.push_back(quint32(text.size()));
    return ascii;
}

bool FoldedWindow::Segments::holds(const QByteArray& needle, size_t s) const
{
    return find(std::string_view(text.data() + start(s), ends[s] - start(s)), view(needle)) != NotFound;
}

// Sets verdicts[s - from] to Found for each segment s in [from, to) that
// holds the needle, in one pass over their text.
void FoldedWindow::Segments::scan(const QByteArray& needle, size_t from, size_t to, char* verdicts) const
{
    if (from >= to)
        return;
    const std::string_view all(text.data(), ends[to - 1]);
    for (size_t s = from, at = start(from);;) {
        const size_t hit = find(all.substr(at), view(needle));
        if (hit == NotFound)
            return;
        at += hit;
        while (ends[s] <= at)
            ++s;
        verdicts[s - from] = Found;
        at = ends[s++]; // the rest of a segment cannot change its verdict
    }
}

void FoldedWindow::fold(const QList<ChipInfo>& chips, int from, int to, const QByteArray& needle)
{
    m_first = from;
    for (Segments* segments : {&m_shared, &m_own}) {
        segments->text.clear();
        segments->ends.clear();
    }
    m_runOf.clear();
    m_undecided.clear();
    bool runAscii = true;
    bool runHolds = false;
    for (int k = from; k < to; ++k) {
        const ChipInfo& chip = chips.at(k);
        if (k == from || !sameSharedValues(chip, chips.at(k - 1))) {
            runAscii = m_shared.append([&chip](auto visit) { sharedValues(chip, visit); });
            runHolds = !needle.isEmpty() && m_shared.holds(needle, m_shared.ends.size() - 1);
        }
        bool ascii = true;
        if (runHolds)
            m_own.ends.push_back(quint32(m_own.text.size()));
        else
            ascii = m_own.append([&chip](auto visit) { ownValues(chip, visit); });
        m_runOf.push_back(int(m_shared.ends.size()) - 1);
        if (!runAscii || !ascii)
            m_undecided.push_back(k);
    }
}

void FoldedWindow::scan(const QByteArray& needle, int from, int to, char* verdicts) const
{
    const size_t a = size_t(from - m_first), b = size_t(to - m_first);
    if (a >= b)
        return;
    // The runs first, each once.
    const size_t firstRun = size_t(m_runOf[a]);
    std::vector<char> runs(size_t(m_runOf[b - 1]) + 1 - firstRun, Missed);
    m_shared.scan(needle, firstRun, firstRun + runs.size(), runs.data());
    size_t missed = 0;
    for (size_t i = a; i < b; ++i) {
        verdicts[i - a] = runs[size_t(m_runOf[i]) - firstRun];
        missed += verdicts[i - a] == Missed ? 1 : 0;
    }
    // A short pattern is often in the shared values of most chips; then only
    // the others' own values are read.
    if (missed * 4 > b - a) {
        m_own.scan(needle, a, b, verdicts);
    } else {
        for (size_t i = a; i < b; ++i) {
            if (verdicts[i - a] == Missed && m_own.holds(needle, i))
                verdicts[i - a] = Found;
        }
    }
    for (auto k = std::lower_bound(m_undecided.begin(), m_undecided.end(), from); k != m_undecided.end() && *k < to; ++k)
        verdicts[*k - from] = Undecided;
}

Verdict FoldedWindow::verdict(const QByteArray& needle, int k, LastRun& last) const
{
    if (std::binary_search(m_undecided.begin(), m_undecided.end(), k))
        return Undecided;
    const size_t i = size_t(k - m_first);
    if (last.window != this || last.run != m_runOf[i])
        last = {this, m_runOf[i], m_shared.holds(needle, size_t(m_runOf[i]))};
    return last.found || m_own.holds(needle, i) ? Found : Missed;
}

void findFolded(const QList<ChipInfo>& chips, const QByteArray& needle, char* verdicts)
{
    const int window = std::max(1, tuning().foldWindow);
    inParts(chips.size(), tuning().searchParallelFrom, [&](int from, int to) {
        FoldedWindow folded;
        for (int at = from; at < to; at = folded.end()) {
            folded.fold(chips, at, at + std::min(window, to - at), needle);
            folded.scan(needle, at, folded.end(), verdicts + at);
        }
    });
}

FoldedChips::FoldedChips(const QList<ChipInfo>& chips)
    : m_size(int(chips.size()))
{
    const qint64 window = std::max(1, tuning().foldWindow);
    const int count = int((m_size + window - 1) / window);
    m_windows.resize(size_t(count));
    const int parts = int(std::min<qint64>(partsFor(m_size, tuning().searchParallelFrom), count));
    runParts(parts, [&](int p) {
        // Folded where its memory is kept from window to window; each window
        // kept gets what its text uses.
        FoldedWindow scratch;
        for (qint64 w = partStart(count, p, parts); w < partStart(count, p + 1, parts); ++w) {
            scratch.fold(chips, int(w * window), int(std::min<qint64>(m_size, (w + 1) * window)));
            m_windows[size_t(w)] = scratch;
        }
    });
}

size_t FoldedChips::windowOf(int k) const
{
    const auto before = [k](const FoldedWindow& window) { return window.end() <= k; };
    return size_t(std::partition_point(m_windows.begin(), m_windows.end(), before) - m_windows.begin());
}

void FoldedChips::find(const QByteArray& needle, char* verdicts) const
{
    inParts(m_size, tuning().searchParallelFrom, [&](int from, int to) {
        for (size_t w = windowOf(from); w < m_windows.size() && m_windows[w].first() < to; ++w) {
            const FoldedWindow& window = m_windows[w];
            const int a = std::max(from, window.first());
            window.scan(needle, a, std::min(to, window.end()), verdicts + a);
        }
    });
}

void FoldedChips::findAmong(const QByteArray& needle, const QVector<int>& among, char* verdicts) const
{
    // Many chips: one pass over all the text is quicker than visiting their
    // segments one by one.
    if (among.size() * 2 > m_size) {
        std::vector<char> all(static_cast<size_t>(m_size), Missed);
        find(needle, all.data());
        for (int i = 0; i < among.size(); ++i)
            verdicts[i] = all[size_t(among.at(i))];
        return;
    }
    inParts(among.size(), tuning().searchParallelFrom, [&](int from, int to) {
        FoldedWindow::LastRun last;
        size_t w = m_windows.size();
        for (int i = from; i < to; ++i) {
            const int k = among.at(i);
            // Mostly the window of the chip before.
            if (w == m_windows.size() || k < m_windows[w].first() || k >= m_windows[w].end())
                w = windowOf(k);
            verdicts[i] = m_windows[w].verdict(needle, k, last);
        }
    });
}

} // namespace pimpl
} // namespace DEV
