// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_DEVICESELECTOR_H
#define DEV_DEVICESELECTOR_H

#include "chipinfo.h"
#include "device_export.h"

#include <QModelIndex>
#include <QWidget>

#include <memory>

namespace DEV {

class ChipInfoTableModel;
class DeviceDb;
class SearchLineEdit;
class Ui_DeviceSelector;

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
 * outlive the widget.
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
    ~DeviceSelector() override;

    DeviceSelector(const DeviceSelector&) = delete;
    DeviceSelector& operator=(const DeviceSelector&) = delete;

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

    struct SortedBase;
    /// The combo boxes' last result in part-number order, kept for the search.
    std::unique_ptr<SortedBase> sortedBase;

    const QList<ChipInfo>& chipsOfBoxes();
};

} // namespace DEV

#endif // DEV_DEVICESELECTOR_H
