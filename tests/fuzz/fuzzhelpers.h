#ifndef DEV_FUZZHELPERS_H
#define DEV_FUZZHELPERS_H

#include "devicedb.h"

#include <QtGlobal>

namespace FuzzHelpers {

/// Silences Qt's messages: malformed input is expected and reported on
/// every run, and printing it would only slow the fuzzer down.
inline void init(int*, char***)
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
}

/// Runs the queries that take free-form keys over a loaded database.
inline void exerciseQueries(DEV::DeviceDb& db, const QList<DEV::ChipInfo>& chips)
{
    const DEV::ChipInfo first = chips.value(0);
    db.findByID(first.partNumber);
    db.findByID(QStringLiteral("zr9k31-013"));
    db.findByPN(first.deviceId);
    db.find(first.matchKey, first.partNumber);
}

} // namespace FuzzHelpers

#endif // DEV_FUZZHELPERS_H
