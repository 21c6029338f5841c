#include "devicedb_p.h"

#include <QDebug>
#include <QFile>
#include <QTextStream>

#include <algorithm>

namespace DEV {
namespace pimpl {

namespace {

// Columns 0 to 9 are the ten text members; 10 onward are resource counts.
constexpr int FirstResourceColumn = 10;

// A record needs more than seven columns. Lines of eight or nine columns are
// accepted and simply lack speed and/or auxiliary.
constexpr int MinimumColumns = 8;

ChipInfo recordFromColumns(const QStringList& parts)
{
    ChipInfo info;
    info.deviceId = parts.at(0).trimmed();
    info.partNumber = parts.at(1).trimmed();
    info.series = parts.at(2).trimmed();
    info.matchKey = parts.at(3).trimmed();
    info.device = parts.at(4).trimmed();
    info.deviceVersion = parts.at(5).trimmed();
    info.package = parts.at(6).trimmed();
    info.voltage = parts.at(7).trimmed();
    // value() yields an empty string for the columns a short line lacks.
    info.speed = parts.value(8).trimmed();
    info.auxiliary = parts.value(9).trimmed();
    if (parts.size() > FirstResourceColumn)
        info.resources = parts.mid(FirstResourceColumn);
    return info;
}

} // namespace

void DeviceDbPrivate::loadDataFile(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qCritical() << "can not opend device data file: " << fileName;
        return;
    }

    QTextStream in(&file);
    QString line;
    while (!in.atEnd()) {
        in.readLineInto(&line);
        if (line.isEmpty())
            continue;
        const QStringList parts = line.split(QLatin1Char(','), Qt::KeepEmptyParts, Qt::CaseSensitive);
        if (parts.size() >= MinimumColumns)
            chips.append(recordFromColumns(parts));
        else
            qCritical() << "incorrect device info entry" << line;
    }

    // Newest device versions first; the initial (empty) version sorts last.
    std::sort(chips.begin(), chips.end(), [](const ChipInfo& a, const ChipInfo& b) {
        return a.deviceVersion.compare(b.deviceVersion, Qt::CaseSensitive) > 0;
    });
    file.close();
}

} // namespace pimpl
} // namespace DEV
