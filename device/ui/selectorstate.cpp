// SPDX-License-Identifier: BSD-3-Clause
// The chip the selector keeps: the exact chip preset, the choice kept over
// a header click, and the table's state kept between sessions.
#include "deviceselector.h"

#include "chipinfotablemodel.h"
#include "devicedb.h"
#include "deviceselector_p.h"
#include "ui_deviceselector.h"

#include <QDataStream>
#include <QHeaderView>

namespace DEV {

namespace {

// Tags saved states, so that restoring something else fails cleanly.
constexpr quint32 SelectorStateMagic = 0x44455331;

} // namespace

int pimpl::rowOfChip(ChipInfoTableModel& model, const ChipInfo& chip)
{
    for (int row = 0; row < model.rowCount(); ++row) {
        const ChipInfo shown = model.index2chipInfo(model.index(row, 0));
        if (shown.partNumber == chip.partNumber && shown.matchKey == chip.matchKey && shown.deviceId == chip.deviceId)
            return row;
    }
    return -1;
}

DeviceSelector::DeviceSelector(QWidget* parent)
    : DeviceSelector(DeviceDb::instance(), parent)
{
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
    pimpl::SelectorAddOns& kept = addOns();
    QItemSelectionModel* selection = ui->tableView->selectionModel();
    if ((kept.chosen.partNumber.isEmpty() && kept.chosen.deviceId.isEmpty()) || selection->hasSelection())
        return;
    const int row = pimpl::rowOfChip(*model, kept.chosen);
    if (row < 0) {
        Q_EMIT selectedDeviceChanged(DeviceArg());
        return;
    }
    const QModelIndex index = model->index(row, 0);
    kept.reselecting = true;
    selection->select(index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    makeCurrent(index);
    kept.reselecting = false;
    ui->tableView->scrollTo(index);
}

QByteArray DeviceSelector::saveState() const
{
    QByteArray state;
    QDataStream out(&state, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_5_12);
    out << SelectorStateMagic << ui->tableView->horizontalHeader()->saveState();
    return state;
}

bool DeviceSelector::restoreState(const QByteArray& state)
{
    QDataStream in(state);
    in.setVersion(QDataStream::Qt_5_12);
    quint32 magic = 0;
    QByteArray headerState;
    in >> magic >> headerState;
    QHeaderView* header = ui->tableView->horizontalHeader();
    if (in.status() != QDataStream::Ok || magic != SelectorStateMagic || !header->restoreState(headerState))
        return false;
    // The header shows the restored order but does not sort by itself.
    model->sort(header->sortIndicatorSection(), header->sortIndicatorOrder());
    reselectAfterSort();
    return true;
}

} // namespace DEV
