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

#include "chipinfo.h"

#include <QList>

namespace DEV {
namespace pimpl {

/**
 * Orders @p chips by @p column exactly as ChipInfoTableModel::sort() orders
 * its rows; a column outside 0 to 15 leaves the list as it is. Detaches the
 * list only when something moves.
 */
void sortChips(QList<ChipInfo>& chips, int column, Qt::SortOrder order);

} // namespace pimpl
} // namespace DEV

#endif // DEV_CHIPINFOTABLEMODEL_P_H
