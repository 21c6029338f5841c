#ifndef DEV_TESTHELPERS_H
#define DEV_TESTHELPERS_H

#include <QByteArray>
#include <QFile>
#include <QMutex>
#include <QMutexLocker>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QtGlobal>

namespace TestHelpers {

/**
 * Captures every Qt message while alive, from any thread, in the exact text
 * the default handler would print (message text without the newline), and
 * with its type. Restores the previous handler on destruction.
 */
class MessageCapture
{
public:
    struct Message
    {
        QtMsgType type;
        QString text;
    };

    MessageCapture()
    {
        current() = this;
        m_previous = qInstallMessageHandler(&MessageCapture::handler);
    }
    ~MessageCapture()
    {
        qInstallMessageHandler(m_previous);
        current() = nullptr;
    }
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;

    QList<Message> messages() const
    {
        QMutexLocker lock(&m_mutex);
        return m_messages;
    }

    /// The texts of the critical messages, in order.
    QStringList criticals() const
    {
        QStringList out;
        for (const Message& m : messages()) {
            if (m.type == QtCriticalMsg)
                out << m.text;
        }
        return out;
    }

    int count() const { return messages().size(); }

private:
    static MessageCapture*& current()
    {
        static MessageCapture* instance = nullptr;
        return instance;
    }

    static void handler(QtMsgType type, const QMessageLogContext&, const QString& text)
    {
        MessageCapture* self = current();
        if (!self)
            return;
        QMutexLocker lock(&self->m_mutex);
        self->m_messages.append({type, text});
    }

    mutable QMutex m_mutex;
    QList<Message> m_messages;
    QtMessageHandler m_previous = nullptr;
};

/// Writes @p bytes to @p path, replacing it. Returns false on failure.
inline bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return f.write(bytes) == bytes.size();
}

/// A complete data-file line of nineteen columns with the given key values.
inline QByteArray line19(const QByteArray& id, const QByteArray& pn, const QByteArray& version = QByteArray(),
                         const QByteArray& series = "S1", const QByteArray& matchKey = "MK")
{
    return id + ',' + pn + ',' + series + ',' + matchKey + ",DEV1," + version
        + ",PKG1,1.0V,C6,AUX,100,200,300,4Kb,5Kb,6Kb,7Kb,8,9\n";
}

} // namespace TestHelpers

#endif // DEV_TESTHELPERS_H
