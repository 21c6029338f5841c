// SPDX-License-Identifier: BSD-3-Clause
#include "chipinfo.h"

#include <utility>

namespace DEV {

DeviceArg::DeviceArg(const ChipInfo& info)
    : ChipInfo(info)
{
}

// Out of line, so that hosts call the library's copy; defaulted, so that it
// assigns every member, one added later too.
DeviceArg& DeviceArg::operator=(const DeviceArg& other) = default;

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
