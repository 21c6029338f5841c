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
#include "device_export.h"

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
DEVICE_EXPORT QByteArray foldedPattern(QStringView pattern);

/// Verdicts on every chip of @p chips (verdicts[k] for chip k) for the folded
/// @p needle, made window after window and kept no longer.
DEVICE_EXPORT void findFolded(const QList<ChipInfo>& chips, const QByteArray& needle, char* verdicts);

class FoldedWindow;

/**
 * The folded text of a whole list, kept for searching it again and again.
 * Its windows are found by position, so a search splits its work however the
 * tuning says at the time, whatever the split was when it was made.
 */
class DEVICE_EXPORT FoldedChips
{
public:
    explicit FoldedChips(const QList<ChipInfo>& chips);
    ~FoldedChips();
    FoldedChips(const FoldedChips&) = delete;
    FoldedChips& operator=(const FoldedChips&) = delete;

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
