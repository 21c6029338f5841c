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

/// The pattern of @p filter as folded text (foldedindex_p.h), or empty when
/// folded text cannot answer the search: only a pattern anywhere in any
/// value of the "All" group, either letter case, is a matter of the text
/// alone, and neither the empty pattern nor "0", which find empty values.
QByteArray foldedNeedle(const ChipFilterBySearch& filter);

using ChipAt = std::function<const ChipInfo&(int)>;

/// Decides each verdicts[i] that is Undecided (foldedindex_p.h) as
/// matchFilter() decides chipAt(i) with @p filter.
void decideUndecided(const ChipFilterBySearch& filter, const ChipAt& chipAt, std::vector<char>& verdicts);

/// The positions i where verdicts[i] is Found, ascending, or the positions
/// among[i] when @p among is given.
QVector<int> rowsOf(const std::vector<char>& verdicts, const QVector<int>* among = nullptr);

/// The chips of @p chips at @p rows, in that order; @p chips itself, copying
/// no record, when the rows are all of its positions.
QList<ChipInfo> chipsAt(const QList<ChipInfo>& chips, const QVector<int>& rows);

} // namespace pimpl
} // namespace DEV

#endif // DEV_SEARCH_P_H
