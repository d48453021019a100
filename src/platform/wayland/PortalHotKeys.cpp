#include "PortalHotKeys.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QKeySequence>

namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");

// One shortcut as BindShortcuts takes it: (sa{sv}).
struct PortalShortcut
{
    QString id;
    QVariantMap properties;
};

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}

} // namespace

Q_DECLARE_METATYPE(PortalShortcut)

namespace velmora {

PortalHotKeys::PortalHotKeys(const QString& socketPath, QObject* parent)
    : CommandHotKeys(socketPath, parent)
{
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.connect(kService, kPath, kInterface, QStringLiteral("Activated"), this,
                SLOT(activated(QDBusObjectPath, QString, qulonglong, QVariantMap)));
    bus.connect(kService, kPath, kInterface, QStringLiteral("Deactivated"), this,
                SLOT(deactivated(QDBusObjectPath, QString, qulonglong, QVariantMap)));
    QVariantMap options{{QStringLiteral("handle_token"), QStringLiteral("velmora%1").arg(++m_token)},
                        {QStringLiteral("session_handle_token"), QStringLiteral("velmora")}};
    request(QStringLiteral("CreateSession"), {options}, SLOT(sessionCreated(uint, QVariantMap)));
}

bool PortalHotKeys::offered()
{
    QDBusMessage get = QDBusMessage::createMethodCall(
        kService, kPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    get << kInterface << QStringLiteral("version");
    const QDBusMessage reply = QDBusConnection::sessionBus().call(get, QDBus::Block, 2'000);
    return reply.type() == QDBusMessage::ReplyMessage;
}

QString PortalHotKeys::trigger(int qtKey, Qt::KeyboardModifiers modifiers)
{
    QStringList parts;
    if (modifiers & Qt::ControlModifier)
        parts << QStringLiteral("CTRL");
    if (modifiers & Qt::AltModifier)
        parts << QStringLiteral("ALT");
    if (modifiers & Qt::ShiftModifier)
        parts << QStringLiteral("SHIFT");
    if (modifiers & Qt::MetaModifier)
        parts << QStringLiteral("LOGO");
    QString key = QKeySequence(qtKey).toString(QKeySequence::PortableText);
    if (key.size() == 1)
        key = key.toLower();
    parts << key;
    return parts.join(QLatin1Char('+'));
}

quint32 PortalHotKeys::registerChord(int qtKey, Qt::KeyboardModifiers modifiers, Handler pressed,
                                     Handler released)
{
    const quint32 handle =
        CommandHotKeys::registerChord(qtKey, modifiers, std::move(pressed), std::move(released));
    m_chords << Bound{handle, trigger(qtKey, modifiers)};
    bindAll();
    return handle;
}

void PortalHotKeys::request(const QString& method, QVariantList args, const char* slot)
{
    // The Request object's path is known before the call: listen first, so that
    // a quick answer is not missed.
    QString sender = QDBusConnection::sessionBus().baseService().mid(1);
    sender.replace(QLatin1Char('.'), QLatin1Char('_'));
    const QVariantMap options = args.last().toMap();
    const QString token = options.value(QStringLiteral("handle_token")).toString();
    QDBusConnection::sessionBus().connect(
        kService, kPath + QStringLiteral("/request/%1/%2").arg(sender, token),
        QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"), this, slot);
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kInterface, method);
    call.setArguments(args);
    QDBusConnection::sessionBus().asyncCall(call);
}

void PortalHotKeys::sessionCreated(uint response, const QVariantMap& results)
{
    if (response != 0) {
        if (m_log)
            m_log(QStringLiteral("GlobalShortcuts portal: no session (response %1)").arg(response));
        return;
    }
    m_session = results.value(QStringLiteral("session_handle")).toString();
    if (m_bindPending)
        bindAll();
}

void PortalHotKeys::bindAll()
{
    if (m_session.isEmpty()) {
        m_bindPending = true;
        return;
    }
    m_bindPending = false;
    QList<PortalShortcut> shortcuts;
    for (const Bound& chord : std::as_const(m_chords)) {
        shortcuts << PortalShortcut{QStringLiteral("chord-%1").arg(chord.handle),
                                    {{QStringLiteral("description"), QStringLiteral("Reset Velmora")},
                                     {QStringLiteral("preferred_trigger"), chord.trigger}}};
    }
    const QVariantMap options{{QStringLiteral("handle_token"), QStringLiteral("velmora%1").arg(++m_token)}};
    request(
        QStringLiteral("BindShortcuts"),
        {QVariant::fromValue(QDBusObjectPath(m_session)), QVariant::fromValue(shortcuts), QString(), options},
        SLOT(bound(uint, QVariantMap)));
}

void PortalHotKeys::bound(uint response, const QVariantMap&)
{
    if (m_log)
        m_log(response == 0
                  ? QStringLiteral("GlobalShortcuts portal: chords bound")
                  : QStringLiteral("GlobalShortcuts portal: binding refused (response %1)").arg(response));
}

static quint32 handleOf(const QString& id)
{
    return id.startsWith(QLatin1String("chord-")) ? id.mid(6).toUInt() : 0;
}

void PortalHotKeys::activated(const QDBusObjectPath& session, const QString& id, qulonglong,
                              const QVariantMap&)
{
    if (session.path() == m_session)
        fire(handleOf(id), true);
}

void PortalHotKeys::deactivated(const QDBusObjectPath& session, const QString& id, qulonglong,
                                const QVariantMap&)
{
    if (session.path() == m_session)
        fire(handleOf(id), false);
}

} // namespace velmora
