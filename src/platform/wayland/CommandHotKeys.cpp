#include "CommandHotKeys.h"

#include <QLocalSocket>
#include <QPointer>
#include <QTextStream>

namespace velmora {

static const QByteArray kReset = QByteArrayLiteral("reset\n");
static const QByteArray kDone = QByteArrayLiteral("done\n");

CommandHotKeys::CommandHotKeys(const QString& socketPath, QObject* parent)
    : QObject(parent)
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    QLocalServer::removeServer(socketPath); // a stale one of ours; the single instance guards the name
    m_server.listen(socketPath);
    connect(&m_server, &QLocalServer::newConnection, this, &CommandHotKeys::answer);
}

quint32 CommandHotKeys::registerChord(int, Qt::KeyboardModifiers, Handler pressed, Handler released)
{
    const quint32 handle = ++m_next;
    m_chords.insert(handle, Chord{std::move(pressed), std::move(released)});
    return handle;
}

void CommandHotKeys::unregisterChord(quint32 handle)
{
    m_chords.remove(handle);
}

void CommandHotKeys::fire(quint32 handle, bool pressed)
{
    // A copy: a handler may unregister its own chord.
    const Chord chord = m_chords.value(handle);
    const Handler& handler = pressed ? chord.pressed : chord.released;
    if (handler)
        handler();
}

void CommandHotKeys::answer()
{
    while (QLocalSocket* socket = m_server.nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            if (socket->bytesAvailable() > 64 || !socket->canReadLine()) {
                if (socket->bytesAvailable() > 64)
                    socket->abort();
                return;
            }
            if (socket->readLine() != kReset) {
                if (m_log)
                    m_log(QStringLiteral("Reset command: unknown request ignored"));
                socket->abort();
                return;
            }
            if (m_log)
                m_log(QStringLiteral("Reset command received"));
            socket->write(kDone);
            socket->flush();
            const QList<quint32> handles = m_chords.keys();
            for (quint32 handle : handles) {
                fire(handle, true);
                fire(handle, false);
            }
        });
    }
}

int CommandHotKeys::sendReset(const QString& socketPath)
{
    QTextStream err(stderr);
    QLocalSocket socket;
    socket.connectToServer(socketPath);
    if (!socket.waitForConnected(2'000)) {
        err << "velmora: no running Velmora to reset (" << socket.errorString() << ")" << Qt::endl;
        return 1;
    }
    socket.write(kReset);
    socket.flush();
    while (!socket.canReadLine() && socket.waitForReadyRead(5'000)) {
    }
    if (socket.readLine() != kDone) {
        err << "velmora: the running Velmora did not answer" << Qt::endl;
        return 1;
    }
    return 0;
}

} // namespace velmora
