// SPDX-License-Identifier: BSD-3-Clause
// libFuzzer target: arbitrary bytes as a device data file, read with a tuning taken from the input's first byte (one
// part to seven, cut evenly or not, the threshold at zero or at its largest, blocks of one byte to five or of the
// default size). The database must load without crashing, leaking or tripping a sanitizer, give the records, the
// report and the messages of the plain loader, and find every record again by its own keys.

#include "devicedb.h"
#include "devicedb_p.h"
#include "tuning_p.h"

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

#include <cstdlib>
#include <limits>
#include <utility>

namespace {

QStringList messages;

QStringList texts(const QList<DEV::ChipInfo>& chips)
{
    QStringList out;
    for (const DEV::ChipInfo& c : chips)
        out << (QStringList{c.deviceId, c.partNumber, c.series, c.matchKey, c.device, c.deviceVersion, c.package,
                            c.voltage, c.speed, c.auxiliary} + c.resources).join(QChar(0x1e));
    return out;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtCriticalMsg)
            messages << text;
    });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    DEV::pimpl::Tuning& tuning = DEV::pimpl::tuning();
    tuning = DEV::pimpl::Tuning();
    tuning.parts = 1 + data[0] % 7;
    tuning.loadParallelFrom = data[0] & 0x08 ? 0 : std::numeric_limits<qint64>::max();
    if (data[0] & 0x70)
        tuning.loadBlockBytes = 1 + (data[0] >> 4) % 5;
    if (data[0] & 0x80)
        tuning.loadRowsWork = 100; // the first parts empty
    const QByteArray bytes(reinterpret_cast<const char*>(data) + 1, int(size) - 1);
    static QTemporaryDir dir;
    QFile f(dir.filePath(QStringLiteral("device_info.csv")));
    if (!f.open(QIODevice::WriteOnly) || f.write(bytes) != bytes.size())
        std::abort();
    f.close();

    messages.clear();
    QList<DEV::ChipInfo> plain;
    const DEV::DeviceDb::LoadReport expected = DEV::pimpl::readPlainly(bytes, plain);
    const QStringList expectedMessages = std::exchange(messages, QStringList());
    DEV::DeviceDb db(f.fileName());
    const QList<DEV::ChipInfo> chips = db.allChipInfo();
    const DEV::DeviceDb::LoadReport report = db.loadReport();
    if (texts(chips) != texts(plain) || messages != expectedMessages || report.chips != expected.chips
        || report.skippedLines != expected.skippedLines || report.firstSkippedLine != expected.firstSkippedLine
        || db.allDevice().size() != chips.size())
        std::abort();
    for (const DEV::ChipInfo& chip : chips) {
        if ((!chip.deviceId.startsWith(QLatin1String("zr9k31-")) && db.findByID(chip.deviceId).deviceId != chip.deviceId)
            || db.findByPN(chip.partNumber).isEmpty() || db.find(chip.partNumber, chip.matchKey).partNumber != chip.partNumber)
            std::abort();
    }
    return 0;
}
