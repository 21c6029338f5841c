// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_CHIPCOLUMNS_P_H
#define DEV_CHIPCOLUMNS_P_H

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Device API. It may change from version to
// version without notice.
//

#include "chipcolumns.h"

namespace DEV {
namespace pimpl {

inline bool isChipColumn(int column)
{
    return column >= 0 && column < ChipColumnCount;
}

/// The text the chip table shows for @p chip in @p column: the value, except that an empty or missing count reads
/// "0"; a null string outside 0 to 15.
QString chipCellText(const ChipInfo& chip, int column);

/// Qt::TextAlignmentRole of a cell of @p column: text left, counts right, both centred vertically.
uint chipColumnAlignment(int column);

/**
 * The definition of sortChipRows(), which the fast one must match at every
 * tuning: a stable sort of @p rows by the cells of @p column, text by UTF-16
 * units, numbers by QString::toInt(), Kb columns by the number left after
 * every "Kb" is cut out.
 */
DEVICE_EXPORT QVector<int> plainSortedRows(const QList<ChipInfo>& chips, QVector<int> rows, int column,
                                           Qt::SortOrder order);

} // namespace pimpl
} // namespace DEV

#endif // DEV_CHIPCOLUMNS_P_H
