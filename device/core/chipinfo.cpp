// SPDX-License-Identifier: BSD-3-Clause
#include "chipinfo.h"

#include <utility>

namespace DEV {

DeviceArg::DeviceArg(const ChipInfo& info)
    : ChipInfo(info)
{
}

DeviceArg& DeviceArg::operator=(const DeviceArg& other)
{
    deviceId = other.deviceId;
    partNumber = other.partNumber;
    series = other.series;
    matchKey = other.matchKey;
    device = other.device;
    deviceVersion = other.deviceVersion;
    package = other.package;
    voltage = other.voltage;
    speed = other.speed;
    auxiliary = other.auxiliary;
    resources = other.resources;
    return *this;
}

// Equality is identity of the device, not of the whole record: a host keeps
// a DeviceArg around and asks "is this still the same device?".
bool DeviceArg::operator==(const DeviceArg& other) const
{
    return deviceId == other.deviceId;
}

bool DeviceArg::operator!=(const DeviceArg& other) const
{
    return !(deviceId == other.deviceId);
}

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
// The first release had these without const; hosts linked against it call
// them by those names.
bool DeviceArg::operator==(const DeviceArg& other)
{
    return std::as_const(*this) == other;
}

bool DeviceArg::operator!=(const DeviceArg& other)
{
    return std::as_const(*this) != other;
}
#endif

} // namespace DEV
