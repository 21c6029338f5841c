// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_CHIPINFOTABLEMODEL_H
#define DEV_CHIPINFOTABLEMODEL_H

#include "chipinfo.h"
#include "device_export.h"

#include <QAbstractTableModel>
#include <QList>
#include <QModelIndex>
#include <QString>
#include <QVariant>
#include <QVector>

#include <memory>

namespace DEV {

namespace pimpl {
class ChipInfoTableModelPrivate;
}

/**
 * @brief Read-only table of chips: one row per ChipInfo, sixteen fixed columns.
 *
 * | Column | Header         | Cell text          | Sorted as |
 * |--------|----------------|--------------------|-----------|
 * | 0      | Part Number    | partNumber         | text      |
 * | 1      | Series         | series             | text      |
 * | 2      | Device         | device             | text      |
 * | 3      | Device Version | deviceVersion      | text      |
 * | 4      | Package        | package            | text      |
 * | 5      | Speed          | speed              | text      |
 * | 6      | Voltage        | voltage            | text      |
 * | 7      | IO             | resources[0]       | number    |
 * | 8      | LUT            | resources[1]       | number    |
 * | 9      | FF             | resources[2]       | number    |
 * | 10     | ROM16          | resources[3]       | Kb size   |
 * | 11     | SSRAM          | resources[4]       | Kb size   |
 * | 12     | BSRAM          | resources[5]       | Kb size   |
 * | 13     | User Flash     | resources[6]       | Kb size   |
 * | 14     | DSP            | resources[7]       | number    |
 * | 15     | PLL            | resources[8]       | number    |
 *
 * Text columns are left aligned, resource columns right aligned. A resource
 * count that is empty, or missing because the record carries fewer than nine
 * entries, reads as "0" on screen and when sorting. The members @c deviceId,
 * @c matchKey and @c auxiliary are not shown.
 *
 * Every change of the list, a new one or a new order, is announced as a full
 * model reset, so attached views drop their selection and current index. Use
 * info2index() to find a chip's row again afterwards.
 *
 * @code
 * auto* model = new DEV::ChipInfoTableModel(this);
 * model->setChipInfoList(db->allChipInfo());
 * tableView->setModel(model);
 * tableView->setSortingEnabled(true);
 * @endcode
 */
class DEVICE_EXPORT ChipInfoTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    /// An empty model (no rows) owned by @p parent.
    explicit ChipInfoTableModel(QObject* parent = nullptr);
    ~ChipInfoTableModel() override;

    /**
     * Shows @p list, in its order. The model keeps an implicitly shared copy,
     * so this is cheap, and the caller's list is never changed (not even by a
     * later sort()). Always announced as one model reset, even when @p list
     * is the list already shown.
     */
    void setChipInfoList(const QList<ChipInfo>& list);

    /**
     * Shows the chips of @p list at the positions @p rows, in that order,
     * without copying a record: a search's result (filterRows()) over a list
     * held elsewhere costs one integer a row. Announced as one model reset.
     */
    void setChipInfoList(const QList<ChipInfo>& list, const QVector<int>& rows);

    /// The records in row order: the list last set, as sort() has left it.
    /// After a list was set with rows, the records are gathered on first call.
    const QList<ChipInfo>& chipInfoList() const;

    /**
     * The record in row @p index.row(). Only the row is looked at, not the
     * column, the model or the validity of @p index. Returns an empty record
     * when the row is outside the list.
     */
    ChipInfo index2chipInfo(const QModelIndex& index);

    /**
     * The index (column 0) of the first row whose record has the device
     * identifier of @p info (exact, case-sensitive). Nothing else is compared,
     * so of several part numbers of one device the topmost wins. Returns an
     * invalid index when no row matches.
     */
    QModelIndex info2index(ChipInfo info);

    /**
     * The text that @p column shows for @p info, as in the class table. An
     * empty or missing resource count gives "0"; an empty text member stays
     * empty. A column outside 0 to 15 gives a null string. sort() compares
     * exactly these texts.
     */
    QString columnOfChipInfo(const ChipInfo& info, int column) const;

    /// The number of chips; 0 for a valid @p parent (the table is flat).
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    /// Always 16; 0 for a valid @p parent.
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;

    /**
     * Qt::DisplayRole: the cell text (see columnOfChipInfo()); invalid for a
     * row outside the list. Qt::TextAlignmentRole: AlignLeft | AlignVCenter
     * for columns 0 to 6, AlignRight | AlignVCenter for columns 7 to 15.
     * Every other role, and every other column: an invalid QVariant.
     */
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    /**
     * The fixed English column titles for Qt::Horizontal and Qt::DisplayRole.
     * Invalid for every other section, orientation or role, so vertical
     * header sections carry no text.
     */
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    /// Selectable and enabled for a valid @p index, never editable.
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    /**
     * Reorders the rows by @p column, so that a view with sorting enabled
     * sorts on a header click. Text columns compare UTF-16 code units, case
     * sensitively, without locale (so "10" comes before "9" and "Z" before
     * "a"). Number columns compare QString::toInt() values; texts that are
     * not whole numbers count as 0. Kb columns compare the same way after
     * every "Kb" (case-sensitive) is removed, so "72Kb" is 72, while "64KB"
     * and "2Mb" are 0. Rows with equal keys keep their order (the sort is
     * stable, in both directions): after a rebuild, which shows part-number
     * order, ties of any column come in part-number order.
     *
     * Any @p order other than Qt::AscendingOrder sorts descending. A column
     * outside 0 to 15 leaves the order alone. Either way the call is
     * announced as one model reset.
     */
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

private:
    friend class pimpl::ChipInfoTableModelPrivate;
    std::unique_ptr<pimpl::ChipInfoTableModelPrivate> const d;
};

} // namespace DEV

#endif // DEV_CHIPINFOTABLEMODEL_H
