// SPDX-License-Identifier: BSD-3-Clause
// The chip the selector keeps: the exact chip preset, the choice kept over
// a header click, and the table's state kept between sessions.
#include "deviceselector.h"

#include "chipinfo_p.h"
#include "chipinfotablemodel.h"
#include "devicedb.h"
#include "deviceselector_p.h"
#include "ui_deviceselector.h"

#include <QDataStream>
#include <QHeaderView>

namespace DEV {

namespace {

// Tags saved states, so that restoring something else fails cleanly. The columns are kept one by one, not as
// QHeaderView's own state, whose reader trusts the counts in it and allocates whatever a damaged one claims.
constexpr quint32 SelectorStateMagic = 0x44455332;

} // namespace

int pimpl::rowOfChip(ChipInfoTableModel& model, const ChipInfo& chip)
{
    int first = -1;
    for (int row = 0; row < model.rowCount(); ++row) {
        const ChipInfo shown = model.index2chipInfo(model.index(row, 0));
        if (sameChip(shown, chip) && shown.deviceId == chip.deviceId)
            return row;
        if (sameChip(shown, chip) && first < 0)
            first = row;
    }
    return first;
}

void DeviceSelector::setCurrentDevice(const ChipInfo& chip)
{
    if (chip.partNumber.isEmpty())
        return;
    const ChipInfo known = db->find(chip.partNumber, chip.matchKey);
    if (known.partNumber.isEmpty())
        return;
    pimpl::moveBoxesTo(*ui, known);
    const int row = pimpl::rowOfChip(*model, known);
    if (row >= 0)
        showPreset(model->index(row, 0));
}

/*
 * A click on a header sorts the model, and the reset drops the selection
 * while the host still holds the chip as chosen (an OK button stays enabled).
 * Select the same chip again, or, failing that, report that nothing is
 * chosen.
 */
void DeviceSelector::reselectAfterSort()
{
    QItemSelectionModel* selection = ui->tableView->selectionModel();
    if ((d->chosen.partNumber.isEmpty() && d->chosen.deviceId.isEmpty()) || selection->hasSelection())
        return;
    const int row = pimpl::rowOfChip(*model, d->chosen);
    if (row < 0) {
        Q_EMIT selectedDeviceChanged(DeviceArg());
        return;
    }
    const QModelIndex index = model->index(row, 0);
    d->reselecting = true;
    selection->select(index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    makeCurrent(index);
    d->reselecting = false;
    ui->tableView->scrollTo(index);
}

QByteArray DeviceSelector::saveState() const
{
    QByteArray state;
    QDataStream out(&state, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_5_12);
    const QHeaderView* header = ui->tableView->horizontalHeader();
    out << SelectorStateMagic << qint32(header->sortIndicatorSection()) << qint32(header->sortIndicatorOrder());
    for (int column = 0; column < header->count(); ++column)
        out << qint32(header->visualIndex(column)) << qint32(header->sectionSize(column)) << header->isSectionHidden(column);
    return state;
}

bool DeviceSelector::restoreState(const QByteArray& state)
{
    QDataStream in(state);
    in.setVersion(QDataStream::Qt_5_12);
    QHeaderView* header = ui->tableView->horizontalHeader();
    const int columns = header->count();
    quint32 magic = 0;
    qint32 sortColumn = 0, order = 0;
    in >> magic >> sortColumn >> order;
    bool valid = magic == SelectorStateMagic && sortColumn >= -1 && sortColumn < columns
        && (order == Qt::AscendingOrder || order == Qt::DescendingOrder);
    // Everything is read and checked before the table changes: each column once at a position of its own, sizes
    // that the header takes as they are, and a hidden column, which has no size, saved with none.
    QVector<qint32> position(columns), size(columns);
    QVector<quint8> hidden(columns);
    QVector<int> columnAt(columns, -1);
    for (int column = 0; valid && column < columns; ++column) {
        in >> position[column] >> size[column] >> hidden[column];
        valid = position[column] >= 0 && position[column] < columns && columnAt[position[column]] < 0
            && size[column] >= 0 && size[column] <= header->maximumSectionSize()
            && (hidden[column] == 0 || (hidden[column] == 1 && size[column] == 0));
        if (valid)
            columnAt[position[column]] = column;
    }
    if (!valid || in.status() != QDataStream::Ok || !in.atEnd())
        return false;
    for (int at = 0; at < columns; ++at) {
        const int column = columnAt[at];
        header->moveSection(header->visualIndex(column), at);
        // A hidden column keeps the width it had, to show with.
        header->setSectionHidden(column, hidden[column] == 1);
        if (hidden[column] == 0)
            header->resizeSection(column, size[column]);
    }
    header->setSortIndicator(sortColumn, Qt::SortOrder(order));
    // The header shows the restored order but does not sort by itself.
    model->sort(header->sortIndicatorSection(), header->sortIndicatorOrder());
    reselectAfterSort();
    return true;
}

} // namespace DEV
