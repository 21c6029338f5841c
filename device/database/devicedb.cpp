// SPDX-License-Identifier: BSD-3-Clause
#include "devicedb.h"
#include "devicedb_p.h"

#include "chipcolumns.h"

#include <QCoreApplication>
#include <QMetaType>

#include <numeric>

namespace DEV {

namespace {

struct IdPair
{
    const char* oldId;
    const char* currentId;
};

// The zr9k31 family was renumbered when it became zr9k31a; projects saved
// before that still carry the old identifiers. The numbers follow no rule.
constexpr IdPair Compat9k31[] = {
    {"zr9k31-000", "zr9k31a-000"},
    {"zr9k31-013", "zr9k31a-015"},
    {"zr9k31-009", "zr9k31a-021"},
    {"zr9k31-006", "zr9k31a-009"},
    {"zr9k31-014", "zr9k31a-024"},
    {"zr9k31-011", "zr9k31a-018"},
    {"zr9k31-004", "zr9k31a-012"},
    {"zr9k31-002", "zr9k31a-003"},
    {"zr9k31-008", "zr9k31a-006"},
    {"zr9k31-007", "zr9k31a-028"},
    {"zr9k31-001", "zr9k31a-027"},
};

} // namespace

QString deviceIdCompatFor9k31(const QString& id)
{
    for (const IdPair& pair : Compat9k31) {
        if (id.compare(QLatin1String(pair.oldId), Qt::CaseSensitive) == 0)
            return QString::fromLatin1(pair.currentId);
    }
    return id;
}

DeviceDb::DeviceDb(const QString& fileName)
    : d(new pimpl::DeviceDbPrivate)
{
    d->loadDataFile(fileName);

    // Databases may be built on several threads at once; a local static is
    // initialised exactly once, the others wait for it.
    static const int registered = qRegisterMetaType<DEV::DeviceArg>("DEV::DeviceArg");
    Q_UNUSED(registered)
}

DeviceDb::~DeviceDb() = default;

DeviceDb::LoadReport DeviceDb::loadReport() const
{
    return d->report;
}

DeviceDb* DeviceDb::instance()
{
    // A function-local static is constructed exactly once even when several
    // threads arrive together (the others wait), and destroyed at exit.
    static DeviceDb db([] {
        // Without the application object the program's directory is unknown.
        if (!QCoreApplication::instance())
            qWarning("DEV::DeviceDb::instance() called before the QCoreApplication was created: the catalogue "
                     "beside the program cannot be found and the database stays empty");
        return defaultDataFile();
    }());
    return &db;
}

QString DeviceDb::defaultDataFile()
{
    return QCoreApplication::applicationDirPath() + QLatin1String("/../data/device/device_info.csv");
}

ChipInfo DeviceDb::findByID(const QString& id) const
{
    QString key = id;
    if (key.startsWith(QLatin1String("zr9k31-"), Qt::CaseSensitive))
        key = deviceIdCompatFor9k31(key);

    const QList<ChipInfo> chips = d->chips;
    for (const ChipInfo& chip : chips) {
        if (chip.deviceId == key)
            return chip;
    }
    return ChipInfo();
}

QList<ChipInfo> DeviceDb::findByPN(const QString& pn) const
{
    QList<ChipInfo> result;
    const QList<ChipInfo> chips = d->chips;
    for (const ChipInfo& chip : chips) {
        if (chip.partNumber == pn)
            result.append(chip);
    }
    return result;
}

ChipInfo DeviceDb::find(const QString& partNumber, const QString& matchKey)
{
    const QList<ChipInfo> chips = d->chips;
    for (const ChipInfo& chip : chips) {
        if (chip.partNumber == partNumber && chip.matchKey == matchKey)
            return chip;
    }
    return ChipInfo();
}

QList<ChipInfo> DeviceDb::allChipInfo() const
{
    return d->chips;
}

QList<DeviceArg> DeviceDb::allDevice() const
{
    QList<DeviceArg> result;
    const QList<ChipInfo> chips = d->chips;
    result.reserve(chips.size());
    for (const ChipInfo& chip : chips)
        result.append(DeviceArg(chip));
    return result;
}

QVector<int> DeviceDb::partNumberOrder() const
{
    std::call_once(d->ordered, [this] {
        QVector<int> all(d->chips.size());
        std::iota(all.begin(), all.end(), 0);
        d->partNumberOrder = sortChipRows(d->chips, all, int(ChipColumn::PartNumber));
    });
    return d->partNumberOrder;
}

} // namespace DEV
