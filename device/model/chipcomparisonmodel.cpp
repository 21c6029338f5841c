// SPDX-License-Identifier: BSD-3-Clause
#include "chipcomparisonmodel.h"

#include "chipcolumns_p.h"

#include <QFont>

namespace DEV {

namespace {

constexpr int RowCount = ChipComparisonModel::DeviceIdRow + 1;

// As the chip table shows the cell: an empty or missing count reads "0",
// so a chip with an empty count and one with "0" do not differ.
QString cellText(const ChipInfo& chip, int row)
{
    return row == ChipComparisonModel::DeviceIdRow ? chip.deviceId : pimpl::chipCellText(chip, row);
}

// Bit r set: row r differs.
quint32 differences(const QList<ChipInfo>& chips)
{
    quint32 rows = 0;
    for (int row = 0; row < RowCount; ++row) {
        for (const ChipInfo& chip : chips) {
            if (cellText(chip, row) != cellText(chips.first(), row))
                rows |= 1u << row;
        }
    }
    return rows;
}

} // namespace

class pimpl::ChipComparisonModelPrivate
{
public:
    QList<ChipInfo> chips;
    quint32 differs = 0;

    // Takes in the new chips' differences; returns the rows that turned over.
    quint32 refresh()
    {
        const quint32 before = differs;
        differs = differences(chips);
        return before ^ differs;
    }
};

ChipComparisonModel::ChipComparisonModel(QObject* parent)
    : QAbstractTableModel(parent), d(new pimpl::ChipComparisonModelPrivate)
{
}

ChipComparisonModel::~ChipComparisonModel() = default;

void ChipComparisonModel::setChips(const QList<ChipInfo>& chips)
{
    beginResetModel();
    d->chips.clear();
    for (const ChipInfo& chip : chips) {
        if (!chip.partNumber.isEmpty() && columnOf(chip.partNumber) < 0)
            d->chips.append(chip);
    }
    d->refresh();
    endResetModel();
}

QList<ChipInfo> ChipComparisonModel::chips() const
{
    return d->chips;
}

int ChipComparisonModel::columnOf(const QString& partNumber) const
{
    for (int column = 0; column < d->chips.size(); ++column) {
        if (d->chips.at(column).partNumber == partNumber)
            return column;
    }
    return -1;
}

bool ChipComparisonModel::addChip(const ChipInfo& chip)
{
    if (chip.partNumber.isEmpty() || columnOf(chip.partNumber) >= 0)
        return false;
    const int column = d->chips.size();
    beginInsertColumns(QModelIndex(), column, column);
    d->chips.append(chip);
    const quint32 turned = d->refresh();
    endInsertColumns();
    announce(turned, column);
    return true;
}

bool ChipComparisonModel::removeChip(const QString& partNumber)
{
    const int column = columnOf(partNumber);
    return column >= 0 && removeColumns(column, 1);
}

bool ChipComparisonModel::removeColumns(int column, int count, const QModelIndex& parent)
{
    if (parent.isValid() || column < 0 || count < 1 || column + count > d->chips.size())
        return false;
    beginRemoveColumns(QModelIndex(), column, column + count - 1);
    d->chips.erase(d->chips.begin() + column, d->chips.begin() + column + count);
    const quint32 turned = d->refresh();
    endRemoveColumns();
    announce(turned, d->chips.size());
    return true;
}

void ChipComparisonModel::clear()
{
    setChips({});
}

// Views learn the new marking of the columns that were there before and
// stay; a column just inserted is read afresh anyway.
void ChipComparisonModel::announce(quint32 rows, int columns)
{
    for (int row = 0; columns > 0 && row < RowCount; ++row) {
        if (rows & (1u << row))
            Q_EMIT dataChanged(index(row, 0), index(row, columns - 1), {DiffersRole, Qt::FontRole});
    }
}

bool ChipComparisonModel::rowDiffers(int row) const
{
    return row >= 0 && row < RowCount && (d->differs & (1u << row));
}

int ChipComparisonModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : RowCount;
}

int ChipComparisonModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : d->chips.size();
}

QVariant ChipComparisonModel::data(const QModelIndex& index, int role) const
{
    const int row = index.row();
    const int column = index.column();
    if (!index.isValid() || row >= RowCount || column >= d->chips.size())
        return QVariant();
    switch (role) {
    case Qt::DisplayRole:
        return cellText(d->chips.at(column), row);
    case Qt::TextAlignmentRole:
        return pimpl::chipColumnAlignment(row);
    case DiffersRole:
        return rowDiffers(row);
    case Qt::FontRole:
        if (rowDiffers(row)) {
            QFont bold;
            bold.setBold(true);
            return bold;
        }
        return QVariant();
    default:
        return QVariant();
    }
}

QVariant ChipComparisonModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    // Bold is lost on assistive tools; what they read of a row says it as well.
    if (orientation == Qt::Vertical && role == Qt::AccessibleTextRole && rowDiffers(section))
        return QString(headerData(section, orientation).toString() + QStringLiteral(" (differs)"));
    if (role != Qt::DisplayRole || section < 0)
        return QVariant();
    if (orientation == Qt::Horizontal)
        return section < d->chips.size() ? d->chips.at(section).partNumber : QVariant();
    if (section == DeviceIdRow)
        return QStringLiteral("Device ID");
    return section < DeviceIdRow ? chipColumnHeader(section) : QVariant();
}

} // namespace DEV
