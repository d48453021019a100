#include "DesktopNotifier.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QVariantMap>

#include <canberra.h>

using namespace Qt::StringLiterals;

namespace velmora {

DesktopNotifier::DesktopNotifier(const QString& soundsDirectory)
    : m_soundsDirectory(soundsDirectory)
{
}

DesktopNotifier::~DesktopNotifier()
{
    if (m_canberra)
        ca_context_destroy(m_canberra);
}

void DesktopNotifier::notify(const QString& title, const QString& body)
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    const QString service = u"org.freedesktop.Notifications"_s;
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, u"/org/freedesktop/Notifications"_s, service, u"Notify"_s);
    const QVariantMap hints{
        {u"sound-name"_s, u"message-new-instant"_s},
        {u"desktop-entry"_s, u"velmora"_s},
    };
    call << u"Velmora"_s << uint(0) << QString() << title << body << QStringList() << hints << -1;
    // Nobody waits for the notification's id; a missing server just drops it.
    bus.send(call);
}

void DesktopNotifier::playSound(const QString& name)
{
    // The name becomes part of a path: only plain names are played.
    static const QRegularExpression plainName(u"^[A-Za-z0-9_-][A-Za-z0-9_.-]*$"_s);
    if (!plainName.match(name).hasMatch())
        return;
    if (!m_canberra) {
        if (ca_context_create(&m_canberra) != CA_SUCCESS) {
            m_canberra = nullptr;
            return;
        }
        ca_context_change_props(m_canberra, CA_PROP_APPLICATION_NAME, "Velmora", CA_PROP_APPLICATION_ID,
                                "velmora", nullptr);
    }
    const QString file = soundFile(name);
    if (!file.isEmpty()) {
        ca_context_play(m_canberra, 0, CA_PROP_MEDIA_FILENAME, QFile::encodeName(file).constData(),
                        CA_PROP_MEDIA_ROLE, "event", nullptr);
    } else {
        ca_context_play(m_canberra, 0, CA_PROP_EVENT_ID, name.toUtf8().constData(), nullptr);
    }
}

QString DesktopNotifier::soundFile(const QString& name) const
{
    if (m_soundsDirectory.isEmpty())
        return {};
    const QDir directory(m_soundsDirectory);
    for (const QString& suffix : {u".oga"_s, u".wav"_s}) {
        const QString path = directory.filePath(name + suffix);
        if (QFileInfo(path).isFile())
            return path;
    }
    return {};
}

} // namespace velmora
