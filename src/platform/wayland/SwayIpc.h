#pragma once

#include <functional>
#include <QByteArray>
#include <QLocalSocket>
#include <QObject>

namespace velmora {

// sway's own socket ($SWAYSOCK): commands such as moving an application's
// windows to the scratchpad, which is how a window is hidden there (sway
// ignores minimise requests).
class SwayIpc : public QObject
{
    Q_OBJECT
public:
    explicit SwayIpc(QString socketPath, QObject* parent = nullptr);

    // The socket of the sway this session runs in, empty elsewhere.
    static QString socketFromEnvironment();

    // Runs COMMAND; failures reach the log.
    void run(const QString& command);
    void setLog(std::function<void(const QString&)> log) { m_log = std::move(log); }

    // One message in sway's framing: the magic, the payload's length and type,
    // the payload (native byte order).
    static QByteArray frame(quint32 type, const QByteArray& payload);

private:
    void readReplies();

    QString m_path;
    QLocalSocket m_socket;
    QByteArray m_pending;
    QByteArray m_received;
    std::function<void(const QString&)> m_log;
};

} // namespace velmora
