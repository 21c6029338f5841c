// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_FOLDEDINDEX_P_H
#define DEV_FOLDEDINDEX_P_H

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Device API. It may change from version to
// version without notice.
//

#include "chipinfo.h"

#include <QByteArray>
#include <QList>
#include <QStringView>
#include <QVector>

#include <vector>

namespace DEV {
namespace pimpl {

/*
 * The fast form of the commonest search: a pattern anywhere in any value of a
 * chip that a search of all values reads, either letter case. The chips'
 * values are folded (textscan_p.h) a window of neighbours at a time and the
 * folded text is scanned. A chip with a unit beyond U+007F in those values is
 * left Undecided: the caller decides it its own plain way, as it decides
 * every chip for a pattern that cannot be folded.
 */

/// What a folded search says of one chip.
enum Verdict : char { Missed = 0, Found = 1, Undecided = 2 };

/// @p pattern as folded text, or empty when folded text cannot answer for
/// it: a unit beyond U+007F (Unicode case folding is more than lower-casing
/// A to Z) or U+0000, which ends each value in folded text.
QByteArray foldedPattern(QStringView pattern);

/**
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
    /// Folds chips [@p from, @p to) of @p chips in place of what it held,
    /// keeping its memory for the next window. Folded for the one search of
    /// @p needle, it leaves out the own values of the chips whose runs hold
    /// it, which are found already.
    void fold(const QList<ChipInfo>& chips, int from, int to, const QByteArray& needle = QByteArray());

    int first() const { return m_first; }
    int end() const { return m_first + int(m_runOf[0].size()); }

    /// Sets verdicts[k - from] for each chip k in [@p from, @p to), which
    /// lies in this window.
    void scan(const QByteArray& needle, int from, int to, char* verdicts) const;

    static constexpr int RunKinds = 2;
    /// The runs the last verdict() calls decided, so that neighbours ask once.
    struct LastRuns
    {
        const FoldedWindow* window = nullptr;
        int run[RunKinds] = {-1, -1};
        bool found[RunKinds] = {false, false};
    };
    /// The verdict on chip @p k of this window.
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

/// Verdicts on every chip of @p chips (verdicts[k] for chip k) for the folded
/// @p needle, made window after window and kept no longer.
void findFolded(const QList<ChipInfo>& chips, const QByteArray& needle, char* verdicts);

/**
 * The folded text of a whole list, kept for searching it again and again.
 * Its windows are found by position, so a search splits its work however the
 * tuning says at the time, whatever the split was when it was made.
 */
class FoldedChips
{
public:
    explicit FoldedChips(const QList<ChipInfo>& chips);

    /// Verdicts on every chip (verdicts[k] for chip k).
    void find(const QByteArray& needle, char* verdicts) const;
    /// Verdicts on the chips at @p among (verdicts[i] for chip among[i]),
    /// which lie in the list; ascending positions are found quickest.
    void findAmong(const QByteArray& needle, const QVector<int>& among, char* verdicts) const;

private:
    // The first window that reaches beyond position k.
    size_t windowOf(int k) const;

    int m_size = 0;
    std::vector<FoldedWindow> m_windows; // ascending, covering [0, m_size)
};

} // namespace pimpl
} // namespace DEV

#endif // DEV_FOLDEDINDEX_P_H
