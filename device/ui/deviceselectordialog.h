// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_DEVICESELECTORDIALOG_H
#define DEV_DEVICESELECTORDIALOG_H

#include "chipinfo.h"
#include "device_export.h"

#include <QDialog>

class QDialogButtonBox;

namespace DEV {

class DeviceDb;
struct ChipRequirements;
class DeviceSelector;

/**
 * @brief A modal dialog that asks the user for one chip.
 *
 * A DeviceSelector above an OK/Cancel button row. OK is enabled while a chip
 * is chosen: it follows the selector's selectedDeviceChanged() reports, and
 * every report is relayed through the dialog's own signal.
 *
 * Most hosts need one call:
 * @code
 * const DEV::ChipInfo chip = DEV::DeviceSelectorDialog::getSelectedChip(
 *     this, DEV::DeviceDb::instance(), project.deviceId());
 * if (!chip.partNumber.isEmpty())
 *     project.setDevice(chip);
 * @endcode
 */
class DEVICE_EXPORT DeviceSelectorDialog : public QDialog
{
    Q_OBJECT

public:
    /// Builds the dialog over @p db, which is not owned and must outlive it.
    explicit DeviceSelectorDialog(DeviceDb* db, QWidget* parent = nullptr);
    ~DeviceSelectorDialog() override;

    DeviceSelectorDialog(const DeviceSelectorDialog&) = delete;
    DeviceSelectorDialog& operator=(const DeviceSelectorDialog&) = delete;

    /**
     * Opens a modal dialog over @p db preset to the device identifier
     * @p device and returns the chip the user accepted, or an empty record
     * when the dialog was cancelled or closed, or accepted with no row
     * selected.
     */
    static ChipInfo getSelectedChip(QWidget* parent, DeviceDb* db, const QString& device);

    /**
     * As above, preset to exactly @p chip (its part number and match key)
     * rather than to the first chip of a device identifier; see
     * DeviceSelector::setCurrentDevice(const ChipInfo&).
     */
    static ChipInfo getSelectedChip(QWidget* parent, DeviceDb* db, const ChipInfo& chip);

    /// Shows and selects the chip with the device identifier @p device; see DeviceSelector::setCurrentDevice().
    void setCurrentDevice(const QString& device);

    /// Shows and selects exactly @p chip; see DeviceSelector::setCurrentDevice(const ChipInfo&).
    void setCurrentDevice(const ChipInfo& chip);

    /**
     * Shows the selector's row of resource minimums filled with
     * @p requirements, or hides it for a default-constructed record; see
     * DeviceSelector::setRequirementsVisible().
     */
    void setRequirements(const ChipRequirements& requirements);

    /**
     * Shows or hides the "Recent" drop-down above OK and Cancel: the chips
     * last accepted in this dialog (recentChips()), choosing one presets it
     * as setCurrentDevice(const ChipInfo&) does. Hidden by default; the
     * dialog keeps the list either way, and the list travels in saveState().
     */
    void setRecentVisible(bool visible);

    /// Whether the "Recent" drop-down is shown.
    bool recentVisible() const;

    /**
     * The last eight chips accepted with OK (or accept()), newest first, each
     * once; a chip accepted again moves to the front. Restored by
     * restoreState() without the chips the database no longer knows.
     */
    QList<ChipInfo> recentChips() const;

    /**
     * The embedded selector, for what the dialog does not forward, such as
     * its comparison panel (DeviceSelector::setComparisonVisible()).
     */
    DeviceSelector* deviceSelector() const;

    /**
     * The dialog's geometry with the selector's column widths and sort and
     * the recent chips, for a host to keep between sessions (the library
     * writes no files):
     * @code
     * DEV::DeviceSelectorDialog dialog(db, this);
     * dialog.restoreState(settings.value("deviceDialog").toByteArray());
     * const int answer = dialog.exec();
     * settings.setValue("deviceDialog", dialog.saveState());
     * @endcode
     */
    QByteArray saveState() const;

    /**
     * Restores what saveState() returned, also a state saved before the
     * dialog kept recent chips (then none); false, changing nothing, for
     * anything else.
     */
    bool restoreState(const QByteArray& state);

    /// The chip of the selected row, or an empty record.
    ChipInfo selectedDevice() const;

    /// 800 by 450 pixels, whatever the contents.
    QSize sizeHint() const override;

Q_SIGNALS:
    /// Relays DeviceSelector::selectedDeviceChanged(), after the OK button was updated.
    void selectedDeviceChanged(const DEV::DeviceArg& device);

private Q_SLOTS:
    void onSelectedDeviceChanged(const DEV::DeviceArg& device);

private:
    DeviceSelector* selector;
    QDialogButtonBox* buttonBox;
};

} // namespace DEV

#endif // DEV_DEVICESELECTORDIALOG_H
