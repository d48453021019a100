#include "SwayIpc.h"

#include <cstring>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace velmora {

static constexpr char kMagic[] = "i3-ipc";
static constexpr int kMagicLength = 6;
static constexpr int kHeaderLength = kMagicLength + 8;
static constexpr quint32 kRunCommand = 0;

SwayIpc::SwayIpc(QString socketPath, QObject* parent)
    : QObject(parent)
    , m_path(std::move(socketPath))
{
    connect(&m_socket, &QLocalSocket::connected, this, [this] {
        m_socket.write(m_pending);
        m_pending.clear();
    });
    connect(&m_socket, &QLocalSocket::readyRead, this, &SwayIpc::readReplies);
    connect(&m_socket, &QLocalSocket::errorOccurred, this, [this] {
        if (m_log)
            m_log(QStringLiteral("sway IPC: %1").arg(m_socket.errorString()));
        m_pending.clear();
    });
}

QString SwayIpc::socketFromEnvironment()
{
    return qEnvironmentVariable("SWAYSOCK");
}

QByteArray SwayIpc::frame(quint32 type, const QByteArray& payload)
{
    QByteArray out(kMagic, kMagicLength);
    const quint32 length = quint32(payload.size());
    out.append(reinterpret_cast<const char*>(&length), sizeof length);
    out.append(reinterpret_cast<const char*>(&type), sizeof type);
    return out + payload;
}

void SwayIpc::run(const QString& command)
{
    const QByteArray message = frame(kRunCommand, command.toUtf8());
    if (m_socket.state() == QLocalSocket::ConnectedState) {
        m_socket.write(message);
        return;
    }
    m_pending += message;
    if (m_socket.state() == QLocalSocket::UnconnectedState)
        m_socket.connectToServer(m_path);
}

void SwayIpc::readReplies()
{
    m_received += m_socket.readAll();
    while (m_received.size() >= kHeaderLength) {
        quint32 length = 0;
        std::memcpy(&length, m_received.constData() + kMagicLength, sizeof length);
        if (!m_received.startsWith(kMagic) || length > 1u << 20) {
            m_received.clear(); // not sway speaking; forget it
            m_socket.abort();
            return;
        }
        if (m_received.size() < kHeaderLength + qsizetype(length))
            return;
        const QByteArray payload = m_received.mid(kHeaderLength, length);
        m_received.remove(0, kHeaderLength + length);
        // A command reply is one result per command: {"success": false, "error": "..."}.
        const QJsonArray results = QJsonDocument::fromJson(payload).array();
        for (const QJsonValue& result : results) {
            const QJsonObject object = result.toObject();
            if (!object.value(QLatin1String("success")).toBool(true) && m_log)
                m_log(QStringLiteral("sway IPC: %1").arg(object.value(QLatin1String("error")).toString()));
        }
    }
}

} // namespace velmora
