// SPDX-License-Identifier: BSD-3-Clause
#include "chipinfotablemodel.h"

#include "chipinfotablemodel_p.h"

#include "chipcolumns_p.h"

namespace DEV {

ChipInfoTableModel::ChipInfoTableModel(QObject* parent)
    : QAbstractTableModel(parent)
    , d(new pimpl::ChipInfoTableModelPrivate)
{
}

ChipInfoTableModel::~ChipInfoTableModel() = default;

void ChipInfoTableModel::setChipInfoList(const QList<ChipInfo>& list)
{
    beginResetModel();
    d->chips = list;
    d->rows.clear();
    d->wholeList = true;
    d->orderedBy = -1;
    d->gatheredValid = false;
    endResetModel();
}

void ChipInfoTableModel::setChipInfoList(const QList<ChipInfo>& list, const QVector<int>& rows)
{
    pimpl::ChipInfoTableModelPrivate::setOrderedRows(*this, list, rows, -1);
}

void pimpl::ChipInfoTableModelPrivate::setOrderedRows(ChipInfoTableModel& model, const QList<ChipInfo>& list,
                                                      const QVector<int>& rows, int orderedBy)
{
    model.beginResetModel();
    ChipInfoTableModelPrivate& d = *model.d;
    d.chips = list;
    d.rows = rows;
    d.wholeList = false;
    d.orderedBy = orderedBy;
    d.gatheredValid = false;
    model.endResetModel();
}

const QList<ChipInfo>& ChipInfoTableModel::chipInfoList() const
{
    if (d->wholeList)
        return d->chips;
    if (!d->gatheredValid) {
        d->gathered.clear();
        d->gathered.reserve(d->rows.size());
        for (int row : d->rows)
            d->gathered.append(d->chips.at(row));
        d->gatheredValid = true;
    }
    return d->gathered;
}

ChipInfo ChipInfoTableModel::index2chipInfo(const QModelIndex& index)
{
    const int row = index.row();
    return row >= 0 && row < d->count() ? d->at(row) : ChipInfo();
}

QModelIndex ChipInfoTableModel::info2index(ChipInfo info)
{
    for (int row = 0; row < d->count(); ++row) {
        if (d->at(row).deviceId == info.deviceId)
            return index(row, 0);
    }
    return QModelIndex();
}

QString ChipInfoTableModel::columnOfChipInfo(const ChipInfo& info, int column) const
{
    return pimpl::chipCellText(info, column);
}

int ChipInfoTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : d->count();
}

int ChipInfoTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ChipColumnCount;
}

QVariant ChipInfoTableModel::data(const QModelIndex& index, int role) const
{
    const int column = index.column();
    switch (role) {
    case Qt::TextAlignmentRole:
        return pimpl::isChipColumn(column) ? QVariant(pimpl::chipColumnAlignment(column)) : QVariant();
    case Qt::DisplayRole: {
        const int row = index.row();
        if (row < 0 || row >= d->count())
            return QVariant();
        return columnOfChipInfo(d->at(row), column);
    }
    default:
        return QVariant();
    }
}

QVariant ChipInfoTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || !pimpl::isChipColumn(section))
        return QVariant();
    return chipColumnHeader(section);
}

Qt::ItemFlags ChipInfoTableModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled;
}

void ChipInfoTableModel::sort(int column, Qt::SortOrder order)
{
    beginResetModel();
    const bool known = order == Qt::AscendingOrder && column == d->orderedBy;
    if (!known && pimpl::isChipColumn(column) && d->count() > 1) {
        if (d->wholeList) {
            d->rows.resize(d->chips.size());
            for (int i = 0; i < d->rows.size(); ++i)
                d->rows[i] = i;
        }
        const QVector<int> sorted = sortChipRows(d->chips, d->rows, column, order);
        // A whole list already in order stays whole: chipInfoList() hands it out as it is.
        if (d->wholeList && sorted == d->rows) {
            d->rows.clear();
        } else {
            d->rows = sorted;
            d->wholeList = false;
            d->gatheredValid = false;
        }
        d->orderedBy = order == Qt::AscendingOrder ? column : -1;
    }
    endResetModel();
}

} // namespace DEV
