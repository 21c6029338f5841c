// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_CHIPCOLUMNS_H
#define DEV_CHIPCOLUMNS_H

#include "chipinfo.h"
#include "device_export.h"

#include <QList>
#include <QString>
#include <QVector>

namespace DEV {

/**
 * @brief The sixteen columns in which the chip table shows a chip, in table
 * order.
 *
 * One description of the columns serves everything that lists chips: the
 * table model's headers and sort order, the search groups and the search
 * field's menu, and the example programs. Use the enumerators where a column
 * is meant and plain @c int where a model column number is.
 */
enum class ChipColumn {
    PartNumber,
    Series,
    Device,
    DeviceVersion,
    Package,
    Speed,
    Voltage,
    IO, ///< The first resource column; ChipInfo::resources holds the nine in column order.
    LUT,
    FF,
    ROM16,
    SSRAM,
    BSRAM,
    UserFlash,
    DSP,
    PLL,
};

/// The number of columns of the chip table.
constexpr int ChipColumnCount = 16;

/// The column of ChipInfo::resources entry 0; entry @c i is column @c FirstResourceColumn + @c i.
constexpr int FirstResourceColumn = int(ChipColumn::IO);

/// What a column holds, which decides how its cells compare.
enum class ColumnKind {
    Text,     ///< Text, compared by UTF-16 code units.
    Number,   ///< A whole number, read with QString::toInt().
    Kilobits, ///< A memory size written like "72Kb", compared as its number of kilobits.
};

/// The column's header ("Part Number" ... "User Flash", "DSP", "PLL"); empty outside 0 to 15.
DEVICE_EXPORT QString chipColumnHeader(int column);

/// The kind of values in @p column; Text outside 0 to 15.
DEVICE_EXPORT ColumnKind chipColumnKind(int column);

/**
 * The value of @p chip in @p column as the record stores it: untrimmed for
 * resources, and empty when the record's resource list is too short to
 * reach the column or @p column is outside 0 to 15. The reference stays
 * valid as long as @p chip does.
 */
DEVICE_EXPORT const QString& chipColumnValue(const ChipInfo& chip, int column);

/**
 * @p rows, positions in @p chips, ordered as the chip table orders its rows
 * when sorted by @p column: text columns by UTF-16 code units, case
 * sensitively and without locale; number columns by QString::toInt(); Kb
 * columns the same after every "Kb" is cut out, so "72Kb" counts 72 while
 * "64KB" and "2Mb" count 0; an empty or missing count is 0. The order is
 * stable in both directions: rows with equal cells keep their order in
 * @p rows. Any @p order other than Qt::AscendingOrder is descending, and a
 * column outside 0 to 15 leaves @p rows as they are.
 *
 * Only positions move: no record is copied. Rows already in order come back
 * after one look at each cell.
 */
DEVICE_EXPORT QVector<int> sortChipRows(const QList<ChipInfo>& chips, QVector<int> rows, int column,
                                        Qt::SortOrder order = Qt::AscendingOrder);

/// The number of search groups of ChipFilterBySearch: 0 ("All") and one per column.
constexpr int SearchGroupCount = ChipColumnCount + 1;

/**
 * The column searched by search group @p group, or -1 for group 0 ("All")
 * and for numbers outside 0 to 16. Group 1 is "Series" and group 2 "Part
 * Number", the reverse of the table; the others follow the table.
 */
DEVICE_EXPORT int searchGroupColumn(int group);

/**
 * The name of search group @p group in a menu of groups: "All", then the
 * columns' headers, except that User Flash is written "UserFlash". Empty
 * outside 0 to 16.
 */
DEVICE_EXPORT QString searchGroupName(int group);

} // namespace DEV

#endif // DEV_CHIPCOLUMNS_H
