#ifndef DEV_TESTHELPERS_H
#define DEV_TESTHELPERS_H

#include "chipinfo.h"
#include "devicedb.h"

#include <QAbstractItemModel>
#include <QByteArray>
#include <QFile>
#include <QMutex>
#include <QMutexLocker>
#include <QProcess>
#include <QSignalSpy>
#include <QString>
#include <QStringList>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace TestHelpers {

/// Captures every Qt message (from any thread) while alive, as the default
/// handler would print its text; restores the previous handler afterwards.
class MessageCapture
{
public:
    MessageCapture() : m_previous(qInstallMessageHandler(&MessageCapture::handler)) { current() = this; }
    ~MessageCapture()
    {
        qInstallMessageHandler(m_previous);
        current() = nullptr;
    }
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;

    int count() const
    {
        QMutexLocker lock(&m_mutex);
        return m_all;
    }
    /// The texts of the critical messages, in order.
    QStringList criticals() const
    {
        QMutexLocker lock(&m_mutex);
        return m_criticals;
    }

private:
    static MessageCapture*& current()
    {
        static MessageCapture* instance = nullptr;
        return instance;
    }
    static void handler(QtMsgType type, const QMessageLogContext&, const QString& text)
    {
        if (MessageCapture* self = current()) {
            QMutexLocker lock(&self->m_mutex);
            ++self->m_all;
            if (type == QtCriticalMsg)
                self->m_criticals << text;
        }
    }

    mutable QMutex m_mutex;
    int m_all = 0;
    QStringList m_criticals;
    QtMessageHandler m_previous;
};

/// Writes @p bytes to @p path, replacing it. Returns false on failure.
inline bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(bytes) == bytes.size();
}

/// A complete data-file line of nineteen columns with the given key values.
inline QByteArray line19(const QByteArray& id, const QByteArray& pn, const QByteArray& version = QByteArray(),
                         const QByteArray& series = "S1", const QByteArray& matchKey = "MK")
{
    return id + ',' + pn + ',' + series + ',' + matchKey + ",DEV1," + version
        + ",PKG1,1.0V,C6,AUX,100,200,300,4Kb,5Kb,6Kb,7Kb,8,9\n";
}

/// A line with the values the selector filters on; the rest are fixed.
inline QByteArray chipLine(const QByteArray& id, const QByteArray& pn, const QByteArray& series,
                           const QByteArray& device, const QByteArray& version, const QByteArray& package,
                           const QByteArray& speed = "C6")
{
    return id + ',' + pn + ',' + series + ",MK," + device + ',' + version + ',' + package + ",1.0V," + speed
        + ",AUX,100,200,300,4Kb,5Kb,6Kb,7Kb,8,9\n";
}

/// Data files in a temporary directory, and databases loaded from them.
class Catalogues
{
public:
    bool isValid() const { return m_dir.isValid(); }
    QString path(const QString& name) const { return m_dir.filePath(name); }
    /// Writes @p bytes to a new file and returns its path.
    QString write(const QByteArray& bytes)
    {
        const QString p = path(QStringLiteral("data%1.csv").arg(++m_count));
        if (!writeFile(p, bytes))
            qFatal("cannot write test fixture %s", qPrintable(p));
        return p;
    }
    std::unique_ptr<DEV::DeviceDb> load(const QByteArray& bytes)
    {
        return std::unique_ptr<DEV::DeviceDb>(new DEV::DeviceDb(write(bytes)));
    }

private:
    QTemporaryDir m_dir;
    int m_count = 0;
};

/// Every member of a record, nulls told from empties, for whole-record comparison.
inline QStringList fields(const DEV::ChipInfo& c)
{
    QStringList out;
    for (const QString* m : {&c.deviceId, &c.partNumber, &c.series, &c.matchKey, &c.device, &c.deviceVersion,
                             &c.package, &c.voltage, &c.speed, &c.auxiliary})
        out << (m->isNull() ? QStringLiteral("<null>") : *m);
    return out << QString::number(c.resources.size()) + QLatin1Char(':') + c.resources.join(QLatin1Char('|'));
}

template <typename Chip>
QStringList ids(const QList<Chip>& chips)
{
    QStringList out;
    for (const DEV::ChipInfo& c : chips)
        out << c.deviceId;
    return out;
}

/// The device ids that a selectedDeviceChanged() spy has seen; an empty choice reads "".
inline QStringList emittedIds(const QSignalSpy& spy)
{
    QStringList out;
    for (const QList<QVariant>& args : spy)
        out << qvariant_cast<DEV::DeviceArg>(args.at(0)).deviceId;
    return out;
}

inline QStringList columnTexts(const QAbstractItemModel& model, int column)
{
    QStringList out;
    for (int row = 0; row < model.rowCount(); ++row)
        out << model.index(row, column).data().toString();
    return out;
}

inline void clickRow(QTableView* table, int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    const QRect cell = table->visualRect(table->model()->index(row, 0));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, modifiers, cell.center());
}

/// What a program run as a process left: exit status (-1 when it did not
/// finish normally), standard output and standard error.
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

/// The non-empty lines of a program's output.
inline QStringList lines(const QByteArray& text)
{
    return QString::fromUtf8(text).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

} // namespace TestHelpers

#endif // DEV_TESTHELPERS_H
