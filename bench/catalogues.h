// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_BENCH_CATALOGUES_H
#define DEV_BENCH_CATALOGUES_H

// Generated catalogues of fixed sizes and shapes, made once with
// scripts/gen-catalogue and kept in the build tree, and the databases loaded
// from them.

#include "devicedb.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QString>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>

#include <unistd.h>

namespace Bench {

/// The catalogue of @p chips chips, shaped as DEVICE_BENCH_SHAPE says
/// (scripts/gen-catalogue --shape: real, keyed, distinct or copies; default
/// real).
inline QString cataloguePath(int chips)
{
    const QString dir = QStringLiteral(DEVICE_BENCH_DATA_DIR);
    QDir().mkpath(dir);
    const QString shape = qEnvironmentVariable("DEVICE_BENCH_SHAPE", QStringLiteral("real"));
    const QString path = dir + QStringLiteral("/%1-%2.csv").arg(shape).arg(chips);
    if (!QFileInfo::exists(path)) {
        std::fprintf(stderr, "generating %s\n", qPrintable(path));
        QProcess gen;
        gen.setStandardOutputFile(path);
        gen.start(QStringLiteral("python3"),
                  {QStringLiteral(DEVICE_SOURCE_DIR "/scripts/gen-catalogue"), QStringLiteral("--chips"),
                   QString::number(chips), QStringLiteral("--shape"), shape});
        if (!gen.waitForFinished(-1) || gen.exitCode() != 0) {
            std::fprintf(stderr, "cannot generate %s\n", qPrintable(path));
            QFile::remove(path);
            std::exit(1);
        }
    }
    return path;
}

/// The process's resident set size in bytes, from /proc.
inline qint64 residentBytes()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.value(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

/// The database of the catalogue with @p chips chips, loaded once per run.
inline DEV::DeviceDb& database(int chips)
{
    static std::map<int, std::unique_ptr<DEV::DeviceDb>> loaded;
    auto& slot = loaded[chips];
    if (!slot)
        slot.reset(new DEV::DeviceDb(cataloguePath(chips)));
    return *slot;
}

} // namespace Bench

#endif // DEV_BENCH_CATALOGUES_H
