// SPDX-License-Identifier: BSD-3-Clause
#include "recentchips_p.h"

#include "chipinfo_p.h"
#include "devicedb.h"
#include "deviceselectordialog.h"

#include <QMenu>

namespace DEV {
namespace pimpl {

RecentChips::RecentChips(DeviceDb* db, DeviceSelectorDialog* dialog)
    : QPushButton(DeviceSelectorDialog::tr("Recent"), dialog)
    , m_db(db)
{
    setObjectName(QStringLiteral("recentButton"));
    setAutoDefault(false); // Enter still means OK
    setMenu(new QMenu(this));
    setAccessibleName(DeviceSelectorDialog::tr("Recent chips"));
    setToolTip(DeviceSelectorDialog::tr("The chips accepted last, newest first; choosing one selects it"));
    setAccessibleDescription(toolTip());
    connect(menu(), &QMenu::triggered, dialog, [this, dialog](QAction* action) {
        dialog->setCurrentDevice(m_chips.value(menu()->actions().indexOf(action)));
    });
    connect(dialog, &QDialog::accepted, this, [this, dialog] {
        const ChipInfo chip = dialog->selectedDevice();
        if (chip.partNumber.isEmpty())
            return;
        QList<ChipInfo> chips{chip};
        for (const ChipInfo& earlier : qAsConst(m_chips)) {
            if (!sameChip(earlier, chip))
                chips << earlier;
        }
        setChips(chips);
    });
    setChips({});
}

QStringList RecentChips::keys() const
{
    QStringList keys;
    for (const ChipInfo& chip : m_chips)
        keys << chip.partNumber << chip.matchKey;
    return keys;
}

bool RecentChips::readKeys(const QStringList& keys, QList<ChipInfo>* chips) const
{
    if (keys.size() % 2 != 0 || keys.size() > 2 * Kept)
        return false;
    QList<ChipInfo> known;
    for (int k = 0; k < keys.size(); k += 2) {
        const ChipInfo chip = keys.at(k).isEmpty() ? ChipInfo() : m_db->find(keys.at(k), keys.at(k + 1));
        if (!chip.partNumber.isEmpty())
            known << chip;
    }
    *chips = known;
    return true;
}

void RecentChips::setChips(const QList<ChipInfo>& chips)
{
    m_chips = chips.mid(0, Kept);
    menu()->clear();
    for (const ChipInfo& chip : qAsConst(m_chips))
        menu()->addAction(QString(chip.partNumber).replace(QLatin1Char('&'), QLatin1String("&&")));
    setEnabled(!m_chips.isEmpty());
}

} // namespace pimpl
} // namespace DEV
