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
#include <QVector>

#include <memory>
#include <mutex>

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
    // Built on first use and shared; the database never changes after loading.
    std::once_flag ordered;
    QVector<int> partNumberOrder;
    std::once_flag searchPrepared;
    std::shared_ptr<const ChipSearch> search;
};

} // namespace pimpl
} // namespace DEV

#endif // DEV_DEVICEDB_P_H
