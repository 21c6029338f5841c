// libFuzzer target: arbitrary bytes as a device data file. The database must
// load without crashing, leaking or tripping a sanitizer, and every query must
// hold up over whatever came out of the file.

#include "devicedb.h"
#include "fuzzhelpers.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

using DEV::ChipInfo;
using DEV::DeviceDb;

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    FuzzHelpers::init(argc, argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("device_info.csv"));
    {
        QFile f(path);
        if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
            std::abort();
        f.write(reinterpret_cast<const char*>(data), qint64(size));
    }

    DeviceDb db(path);
    const QList<ChipInfo> chips = db.allChipInfo();
    if (db.allDevice().size() != chips.size())
        std::abort();

    // Every record must be found again by its own keys.
    for (const ChipInfo& chip : chips) {
        if (!chip.deviceId.startsWith(QLatin1String("zr9k31-"))
            && db.findByID(chip.deviceId).deviceId != chip.deviceId)
            std::abort();
        if (db.findByPN(chip.partNumber).isEmpty())
            std::abort();
        if (db.find(chip.partNumber, chip.matchKey).partNumber != chip.partNumber)
            std::abort();
    }
    // Ordered by device version, newest first.
    for (int i = 1; i < chips.size(); ++i) {
        if (chips.at(i - 1).deviceVersion.compare(chips.at(i).deviceVersion) < 0)
            std::abort();
    }
    FuzzHelpers::exerciseQueries(db, chips);
    return 0;
}
