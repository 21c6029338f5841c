// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_SEARCH_P_H
#define DEV_SEARCH_P_H

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Device API. It may change from version to
// version without notice.
//

#include "chipfilter.h"
#include "chipinfo.h"

#include <QByteArray>
#include <QList>
#include <QVector>

#include <functional>
#include <system_error>
#include <thread>
#include <vector>

namespace DEV {
namespace pimpl {

// Lists shorter than this are worked on by the calling thread alone: starting
// a thread costs tens of microseconds, which short work would not win back.
constexpr int ParallelFrom = 16384;

/*
 * Calls work(from, to) for items [0, n): for a long list on a machine with
 * several cores, the first half on this thread and the second at the same
 * time on another; else, or if no thread can be started, both here. The work
 * on the two halves must not depend on each other.
 */
template <typename Work>
void inHalves(int n, Work work)
{
    static const bool severalCores = std::thread::hardware_concurrency() > 1;
    if (n < ParallelFrom || !severalCores) {
        work(0, n);
        return;
    }
    const int half = n / 2;
    std::thread second;
    try {
        second = std::thread(std::ref(work), half, n);
    } catch (const std::system_error&) {
        work(half, n);
    }
    work(0, half);
    if (second.joinable())
        second.join();
}

// Equal texts. Neighbours' shared values lie at one place, which settles it
// at once; the contents decide otherwise.
inline bool sameText(const QString& a, const QString& b)
{
    return a.size() == b.size() && (a.constData() == b.constData() || a == b);
}

using ChipAt = std::function<const ChipInfo&(int)>;

/// Sets verdicts[k] for k in [0, n) to whether chipAt(k) matches @p filter
/// as matchFilter() decides: the definition, which every faster way must
/// agree with.
void decidePlainly(int n, const ChipAt& chipAt, const ChipFilterBySearch& filter, std::vector<char>& verdicts);

/// The pattern of @p filter folded as prepared texts are, or empty when such
/// a text cannot answer the search (see ChipSearch).
QByteArray foldedNeedle(const ChipFilterBySearch& filter);

/// The positions in @p chips of those that hold @p needle (from
/// foldedNeedle()), each chip folded as it is reached.
QVector<int> foldedRows(const QList<ChipInfo>& chips, const ChipFilterBySearch& filter, const QByteArray& needle);

/// The positions k where @p verdicts[k] is set, ascending.
QVector<int> rowsOf(const std::vector<char>& verdicts);

/// The chips of @p chips at @p rows, in that order; @p chips itself, copying
/// no record, when the rows are all of its positions.
QList<ChipInfo> chipsAt(const QList<ChipInfo>& chips, const QVector<int>& rows);

} // namespace pimpl
} // namespace DEV

#endif // DEV_SEARCH_P_H
