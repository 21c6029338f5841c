// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_DEVICESELECTOR_P_H
#define DEV_DEVICESELECTOR_P_H

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Device API. It may change from version to
// version without notice.
//

#include "chipinfo.h"
#include "chiprequirements.h"

class QAction;

namespace DEV {

class ChipInfoTableModel;
class Ui_DeviceSelector;

namespace pimpl {

class ComparisonPanel;
class RequirementsRow;

/**
 * What the selector's add-ons (requirements, kept choice, comparison) keep:
 * the base of DeviceSelector::Private, reached from their own files through
 * DeviceSelector::addOns(). The search's state stays with the search.
 */
struct SelectorAddOns
{
    /// The last chip reported; empty after the choice was voided.
    ChipInfo chosen;
    /// Set while the selection a sort dropped is put back: the choice is unchanged, so nobody is told.
    bool reselecting = false;
    /// The row of resource minimums, hidden unless the host shows it.
    RequirementsRow* requirementsRow = nullptr;
    /// The minimums the table and the boxes apply now.
    ChipRequirements applied;
    /// The comparison panel, hidden unless the host shows it.
    ComparisonPanel* comparison = nullptr;
    /// The table's context-menu entries on the chosen chip, after a separator;
    /// in the menu while the comparison panel is shown.
    QAction* separator = nullptr;
    QAction* samePackage = nullptr;
    QAction* addToComparison = nullptr;
    QAction* removeFromComparison = nullptr;
};

/// The row of @p chip (pimpl::sameChip()), or -1. One device identifier
/// covers several part numbers, so the identifier does not tell rows apart.
int rowOfChip(ChipInfoTableModel& model, const ChipInfo& chip);

/// Moves the series, device and version boxes to @p chip's values.
void moveBoxesTo(const Ui_DeviceSelector& ui, const ChipInfo& chip);

} // namespace pimpl
} // namespace DEV

#endif // DEV_DEVICESELECTOR_P_H
