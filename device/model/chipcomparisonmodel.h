// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_CHIPCOMPARISONMODEL_H
#define DEV_CHIPCOMPARISONMODEL_H

#include "chipcolumns.h"
#include "chipinfo.h"
#include "device_export.h"

#include <QAbstractTableModel>
#include <QList>
#include <QString>
#include <QVariant>

#include <memory>

namespace DEV {

namespace pimpl {
class ChipComparisonModelPrivate;
}

/**
 * @brief A few chips side by side: one column per chip, one row per
 * attribute, the rows where the chips differ marked.
 *
 * The chip table turned on its side. Rows 0 to 15 are the chip table's
 * columns in its order, with its header texts as vertical headers (so
 * @c int(ChipColumn::LUT) is the LUT row), and the cells read as the table
 * shows them: an empty or missing resource count as "0". Row 16,
 * DeviceIdRow, is the device identifier, headed "Device ID". The headers are
 * fixed English, like the chip table's. Each column is headed by its chip's
 * part number; a part number is compared once at most.
 *
 * A row differs when its cells do not all hold the same text; with fewer
 * than two chips no row does. The cells of a differing row answer
 * DiffersRole with @c true and Qt::FontRole with a bold font (others give no
 * font, so the view's own applies). Text rows are left aligned, resource
 * rows right aligned.
 *
 * A new list (setChips(), clear()) is announced as a model reset; addChip()
 * and removeChip() as one column inserted or removed, followed by
 * dataChanged() (roles DiffersRole and Qt::FontRole) for each row whose
 * marking the change turned over, over the columns that were there before
 * and stay.
 *
 * @code
 * auto* comparison = new DEV::ChipComparisonModel(this);
 * for (const QString& pn : {QStringLiteral("ZR9K31A-LVQN88C6/I5"), QStringLiteral("ZR9K31AA-LVBG484C6")})
 *     comparison->addChip(db->findByPN(pn).value(0));
 * tableView->setModel(comparison);
 * const bool sameLuts = !comparison->rowDiffers(int(DEV::ChipColumn::LUT));
 * @endcode
 */
class DEVICE_EXPORT ChipComparisonModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    /// The model's own item data role.
    enum Role {
        /// @c bool: the cell's row differs between the chips (rowDiffers()).
        DiffersRole = Qt::UserRole
    };

    /// The row of the device identifier, after the rows of the chip table's columns.
    static constexpr int DeviceIdRow = ChipColumnCount;

    /// No chips; owned by @p parent.
    explicit ChipComparisonModel(QObject* parent = nullptr);
    ~ChipComparisonModel() override;

    /**
     * Compares @p chips, in their order. A chip whose part number is empty
     * (the absence of a chip) or already among the earlier ones is left out.
     * Announced as a model reset.
     */
    void setChips(const QList<ChipInfo>& chips);

    /// The chips compared, in column order.
    QList<ChipInfo> chips() const;

    /// The column of the chip with part number @p partNumber, or -1.
    int columnOf(const QString& partNumber) const;

    /**
     * Adds @p chip as the last column. Returns false, and changes nothing,
     * when its part number is empty or already compared.
     */
    bool addChip(const ChipInfo& chip);

    /// Removes the chip with part number @p partNumber; false when there is none.
    bool removeChip(const QString& partNumber);

    /// Removes every chip (a model reset).
    void clear();

    /// True when the cells of @p row do not all hold the same text; false outside 0 to 16.
    bool rowDiffers(int row) const;

    /// 17 (the sixteen table columns and the device identifier); 0 for a valid @p parent.
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    /// The number of chips; 0 for a valid @p parent.
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;

    /**
     * Qt::DisplayRole: the cell text. Qt::TextAlignmentRole: AlignLeft |
     * AlignVCenter for text rows and the device identifier, AlignRight |
     * AlignVCenter for resource rows. DiffersRole: rowDiffers(). Qt::FontRole:
     * a bold font where the row differs. Anything else, and any index
     * outside the table: an invalid QVariant.
     */
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    /**
     * Qt::DisplayRole: the chip's part number for a horizontal section, the
     * attribute's name for a vertical one. Qt::AccessibleTextRole, for the
     * vertical section of a row that differs: its name and " (differs)",
     * which assistive tools read where the view shows bold.
     */
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    /**
     * Removes the chips of columns @p column to @p column + @p count - 1,
     * announced as removeChip() does. Returns false, changing nothing, for
     * a valid @p parent or a range not wholly in the table.
     */
    bool removeColumns(int column, int count, const QModelIndex& parent = QModelIndex()) override;

private:
    std::unique_ptr<pimpl::ChipComparisonModelPrivate> const d;

    void announce(quint32 rows, int columns);
};

} // namespace DEV

#endif // DEV_CHIPCOMPARISONMODEL_H
