// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_RECENTCHIPS_P_H
#define DEV_RECENTCHIPS_P_H

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Device API. It may change from version to
// version without notice.
//

#include "chipinfo.h"

#include <QPushButton>

namespace DEV {

class DeviceDb;
class DeviceSelectorDialog;

namespace pimpl {

/**
 * The dialog's "Recent" drop-down: a button whose menu lists the chips last
 * accepted in the dialog, newest first, each at most once; choosing one
 * presets it. It keeps the list while hidden.
 */
class RecentChips : public QPushButton
{
    Q_OBJECT

public:
    /// How many chips are kept.
    static constexpr int Kept = 8;

    RecentChips(DeviceDb* db, DeviceSelectorDialog* dialog);

    QList<ChipInfo> chips() const { return m_chips; }

    /// The part number and match key of each chip, for a saved state.
    QStringList keys() const;

    /**
     * The chips of @p keys (as keys() writes them) that the database still
     * knows, in their order; false, with @p chips untouched, for anything
     * keys() cannot have written.
     */
    bool readKeys(const QStringList& keys, QList<ChipInfo>* chips) const;

    /// Lists @p chips, the first Kept of them.
    void setChips(const QList<ChipInfo>& chips);

private:
    DeviceDb* m_db;
    QList<ChipInfo> m_chips;
};

} // namespace pimpl
} // namespace DEV

#endif // DEV_RECENTCHIPS_P_H
