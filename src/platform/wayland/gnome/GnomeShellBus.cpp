#include "GnomeShellBus.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace velmora {

static constexpr int kAnswerTimeoutMs = 1'000;

GnomeShellBus::GnomeShellBus(const QDBusConnection& connection, QObject* parent)
    : QObject(parent)
    , m_connection(connection)
    , m_watcher(QLatin1String(kService), connection, QDBusServiceWatcher::WatchForRegistration)
{
    connect(&m_watcher, &QDBusServiceWatcher::serviceRegistered, this, &GnomeShellBus::extensionReturned);
    m_connection.connect(QLatin1String(kService), QLatin1String(kPath), QLatin1String(kInterface),
                         QStringLiteral("FrontWindowChanged"), this, SLOT(onFrontWindowChanged()));
    m_connection.connect(QLatin1String(kService), QLatin1String(kPath), QLatin1String(kInterface),
                         QStringLiteral("ChordPressed"), this, SLOT(onChordPressed(QString)));
}

void GnomeShellBus::log(const QString& line) const
{
    if (m_log)
        m_log(line);
}

QString GnomeShellBus::version()
{
    return ask(QStringLiteral("Version")).toString();
}

void GnomeShellBus::send(const QString& method, const QVariantList& arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(QLatin1String(kService), QLatin1String(kPath),
                                                          QLatin1String(kInterface), method);
    message.setArguments(arguments);
    auto* watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(message, kAnswerTimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, method](QDBusPendingCallWatcher* call) {
        if (call->isError())
            log(QStringLiteral("GNOME Shell extension refused %1: %2").arg(method, call->error().message()));
        call->deleteLater();
    });
}

QVariant GnomeShellBus::ask(const QString& method, const QVariantList& arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(QLatin1String(kService), QLatin1String(kPath),
                                                          QLatin1String(kInterface), method);
    message.setArguments(arguments);
    const QDBusMessage reply = m_connection.call(message, QDBus::Block, kAnswerTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    return reply.arguments().constFirst();
}

void GnomeShellBus::onFrontWindowChanged()
{
    Q_EMIT frontWindowChanged();
}

void GnomeShellBus::onChordPressed(const QString& accelerator)
{
    Q_EMIT chordPressed(accelerator);
}

} // namespace velmora
