// SPDX-License-Identifier: BSD-3-Clause
#ifndef DEV_TESTHELPERS_H
#define DEV_TESTHELPERS_H

// Fixtures shared by the tests: captured messages, catalogue files, records as comparable text, and programs run as
// processes.

#include "devicedb.h"
#include "tuning_p.h"

#include <QAbstractItemModel>
#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMutex>
#include <QProcess>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <limits>
#include <memory>
#include <utility>
#include <vector>

Q_DECLARE_METATYPE(DEV::pimpl::Tuning)

namespace TestHelpers {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int SanitizedShare = 8;
#else
constexpr int SanitizedShare = 1;
#endif

/// @p n random rounds, chips or bytes in an optimised build, an eighth of them (at least one) under a sanitizer. The
/// rounds and long lists look for wrong answers, which the optimised build finds as well and ten times quicker; a
/// sanitizer needs each route taken (the extreme tunings take the parallel ones on short lists too), not each random
/// case again.
constexpr int rounds(int n)
{
    return n / SanitizedShare > 0 ? n / SanitizedShare : 1;
}

/// Counts every Qt message (from any thread) while alive and keeps the texts of the critical ones, as the default
/// handler would print them.
class MessageCapture
{
public:
    MessageCapture() : m_previous(qInstallMessageHandler(&handler)), m_outer(s_current) { s_current = this; }
    ~MessageCapture()
    {
        qInstallMessageHandler(m_previous);
        s_current = m_outer;
    }
    int count() const { QMutexLocker lock(&m_mutex); return m_count; }
    QStringList criticals() const { QMutexLocker lock(&m_mutex); return m_criticals; }

private:
    static void handler(QtMsgType type, const QMessageLogContext&, const QString& text)
    {
        QMutexLocker lock(&s_current->m_mutex);
        ++s_current->m_count;
        if (type == QtCriticalMsg)
            s_current->m_criticals << text;
    }

    static inline MessageCapture* s_current = nullptr;
    mutable QMutex m_mutex;
    int m_count = 0;
    QStringList m_criticals;
    QtMessageHandler m_previous;
    MessageCapture* m_outer; // captures nest: the innermost one counts
};

/// The tuning set while alive; the one before comes back after.
struct ScopedTuning
{
    explicit ScopedTuning(const DEV::pimpl::Tuning& tuning) : saved(DEV::pimpl::tuning()) { DEV::pimpl::tuning() = tuning; }
    ~ScopedTuning() { DEV::pimpl::tuning() = saved; }
    ScopedTuning(const ScopedTuning&) = delete;
    ScopedTuning& operator=(const ScopedTuning&) = delete;
    const DEV::pimpl::Tuning saved;
};

/// Named tunings at which every fast routine must answer as its plain twin: the defaults, one part and seven with
/// every threshold at zero and search windows of one chip (the seven reading blocks of @p blockBytes bytes, the first
/// three of them empty as the rows' work is counted as long as the file), and every threshold and window at its largest.
inline std::vector<std::pair<QByteArray, DEV::pimpl::Tuning>> extremeTunings(int blockBytes = 3)
{
    DEV::pimpl::Tuning one, seven, largest;
    for (DEV::pimpl::Tuning* t : {&one, &seven}) {
        t->searchParallelFrom = t->sortParallelFrom = t->sortWideDigitsFrom = t->foldFrom = t->selectorParallelFrom = 0;
        t->loadParallelFrom = 0;
        t->foldWindow = 1;
    }
    one.parts = 1;
    seven.parts = 7;
    seven.loadBlockBytes = blockBytes;
    seven.loadRowsWork = 100;
    largest.searchParallelFrom = largest.sortParallelFrom = largest.sortWideDigitsFrom = largest.foldFrom =
        largest.selectorParallelFrom = largest.foldWindow = std::numeric_limits<int>::max();
    largest.loadParallelFrom = std::numeric_limits<qint64>::max();
    return {{"defaults", DEV::pimpl::Tuning()},
            {"one part, thresholds 0", one},
            {"7 parts, thresholds 0, blocks of " + QByteArray::number(blockBytes) + " bytes", seven},
            {"thresholds largest", largest}};
}

/// A complete data-file line; the values not named are fixed.
inline QByteArray chipLine(const QByteArray& id, const QByteArray& pn, const QByteArray& series = "S1",
                           const QByteArray& device = "DEV1", const QByteArray& version = "",
                           const QByteArray& package = "PKG1", const QByteArray& speed = "C6")
{
    return id + ',' + pn + ',' + series + ",MK," + device + ',' + version + ',' + package + ",1.0V," + speed
        + ",AUX,100,200,300,4Kb,5Kb,6Kb,7Kb,8,9\n";
}

/// Data files in a temporary directory, and databases loaded from them.
class Catalogues
{
public:
    QString path(const QString& name) const { return m_dir.filePath(name); }
    QString write(const QByteArray& bytes)
    {
        QFile file(path(QStringLiteral("data%1.csv").arg(++m_count)));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write test fixture %s", qPrintable(file.fileName()));
        return file.fileName();
    }
    std::unique_ptr<DEV::DeviceDb> load(const QByteArray& bytes) { return std::make_unique<DEV::DeviceDb>(write(bytes)); }

private:
    QTemporaryDir m_dir;
    int m_count = 0;
};

/// Every member of a record, nulls told from empties, the counts last.
inline QStringList fields(const DEV::ChipInfo& c)
{
    QStringList out;
    for (const QString* m : {&c.deviceId, &c.partNumber, &c.series, &c.matchKey, &c.device, &c.deviceVersion,
                             &c.package, &c.voltage, &c.speed, &c.auxiliary})
        out << (m->isNull() ? QStringLiteral("<null>") : *m);
    return out << QString::number(c.resources.size()) + QLatin1Char(':') + c.resources.join(QLatin1Char('|'));
}

/// The device ids of @p chips, or the texts of a model's @p column.
inline QStringList ids(const QList<DEV::ChipInfo>& chips)
{
    QStringList out;
    for (const DEV::ChipInfo& c : chips)
        out << c.deviceId;
    return out;
}
inline QStringList columnTexts(const QAbstractItemModel& model, int column)
{
    QStringList out;
    for (int row = 0; row < model.rowCount(); ++row)
        out << model.index(row, column).data().toString();
    return out;
}

/// What a program left: exit status (-1 when it did not end normally), output and errors.
struct Run
{
    int status = -1;
    QByteArray out;
    QByteArray err;
};

inline Run runProgram(const QString& program, const QStringList& arguments,
                      const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit) {
        process.kill();
        process.waitForFinished();
        return {};
    }
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

/// Where the sources ("source") and this build's programs are, from test-paths.json, which CMake writes beside the
/// tests: no path is compiled into a test, so that ccache serves its object to a clone in any folder.
inline QString testPath(const char* key)
{
    static const QJsonObject paths = [] {
        QFile file(QCoreApplication::applicationDirPath() + QStringLiteral("/test-paths.json"));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("%s: %s", qPrintable(file.fileName()), qPrintable(file.errorString()));
        return QJsonDocument::fromJson(file.readAll()).object();
    }();
    const QString path = paths.value(QLatin1String(key)).toString();
    if (path.isEmpty())
        qFatal("test-paths.json names no '%s'", key);
    return path;
}

/// A catalogue of @p chips chips from scripts/gen-catalogue --shape @p shape ("real" or "distinct").
inline QByteArray generatedCatalogue(const char* shape, int chips)
{
    const QStringList arguments{testPath("source") + "/scripts/gen-catalogue", QStringLiteral("--shape"),
                                QLatin1String(shape), QStringLiteral("--chips"), QString::number(chips)};
    const Run r = runProgram(QStringLiteral("python3"), arguments);
    if (r.status != 0 || r.out.count('\n') != chips)
        qFatal("scripts/gen-catalogue failed: %s", r.err.constData());
    return r.out;
}

} // namespace TestHelpers

#endif // DEV_TESTHELPERS_H
