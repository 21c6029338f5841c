// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_DEVICESELECTOR_H
#define DEV_DEVICESELECTOR_H

#include "chipinfo.h"
#include "device_export.h"

#include <QModelIndex>
#include <QWidget>

#include <memory>

namespace DEV {

struct Board;
class BoardCatalogue;
class ChipInfoTableModel;
struct ChipRequirements;
class DeviceDb;
class SearchLineEdit;
class Ui_DeviceSelector;
namespace pimpl {
class DeviceSelectorPrivate;
}

/**
 * @brief A widget for picking one chip of a DeviceDb.
 *
 * Five combo boxes narrow the database by series, device, device version,
 * package and speed grade; each starts at "Any", which leaves its attribute
 * open. Choosing a series refills the other four with the values of that
 * series; choosing a device refills the device versions. A search field with
 * an options menu narrows the result further by free text, and a sortable
 * table lists the chips that pass, with the number of search hits beside the
 * field.
 *
 * Every rebuild of the table reports an empty DeviceArg through
 * selectedDeviceChanged(), since no row is selected any more; clicking a row
 * reports that row's chip.
 *
 * @code
 * auto* selector = new DEV::DeviceSelector(DEV::DeviceDb::instance(), this);
 * connect(selector, &DEV::DeviceSelector::selectedDeviceChanged, this,
 *         [](const DEV::DeviceArg& chip) { qDebug() << chip.partNumber; });
 * selector->setCurrentDevice(project.deviceId());
 * @endcode
 *
 * The widget runs in the GUI thread. The database is not owned and must
 * outlive the widget. A box fits its widest entry, except one of a thousand
 * entries or more (the devices of a very large catalogue): that one is as
 * wide as its longest entry's number of characters, which costs no
 * measuring of every entry when the widget is first shown.
 */
class DEVICE_EXPORT DeviceSelector : public QWidget
{
    Q_OBJECT

public:
    /**
     * Builds the widget over @p db (not owned, must not be null) and fills
     * the table with every chip of the database.
     */
    explicit DeviceSelector(DeviceDb* db, QWidget* parent = nullptr);
    /**
     * Builds the widget over the process-wide database, DeviceDb::instance(),
     * as forms made in Qt Designer do (uic passes only the parent). Create
     * the QApplication first.
     */
    explicit DeviceSelector(QWidget* parent);
    ~DeviceSelector() override;

    /// The chip of the selected row, or an empty record when no row is selected.
    ChipInfo selectedDevice() const;

    /**
     * Shows and selects the chip with the device identifier @p deviceId: the
     * series, device and device version combo boxes move to the chip's
     * values, its row is selected (which reports the chip through
     * selectedDeviceChanged()) and, once the event loop runs, scrolled to
     * the middle of the table. An empty or unknown identifier changes
     * nothing. Old "zr9k31-NNN" identifiers are understood.
     */
    void setCurrentDevice(const QString& deviceId);

    /**
     * Shows and selects exactly @p chip, found in the database by its part
     * number and match key: one device identifier covers several part numbers
     * (voltages, speed grades), so this is the preset that reopens a
     * project's own chip. The combo boxes move as for a device identifier; a
     * chip the database does not know changes nothing.
     */
    void setCurrentDevice(const ChipInfo& chip);

    /**
     * Shows or hides the row of resource minimums ("at least 20000 LUT,
     * 500Kb BSRAM") between the combo boxes and the table. It is hidden by
     * default, and while it is hidden the widget works as if it did not
     * exist. While it is shown, the table, the match count and the lists of
     * the combo boxes hold only chips that meet the minimums typed into it;
     * a field that does not hold a valid count is marked and ignored.
     */
    void setRequirementsVisible(bool visible);

    /// Whether the row of resource minimums is shown.
    bool requirementsVisible() const;

    /**
     * Fills the row of resource minimums with @p requirements; they apply
     * while the row is shown.
     */
    void setRequirements(const ChipRequirements& requirements);

    /// The minimums that apply: those of the row when it is shown, else none.
    ChipRequirements requirements() const;

    /**
     * Shows or hides the comparison panel below the table: the compared
     * chips side by side, one column each, the rows where they differ in
     * bold (a ChipComparisonModel). It is hidden by default. A double-click
     * on a column of the panel, Enter on it or its "Select in table" button
     * selects that chip in the table as setCurrentDevice(const ChipInfo&)
     * does (a search or a box that hides the chip leaves it unselected).
     *
     * While the panel is shown, the table's context menu offers, after the
     * copy actions, for the chosen chip:
     * - "Show chips in the same package": the series and package boxes move
     *   to the chip's (the other boxes to "Any"), the search is cleared and
     *   the chip is selected again. The series rebuilds the table once (and
     *   resets the other boxes), the package once more; each rebuild reports
     *   the empty choice, as rebuilds do, and the chip is reported last.
     * - "Add to comparison", or "Remove from comparison" for a chip already
     *   compared.
     */
    void setComparisonVisible(bool visible);

    /// Whether the comparison panel is shown.
    bool comparisonVisible() const;

    /// The chips of the comparison panel, in column order (also while it is hidden).
    QList<ChipInfo> comparedChips() const;

    /**
     * Compares @p chips, found in the database by part number and match
     * key; a chip it does not know, and a repeated part number, are left
     * out. Also while the panel is hidden.
     */
    void setComparedChips(const QList<ChipInfo>& chips);

    /**
     * The table's column widths and sort order, for a host to keep between
     * sessions (the library itself writes no files). See restoreState().
     */
    QByteArray saveState() const;

    /**
     * Restores what saveState() returned and sorts the table accordingly,
     * keeping the chosen chip. The next rebuild of the table returns to
     * part-number order, as every rebuild does. Returns false, changing
     * nothing, when @p state is not such a value.
     */
    bool restoreState(const QByteArray& state);

    /**
     * Offers the boards of @p boards (not owned; unset it before it goes) in a tab "Boards" beside the chip
     * table, the tab "Chips"; the search narrows both. Choosing a board selects its chip as
     * setCurrentDevice(const ChipInfo&) does, clearing a search that hides it. Null, the default, removes the tabs.
     */
    void setBoards(const BoardCatalogue* boards);

    /// The board chosen in the "Boards" tab while its chip is the selected one, else an empty record.
    Board selectedBoard() const;

Q_SIGNALS:
    /**
     * The chip the user now has: the chip of a clicked row, or an empty
     * DeviceArg (empty @c deviceId) whenever the table was rebuilt and
     * nothing is selected.
     */
    void selectedDeviceChanged(const DEV::DeviceArg& device);

private Q_SLOTS:
    void onSeriesChanged();
    void onDeviceChanged();
    void filter();
    void filterBySearch();
    void onIndexSelected();
    void scrollToCurrentDevice();

private:
    Ui_DeviceSelector* ui;
    DeviceDb* db;
    ChipInfoTableModel* model;
    QModelIndex currentDeviceIndex;
    SearchLineEdit* searchEdit;

    // The rest of the state, behind one pointer so that the class keeps its
    // size as the widget learns more.
    std::unique_ptr<pimpl::DeviceSelectorPrivate> const d;
    // The dialog answers a double-click on a row of the table.
    friend class DeviceSelectorDialog;

    void updateBase();
    void showPreset(const QModelIndex& index);
    QList<ChipInfo> chipsOfCascade() const;
    QStringList seriesOfCascade() const;

    void setUpUsability();
    void setUpRequirements();
    void applyRequirements();
    void setUpComparison();
    void updateChipActions();
    void showSamePackage(const ChipInfo& chip);
    void setUpKeyboard();
    void setUpAccessibility();
    void makeCurrent(const QModelIndex& index);
    void reselectAfterSort();
    void copySelection(bool wholeRow) const;
};

} // namespace DEV

#endif // DEV_DEVICESELECTOR_H
