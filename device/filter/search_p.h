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
#include <vector>

namespace DEV {
namespace pimpl {

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
