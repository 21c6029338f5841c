#ifndef DEV_REFERENCELOADER_H
#define DEV_REFERENCELOADER_H

// The data-file loader written the plain way: a text stream read line by
// line, each line split into a string list, records sorted with one
// comparison. The library's loader must give the same records and messages;
// tests and benchmarks compare against this one.

#include "chipinfo.h"

#include <QDebug>
#include <QFile>
#include <QList>
#include <QTextStream>

#include <algorithm>

namespace Reference {

inline QList<DEV::ChipInfo> loadDataFile(const QString& fileName)
{
    QList<DEV::ChipInfo> chips;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qCritical() << "can not opend device data file: " << fileName;
        return chips;
    }
    QTextStream in(&file);
    while (!in.atEnd()) {
        const QString line = in.readLine();
        if (line.length() == 0)
            continue;
        const QStringList parts = line.split(QLatin1Char(','), Qt::KeepEmptyParts, Qt::CaseSensitive);
        if (parts.size() > 7) {
            const QString missing = QString(QLatin1String(""));
            DEV::ChipInfo info;
            info.deviceId = parts.at(0).trimmed();
            info.partNumber = parts.at(1).trimmed();
            info.series = parts.at(2).trimmed();
            info.matchKey = parts.at(3).trimmed();
            info.device = parts.at(4).trimmed();
            info.deviceVersion = parts.at(5).trimmed();
            info.package = parts.at(6).trimmed();
            info.voltage = parts.at(7).trimmed();
            info.speed = parts.size() > 8 ? parts.at(8).trimmed() : missing;
            info.auxiliary = parts.size() > 9 ? parts.at(9).trimmed() : missing;
            info.resources.append(parts.mid(10));
            chips.append(info);
        } else {
            qCritical() << "incorrect device info entry" << line;
        }
    }
    std::sort(chips.begin(), chips.end(), [](const DEV::ChipInfo& a, const DEV::ChipInfo& b) {
        return a.deviceVersion.compare(b.deviceVersion, Qt::CaseSensitive) > 0;
    });
    return chips;
}

} // namespace Reference

#endif // DEV_REFERENCELOADER_H
