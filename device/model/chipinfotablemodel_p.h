// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_CHIPINFOTABLEMODEL_P_H
#define DEV_CHIPINFOTABLEMODEL_P_H

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Device API. It may change from version to
// version without notice.
//

#include "chipinfotablemodel.h"

namespace DEV {
namespace pimpl {

/*
 * The rows are positions in a list that may be shared with the caller (the
 * database's, say): sorting and filtering move integers, never records.
 * Without rows of its own the model shows the whole list in its order.
 */
class ChipInfoTableModelPrivate
{
public:
    /**
     * Shows @p rows of @p list in @p model, as setChipInfoList() does, for a
     * caller that made them in the ascending order of column @p orderedBy: a
     * sort() by it, ascending, then moves nothing without reading a cell.
     * Nothing checks the order (a check reads every row's cell, which the
     * selector cannot afford on each key), so the caller answers for it; its
     * tests compare with the plain sort.
     */
    DEVICE_EXPORT static void setOrderedRows(ChipInfoTableModel& model, const QList<ChipInfo>& list,
                                             const QVector<int>& rows, int orderedBy);

    QList<ChipInfo> chips;
    QVector<int> rows;
    bool wholeList = true;
    int orderedBy = -1; // the column whose ascending order the rows are known to follow
    mutable QList<ChipInfo> gathered;
    mutable bool gatheredValid = false;

    int count() const { return wholeList ? int(chips.size()) : int(rows.size()); }
    const ChipInfo& at(int row) const { return chips.at(wholeList ? row : rows.at(row)); }
};

} // namespace pimpl
} // namespace DEV

#endif // DEV_CHIPINFOTABLEMODEL_P_H
