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
 * The values a search of all values reads, in three kinds: those all chips of
 * one device identifier share, the match key, which neighbours often share
 * too, and a chip's own. A kind that neighbours share is folded once for a run
 * of them (run kind 0 and 1); together the kinds are the "All" group of
 * ChipFilterBySearch, no more and no fewer.
 */
template <typename Visit>
void runValues(int kind, const ChipInfo& chip, Visit visit)
{
    if (kind == 1) {
        visit(chip.matchKey);
        return;
    }
    for (const QString* value : {&chip.series, &chip.device, &chip.package, &chip.auxiliary})
        visit(*value);
    for (const QString& count : chip.resources)
        visit(count);
}

bool sameRunValues(int kind, const ChipInfo& a, const ChipInfo& b)
{
    if (kind == 1)
        return sameText(a.matchKey, b.matchKey);
    return sameText(a.series, b.series) && sameText(a.device, b.device) && sameText(a.package, b.package)
        && sameText(a.auxiliary, b.auxiliary) && a.resources == b.resources;
}

template <typename Visit>
void ownValues(const ChipInfo& chip, Visit visit)
{
    visit(chip.partNumber);
    visit(chip.voltage);
}

std::string_view view(const QByteArray& bytes)
{
    return std::string_view(bytes.constData(), size_t(bytes.size()));
}

} // namespace

/*
 * The folded text of chips [first(), end()) of a list: the values that all
 * chips of one device identifier share (series, device, package, auxiliary
 * attribute, resources) and the match key, each once for a run of neighbours
 * with equal ones, and each chip's own (part number, voltage). Each value is
 * followed by a NUL, so that a pattern, which holds none, is found within one
 * value, as searching the values one by one would find it; empty values are
 * left out, as no folded pattern is found in them.
 */
class FoldedWindow
{
public:
    // Folds chips [from, to) in place of what it held, keeping its memory
    // for the next window. Folded for the one search of a needle, it leaves
    // out the own values of the chips whose runs hold it, found already.
    void fold(const QList<ChipInfo>& chips, int from, int to, const QByteArray& needle = QByteArray());

    int first() const { return m_first; }
    int end() const { return m_first + int(m_runOf[0].size()); }

    // Sets verdicts[k - from] for each chip k in [from, to), which lies in
    // this window.
    void scan(const QByteArray& needle, int from, int to, char* verdicts) const;

    static constexpr int RunKinds = 2;
    // The runs the last verdict() calls decided, so that neighbours ask once.
    struct LastRuns
    {
        const FoldedWindow* window = nullptr;
        int run[RunKinds] = {-1, -1};
        bool found[RunKinds] = {false, false};
    };
    Verdict verdict(const QByteArray& needle, int k, LastRuns& last) const;

private:
    size_t scanRuns(const QByteArray& needle, size_t a, size_t b, char* verdicts) const;
    void scanOwn(const QByteArray& needle, size_t a, size_t b, size_t missed, char* verdicts) const;

    struct Segments
    {
        std::vector<char> text;
        std::vector<quint32> ends; // one past each segment's last byte

        size_t start(size_t s) const { return s == 0 ? 0 : ends[s - 1]; }
        template <typename Values>
        bool append(Values values);
        bool holds(const QByteArray& needle, size_t s) const;
        void scan(const QByteArray& needle, size_t from, size_t to, char* verdicts) const;
    };

    int m_first = 0;
    Segments m_runs[RunKinds];          // a segment per run
    std::vector<int> m_runOf[RunKinds]; // per chip: its run
    Segments m_own;                     // a segment per chip
    std::vector<int> m_undecided;       // ascending
};

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
    for (Segments* segments : {&m_runs[0], &m_runs[1], &m_own}) {
        segments->text.clear();
        segments->ends.clear();
    }
    for (std::vector<int>& runOf : m_runOf)
        runOf.clear();
    m_undecided.clear();
    bool ascii[RunKinds] = {true, true}, holds[RunKinds] = {false, false};
    for (int k = from; k < to; ++k) {
        const ChipInfo& chip = chips.at(k);
        for (int kind = 0; kind < RunKinds; ++kind) {
            Segments& runs = m_runs[kind];
            if (k == from || !sameRunValues(kind, chip, chips.at(k - 1))) {
                ascii[kind] = runs.append([&](auto visit) { runValues(kind, chip, visit); });
                holds[kind] = !needle.isEmpty() && runs.holds(needle, runs.ends.size() - 1);
            }
            m_runOf[kind].push_back(int(runs.ends.size()) - 1);
        }
        const bool found = holds[0] || holds[1];
        const bool ownAscii = m_own.append([&](auto visit) {
            if (!found)
                ownValues(chip, visit);
        });
        if (!ascii[0] || !ascii[1] || !ownAscii)
            m_undecided.push_back(k);
    }
}

void FoldedWindow::scan(const QByteArray& needle, int from, int to, char* verdicts) const
{
    const size_t a = size_t(from - m_first), b = size_t(to - m_first);
    scanOwn(needle, a, b, scanRuns(needle, a, b, verdicts), verdicts);
}

// Sets verdicts[i - a] for chip i of the window, i in [a, b), to whether its
// runs hold the needle, deciding each run once; returns the number Missed.
size_t FoldedWindow::scanRuns(const QByteArray& needle, size_t a, size_t b, char* verdicts) const
{
    if (a >= b)
        return 0;
    size_t firstRun[RunKinds];
    std::vector<char> runs[RunKinds];
    for (int kind = 0; kind < RunKinds; ++kind) {
        firstRun[kind] = size_t(m_runOf[kind][a]);
        runs[kind].assign(size_t(m_runOf[kind][b - 1]) + 1 - firstRun[kind], Missed);
        m_runs[kind].scan(needle, firstRun[kind], firstRun[kind] + runs[kind].size(), runs[kind].data());
    }
    size_t missed = 0;
    for (size_t i = a; i < b; ++i) {
        verdicts[i - a] = runs[0][size_t(m_runOf[0][i]) - firstRun[0]] | runs[1][size_t(m_runOf[1][i]) - firstRun[1]];
        missed += verdicts[i - a] == Missed ? 1 : 0;
    }
    return missed;
}

// Adds the own values' verdicts to those of the runs (@p missed of them
// Missed) and makes the undecided chips' verdicts Undecided.
void FoldedWindow::scanOwn(const QByteArray& needle, size_t a, size_t b, size_t missed, char* verdicts) const
{
    // A short pattern is often in the runs of most chips; then only the
    // others' own values are read.
    if (missed * 4 > b - a) {
        m_own.scan(needle, a, b, verdicts);
    } else {
        for (size_t i = a; i < b; ++i) {
            if (verdicts[i - a] == Missed && m_own.holds(needle, i))
                verdicts[i - a] = Found;
        }
    }
    const auto undecided = std::lower_bound(m_undecided.begin(), m_undecided.end(), m_first + int(a));
    for (auto k = undecided; k != m_undecided.end() && *k < m_first + int(b); ++k)
        verdicts[size_t(*k - m_first) - a] = Undecided;
}

Verdict FoldedWindow::verdict(const QByteArray& needle, int k, LastRuns& last) const
{
    if (std::binary_search(m_undecided.begin(), m_undecided.end(), k))
        return Undecided;
    const size_t i = size_t(k - m_first);
    if (last.window != this)
        last = LastRuns{this, {-1, -1}, {false, false}};
    bool found = false;
    for (int kind = 0; kind < RunKinds; ++kind) {
        if (last.run[kind] != m_runOf[kind][i]) {
            last.run[kind] = m_runOf[kind][i];
            last.found[kind] = m_runs[kind].holds(needle, size_t(last.run[kind]));
        }
        found = found || last.found[kind];
    }
    return found || m_own.holds(needle, i) ? Found : Missed;
}

void findFolded(const QList<ChipInfo>& chips, const QByteArray& needle, char* verdicts)
{
    const int window = std::max(1, tuning().foldWindow);
    inParts(chips.size(), tuning().searchParallelFrom, [&](int from, int to) {
        // A series that holds the needle (a typed prefix of part numbers
        // often is one) settles its chips with nothing else read.
        const QString* series = nullptr;
        bool seriesHolds = false;
        QByteArray folded;
        const auto settled = [&](const ChipInfo& chip) {
            if (!series || !sameText(chip.series, *series)) {
                series = &chip.series;
                folded.resize(series->size());
                seriesHolds = fold(*series, folded.data()) && find(view(folded), view(needle)) != NotFound;
            }
            return seriesHolds;
        };
        FoldedWindow unsettled; // its memory kept from window to window
        for (int at = from; at < to;) {
            int end = at;
            while (end < to && end - at < window && !settled(chips.at(end)))
                ++end;
            if (end == at) {
                verdicts[at++] = Found;
                continue;
            }
            unsettled.fold(chips, at, end, needle);
            unsettled.scan(needle, at, end, verdicts + at);
            at = end;
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

FoldedChips::~FoldedChips() = default;

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
        FoldedWindow::LastRuns last;
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
