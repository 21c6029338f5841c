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

#include "chipfilter.h"
#include "chipinfo.h"
#include "chiprequirements.h"
#include "chipsearch.h"
#include "parallel_p.h"

#include <QVector>

#include <vector>

class QAbstractItemView;
class QAction;
class QComboBox;
class QPushButton;

namespace DEV {

class ChipInfoTableModel;
class Ui_DeviceSelector;

namespace pimpl {

class ComparisonPanel;
class RequirementsRow;

/// One search of the field and its hits. While the user types on, each
/// pattern extends the one before and its hits are among the earlier ones.
struct SearchStep
{
    ChipFilterBySearch search;
    QVector<int> hits;
};

/**
 * DeviceSelector's state beyond the members its header lists: what the
 * table shows (deviceselector.cpp) and what the add-ons keep, each of which
 * lives in a file of its own (selectorrequirements.cpp, selectorstate.cpp,
 * selectorcomparison.cpp, selectorviewaids.cpp).
 */
class DeviceSelectorPrivate
{
public:
    /// Takes the order and the search once they are made.
    void await();
    /// @p positions (in all, ascending) in part-number order.
    QVector<int> inTableOrder(const QVector<int>& positions) const;

    QList<ChipInfo> all;
    ChipSearch search;
    /// Positions in all in part-number order.
    QVector<int> order;
    /// The boxes and minimums the base was made for, and the base itself
    /// (positions in all, ascending); every chip when baseIsAll.
    ChipFilter baseFilter;
    QVector<int> base;
    bool baseIsAll = true;
    bool baseValid = false;
    std::vector<SearchStep> steps;
    Later<QVector<int>> pendingOrder;
    Later<ChipSearch> pendingSearch;

    /// The search field's options button.
    QPushButton* searchOptions = nullptr;
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

/// The row of @p chip (pimpl::sameChip()), or -1. Where one chip stands in
/// several records (other device identifiers), @p chip's own record wins,
/// so that the row shown is the record reported.
int rowOfChip(ChipInfoTableModel& model, const ChipInfo& chip);

/// Moves the series, device and version boxes to @p chip's values.
void moveBoxesTo(const Ui_DeviceSelector& ui, const ChipInfo& chip);

/// Empties @p box and lists @p entries in it.
void refill(QComboBox* box, const QStringList& entries);

/// Has the first arrow key in @p view, while nothing is selected, select
/// the current item rather than move on from it.
void selectFirstOnArrow(QAbstractItemView* view);

} // namespace pimpl
} // namespace DEV

#endif // DEV_DEVICESELECTOR_P_H
