// SPDX-License-Identifier: BSD-3-Clause
#include "chipfilter.h"

#include "devicedb.h"

namespace DEV {

namespace {

bool unsetOrEqual(const QString& criterion, const QString& value)
{
    return criterion.isEmpty() || criterion == value;
}

// deviceVersion alone tests for null: an empty version is a real choice, the
// initial version of a device.
bool unconstrained(const ChipFilter& filter)
{
    return filter.partNumber.isEmpty() && filter.series.isEmpty() && filter.matchKey.isEmpty()
        && filter.device.isEmpty() && filter.deviceVersion.isNull() && filter.package.isEmpty()
        && filter.auxiliary.isEmpty() && filter.voltage.isEmpty() && filter.speed.isEmpty();
}

} // namespace

bool matchFilter(const ChipInfo& info, const ChipFilter& filter)
{
    // operator== treats null and empty alike, so an empty version criterion
    // also keeps a chip whose version was never set.
    return unsetOrEqual(filter.partNumber, info.partNumber)
        && unsetOrEqual(filter.series, info.series)
        && unsetOrEqual(filter.matchKey, info.matchKey)
        && unsetOrEqual(filter.package, info.package)
        && unsetOrEqual(filter.auxiliary, info.auxiliary)
        && unsetOrEqual(filter.voltage, info.voltage)
        && unsetOrEqual(filter.speed, info.speed)
        && unsetOrEqual(filter.device, info.device)
        && (filter.deviceVersion.isNull() || filter.deviceVersion == info.deviceVersion);
}

QList<ChipInfo> filterChips(const QList<ChipInfo>& chips, const ChipFilter& filter)
{
    // The selector asks with every criterion at "Any" whenever the search
    // field changes; handing out the shared list spares a copy of each record.
    if (unconstrained(filter))
        return chips;

    QList<ChipInfo> result;
    for (const ChipInfo& chip : chips) {
        if (matchFilter(chip, filter))
            result.append(chip);
    }
    return result;
}

QList<ChipInfo> DeviceDb::filterChips(const ChipFilter& filter) const
{
    return DEV::filterChips(allChipInfo(), filter);
}

QList<DeviceArg> DeviceDb::filterDevice(const ChipFilter& filter) const
{
    const QList<ChipInfo> chips = filterChips(filter);
    QList<DeviceArg> result;
    result.reserve(chips.size());
    for (const ChipInfo& chip : chips)
        result.append(DeviceArg(chip));
    return result;
}

} // namespace DEV
