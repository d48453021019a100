#include "ScreenSaverDisplayAwake.h"

#include <QDBusConnection>
#include <QDBusMessage>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr int DBusTimeoutMs = 500;
const auto Service = u"org.freedesktop.ScreenSaver"_s;

} // namespace

ScreenSaverDisplayAwake::ScreenSaverDisplayAwake(const QString& applicationName)
    : m_applicationName(applicationName)
{
}

ScreenSaverDisplayAwake::~ScreenSaverDisplayAwake()
{
    release();
}

void ScreenSaverDisplayAwake::take(const QString& reason)
{
    m_held = true;
    // Taken again while a service has already granted it: nothing to do. Taken again
    // after no service answered: the desktop may have come up since, so ask again.
    if (m_cookie)
        return;
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    // GNOME and KDE serve the interface at its own path; some older daemons only at
    // /ScreenSaver.
    for (const QString& path : {u"/org/freedesktop/ScreenSaver"_s, u"/ScreenSaver"_s}) {
        QDBusMessage call = QDBusMessage::createMethodCall(Service, path, Service, u"Inhibit"_s);
        call << m_applicationName << reason;
        const QDBusMessage reply = bus.call(call, QDBus::Block, DBusTimeoutMs);
        if (reply.type() == QDBusMessage::ReplyMessage && reply.signature() == u"u") {
            m_path = path;
            m_cookie = reply.arguments().constFirst().toUInt();
            return;
        }
        if (reply.errorName() == u"org.freedesktop.DBus.Error.ServiceUnknown" ||
            reply.errorName() == u"org.freedesktop.DBus.Error.NoReply")
            return;
    }
}

void ScreenSaverDisplayAwake::release()
{
    m_held = false;
    if (!m_cookie)
        return;
    QDBusMessage call = QDBusMessage::createMethodCall(Service, m_path, Service, u"UnInhibit"_s);
    call << *m_cookie;
    m_cookie.reset();
    // Nothing waits for the answer.
    QDBusConnection::sessionBus().send(call);
}

bool ScreenSaverDisplayAwake::isHeld() const
{
    return m_held;
}

} // namespace velmora
