// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_BOARDTABLEMODEL_H
#define DEV_BOARDTABLEMODEL_H

#include "boardcatalogue.h"
#include "device_export.h"

#include <QAbstractTableModel>

namespace DEV {

namespace pimpl {
class BoardTableModelPrivate;
}

/**
 * @brief Read-only table of boards: Identifier, Name, Maker, Revision and Part Number (the board's), then
 * the chip's LUT, FF, BSRAM, DSP and IO as the chip table shows them (an empty count as "0").
 *
 * A board whose chip the database does not know shows no counts, is neither enabled nor selectable, and
 * says why in its tool tip. sort() orders as the chip table does (texts by UTF-16 code units, counts as
 * numbers, stable both ways); every change is a model reset.
 */
class DEVICE_EXPORT BoardTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    /// The columns, in table order.
    enum Column { Identifier, Name, Maker, Revision, PartNumber, LUT, FF, BSRAM, DSP, IO, ColumnCount };

    /// An empty model owned by @p parent.
    explicit BoardTableModel(QObject* parent = nullptr);
    ~BoardTableModel() override;

    /// Shows @p boards in their order.
    void setBoards(const QList<Board>& boards);
    /// The board in row @p row, or an empty record.
    Board board(int row) const;
    /// The row of the board with identifier @p id, or -1.
    int rowOf(const QString& id) const;

    ///@{
    /// The model's interface, as the class describes it; a valid parent has no rows or columns.
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override { return parent.isValid() ? 0 : ColumnCount; }
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;
    ///@}

private:
    std::unique_ptr<pimpl::BoardTableModelPrivate> const d;
};

} // namespace DEV

#endif // DEV_BOARDTABLEMODEL_H
