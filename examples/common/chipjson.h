// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_EXAMPLES_CHIPJSON_H
#define DEV_EXAMPLES_CHIPJSON_H

// A chip as a JSON object, as the example programs print it: one key per
// ChipInfo member, resources as an array of strings exactly as the data
// file has them.

#include <chipinfo.h>

#include <QJsonArray>
#include <QJsonObject>

namespace ExampleCommandLine {

inline QJsonObject chipToJson(const DEV::ChipInfo& chip)
{
    return QJsonObject{
        {QStringLiteral("deviceId"), chip.deviceId},
        {QStringLiteral("partNumber"), chip.partNumber},
        {QStringLiteral("series"), chip.series},
        {QStringLiteral("matchKey"), chip.matchKey},
        {QStringLiteral("device"), chip.device},
        {QStringLiteral("deviceVersion"), chip.deviceVersion},
        {QStringLiteral("package"), chip.package},
        {QStringLiteral("voltage"), chip.voltage},
        {QStringLiteral("speed"), chip.speed},
        {QStringLiteral("auxiliary"), chip.auxiliary},
        {QStringLiteral("resources"), QJsonArray::fromStringList(chip.resources)},
    };
}

} // namespace ExampleCommandLine

#endif // DEV_EXAMPLES_CHIPJSON_H
