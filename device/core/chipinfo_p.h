// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_CHIPINFO_P_H
#define DEV_CHIPINFO_P_H

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Device API. It may change from version to
// version without notice.
//

#include "chipinfo.h"

#include <QStringView>

#include <cstring>

namespace DEV {
namespace pimpl {

/// Whether two texts hold the same UTF-16 units. Values that records share
/// lie at one place, which settles it without reading them.
inline bool sameText(QStringView a, QStringView b)
{
    return a.size() == b.size()
        && (a.data() == b.data() || a.isEmpty()
            || std::memcmp(a.data(), b.data(), size_t(a.size()) * sizeof(QChar)) == 0);
}

/// Whether two records are the same orderable chip: its part number with
/// the second key, as DeviceDb::find() looks one up. The device identifier
/// is shared by every voltage and speed grade of a device, so it tells
/// nothing apart.
inline bool sameChip(const ChipInfo& a, const ChipInfo& b)
{
    return a.partNumber == b.partNumber && a.matchKey == b.matchKey;
}

} // namespace pimpl
} // namespace DEV

#endif // DEV_CHIPINFO_P_H
