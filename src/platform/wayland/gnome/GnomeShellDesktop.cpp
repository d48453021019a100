#include "GnomeShellDesktop.h"

#include "GnomeExtensionInstall.h"
#include "GnomePorts.h"
#include "GnomeShellBus.h"
#include "Notifier.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDir>
#include <QFile>
#include <QSaveFile>

namespace velmora {

static QString shellVersion(const QDBusConnection& bus)
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.gnome.Shell"), QStringLiteral("/org/gnome/Shell"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    message.setArguments({QStringLiteral("org.gnome.Shell"), QStringLiteral("ShellVersion")});
    const QDBusMessage reply = bus.call(message, QDBus::Block, 2'000);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    return reply.arguments().constFirst().value<QDBusVariant>().variant().toString();
}

GnomeShellDesktop::GnomeShellDesktop() = default;
GnomeShellDesktop::~GnomeShellDesktop() = default;

GnomeShellDesktop::Probe GnomeShellDesktop::connect(const QString& extensionsFolder)
{
    Probe probe;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !bus.interface() ||
        !bus.interface()->isServiceRegistered(QStringLiteral("org.gnome.Shell")))
        return probe;
    probe.isGnome = true;
    const QString version = shellVersion(bus);
    const int major = GnomeExtensionInstall::majorOf(version);
    const QString uuid = QLatin1String(GnomeExtensionInstall::kUuid);
    const int carried = GnomeExtensionInstall::carriedVersion();

    QStringList notes;
    const QString systemFolder = QStringLiteral("/usr/share/gnome-shell/extensions/") + uuid;
    bool written = false;
    if (major > 0 && GnomeExtensionInstall::installedVersion(systemFolder, major) < carried) {
        QString error;
        written =
            GnomeExtensionInstall::installIfOlder(extensionsFolder + QLatin1Char('/') + uuid, major, &error);
        if (written)
            notes << QStringLiteral("installed version %1 for the next login").arg(carried);
        else if (!error.isEmpty())
            notes << QStringLiteral("could not install it: %1").arg(error);
    }
    QString error;
    if (major > 0 && !GnomeExtensionInstall::enable(&error))
        notes << QStringLiteral("could not enable it: %1").arg(error);

    auto shellBus = std::make_unique<GnomeShellBus>(bus);
    const QString answered = shellBus->version();
    if (answered.isEmpty()) {
        // GNOME finds a new user extension only at the next login.
        probe.needsNewLogin = true;
        probe.logLine =
            QStringLiteral("GNOME Shell %1: Velmora's extension does not answer%2")
                .arg(version,
                     notes.isEmpty() ? QString() : QStringLiteral("; ") + notes.join(QStringLiteral("; ")));
        return probe;
    }
    probe.logLine =
        QStringLiteral("GNOME Shell %1: Velmora's extension answered, version %2%3")
            .arg(version, answered,
                 notes.isEmpty() ? QString() : QStringLiteral("; ") + notes.join(QStringLiteral("; ")));
    std::unique_ptr<GnomeShellDesktop> desktop(new GnomeShellDesktop);
    desktop->m_bus = std::move(shellBus);
    desktop->m_shield = std::make_unique<GnomeLockShield>(*desktop->m_bus);
    desktop->m_workspace = std::make_unique<GnomeWorkspace>(*desktop->m_bus);
    desktop->m_hotKeys = std::make_unique<GnomeHotKeys>(*desktop->m_bus);
    probe.desktop = std::move(desktop);
    return probe;
}

void GnomeShellDesktop::tellOnceToLogInAgain(Notifier& notifier, const QString& stateFolder)
{
    const QString marker = stateFolder + QStringLiteral("/gnome-extension-login-asked");
    const QByteArray version = QByteArray::number(GnomeExtensionInstall::carriedVersion());
    QFile told(marker);
    if (told.open(QIODevice::ReadOnly) && told.read(32).trimmed() == version)
        return;
    notifier.notify(
        QStringLiteral("Log out and in again for Velmora's lock"),
        QStringLiteral("GNOME takes up Velmora's extension at the next login. Until then the lock can "
                       "be left on this desktop."));
    QDir().mkpath(stateFolder);
    QSaveFile save(marker);
    if (save.open(QIODevice::WriteOnly)) {
        save.write(version + '\n');
        save.commit();
    }
}

void GnomeShellDesktop::setLog(std::function<void(const QString&)> log)
{
    m_bus->setLog(std::move(log));
}

LockShield& GnomeShellDesktop::lockShield()
{
    return *m_shield;
}

Workspace& GnomeShellDesktop::workspace()
{
    return *m_workspace;
}

HotKeys& GnomeShellDesktop::hotKeys()
{
    return *m_hotKeys;
}

} // namespace velmora
