// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_DEVICEDB_P_H
#define DEV_DEVICEDB_P_H

//
//  W A R N I N G
//  -------------
//
// This file is not part of the Device API. It may change from version to
// version without notice.
//

#include "chipinfo.h"
#include "devicedb.h"

#include <QList>
#include <QString>

namespace DEV {
namespace pimpl {

class DeviceDbPrivate
{
public:
    /**
     * Reads the data file and appends one record per well-formed line to
     * @c chips, then orders the list by device version, descending. Reports
     * an unopenable file and every malformed line on the critical channel.
     */
    void loadDataFile(const QString& fileName);

    QList<ChipInfo> chips;
    DeviceDb::LoadReport report;
};

} // namespace pimpl
} // namespace DEV

#endif // DEV_DEVICEDB_P_H
