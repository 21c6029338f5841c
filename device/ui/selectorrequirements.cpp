// SPDX-License-Identifier: BSD-3-Clause
// The selector's row of resource minimums, as the host shows and fills it.
#include "deviceselector.h"

#include "chipfilter.h"
#include "devicedb.h"
#include "deviceselector_p.h"
#include "requirementsrow_p.h"
#include "searchlineedit.h"
#include "ui_deviceselector.h"

#include <QPushButton>
#include <QSet>

#include <algorithm>

namespace DEV {

QList<ChipInfo> DeviceSelector::chipsOfCascade() const
{
    return DEV::filterChips(db->allChipInfo(), addOns().applied);
}

void DeviceSelector::setUpRequirements()
{
    pimpl::RequirementsRow* row = addOns().requirementsRow = new pimpl::RequirementsRow(this);
    row->hide();
    ui->verticalLayout->insertWidget(1, row);
    connect(row, &pimpl::RequirementsRow::changed, this, [this] { applyRequirements(); });
    // On screen the row lies between the search row and the table.
    QWidget* previous = searchEdit->findChild<QPushButton*>();
    for (QWidget* field : row->fields()) {
        setTabOrder(previous ? previous : searchEdit, field);
        previous = field;
    }
    setTabOrder(previous, ui->tableView);
}

void DeviceSelector::setRequirementsVisible(bool visible)
{
    addOns().requirementsRow->setVisible(visible);
    applyRequirements();
}

bool DeviceSelector::requirementsVisible() const
{
    return !addOns().requirementsRow->isHidden();
}

void DeviceSelector::setRequirements(const ChipRequirements& requirements)
{
    addOns().requirementsRow->setRequirements(requirements);
    applyRequirements();
}

ChipRequirements DeviceSelector::requirements() const
{
    return addOns().applied;
}

void DeviceSelector::applyRequirements()
{
    const ChipRequirements wanted = requirementsVisible() ? addOns().requirementsRow->requirements() : ChipRequirements();
    if (wanted.minimum == addOns().applied.minimum)
        return;
    setApplied(wanted);

    // The boxes list what the minimums leave. Each keeps its choice while
    // that is still listed and else falls back to "Any", so that clearing
    // the minimums brings back the view from before.
    QComboBox* const boxes[] = {ui->cbSeries, ui->cbDevice, ui->cbDeviceVersion, ui->cbPackage, ui->cbCondition};
    QStringList chosen;
    for (QComboBox* box : boxes)
        chosen << box->currentText();
    QSet<QString> distinct;
    for (const ChipInfo& chip : chipsOfCascade())
        distinct.insert(chip.series);
    QStringList series(distinct.cbegin(), distinct.cend());
    series.sort(Qt::CaseSensitive);
    {
        const QSignalBlocker quiet(ui->cbSeries);
        ui->cbSeries->clear();
        ui->cbSeries->insertItems(0, QStringList(QStringLiteral("Any")) + series);
        ui->cbSeries->setCurrentIndex(std::max(0, ui->cbSeries->findText(chosen.at(0))));
    }
    onSeriesChanged();
    for (int i = 1; i < 5; ++i)
        boxes[i]->setCurrentIndex(std::max(0, boxes[i]->findText(chosen.at(i))));
}

} // namespace DEV
