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
#include "device_export.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVector>

#include <memory>
#include <mutex>

namespace DEV {
namespace pimpl {

/**
 * The loader's definition, and its road for what the fast one does not read
 * (a file in UTF-16 or UTF-32, or one that cannot be read in parts): the
 * lines of the file @p bytes (plainLines()) as records appended to @p chips,
 * which then follow device version, newest first, each version's in file
 * order. Reports every malformed line on the critical channel.
 */
DEVICE_EXPORT DeviceDb::LoadReport readPlainly(const QByteArray& bytes, QList<ChipInfo>& chips);

class DeviceDbPrivate
{
public:
    /**
     * Reads the data file and appends one record per well-formed line to
     * @c chips, ordered as readPlainly() orders them, but a block at a time
     * and a large file in parts on several threads, sharing equal values.
     * Reports an unopenable file and every malformed line on the critical
     * channel.
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
