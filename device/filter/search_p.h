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

namespace DEV {
namespace pimpl {

using ChipAt = std::function<const ChipInfo&(int)>;
/// Sets the verdicts (foldedindex_p.h) that folded text gives for a folded
/// pattern.
using FoldedFind = std::function<void(const QByteArray& needle, char* verdicts)>;

/// The positions i in [0, @p n), ascending, whose chip chipAt(i) matches
/// @p filter: what @p foldedFind finds where folded text can answer, and the
/// rest as the plain matcher decides.
QVector<int> searchRows(const ChipFilterBySearch& filter, int n, const ChipAt& chipAt, const FoldedFind& foldedFind);

/// The chips of @p chips at @p rows, in that order; @p chips itself, copying
/// no record, when the rows are all of its positions.
QList<ChipInfo> chipsAt(const QList<ChipInfo>& chips, const QVector<int>& rows);

} // namespace pimpl
} // namespace DEV

#endif // DEV_SEARCH_P_H
