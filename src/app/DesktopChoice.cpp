#include "DesktopChoice.h"

#include "CommandHotKeys.h"
#include "DesktopEntries.h"
#include "KdeDesktopEntry.h"
#include "LayerShellIntegration.h"
#include "PlasmaWorkspace.h"
#include "PortalHotKeys.h"
#include "WaylandLockShield.h"
#include "WlrWorkspace.h"
#include "X11HotKeys.h"
#include "X11Workspace.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QStandardPaths>
#include <QtPlugin>

Q_IMPORT_PLUGIN(VelmoraShellIntegrationPlugin)

namespace velmora {

static bool startsOnWayland()
{
    const QString platform = qEnvironmentVariable("QT_QPA_PLATFORM");
    if (!platform.isEmpty())
        return platform.startsWith(QLatin1String("wayland"));
    return qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
           qEnvironmentVariable("XDG_SESSION_TYPE") == QLatin1String("wayland");
}

QString prepareDesktop()
{
    if (!startsOnWayland())
        return {};
    if (!qEnvironmentVariableIsSet("QT_WAYLAND_SHELL_INTEGRATION"))
        qputenv("QT_WAYLAND_SHELL_INTEGRATION",
                QByteArray(wayland::kShellIntegrationKey) + QByteArrayLiteral(";xdg-shell"));
    // KWin reads which restricted interfaces a program may have when it connects.
    return ensureKdeDesktopEntry(QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath(),
                                 DesktopEntries::applicationFolders());
}

// GNOME offers none of the protocols below; our shell extension stands in for
// all three ports while it answers.
static bool tookGnomeShell(Desktop& desktop)
{
    GnomeShellDesktop::Probe gnome =
        GnomeShellDesktop::connect(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                                   QStringLiteral("/gnome-shell/extensions"));
    if (!gnome.isGnome)
        return false;
    desktop.chosen << gnome.logLine;
    desktop.needsNewLogin = gnome.needsNewLogin;
    if (!gnome.desktop)
        return false;
    desktop.gnome = std::move(gnome.desktop);
    desktop.lockShield = &desktop.gnome->lockShield();
    desktop.workspace = &desktop.gnome->workspace();
    desktop.hotKeys = &desktop.gnome->hotKeys();
    GnomeShellDesktop* shell = desktop.gnome.get();
    desktop.setLog = [shell](std::function<void(const QString&)> log) { shell->setLog(std::move(log)); };
    desktop.chosen << QStringLiteral("Lock, workspace and hot keys: Velmora's GNOME Shell extension");
    return true;
}

static void keep(Desktop& desktop, std::unique_ptr<HotKeys> hotKeys, std::unique_ptr<Workspace> workspace,
                 std::unique_ptr<LockShield> lockShield)
{
    desktop.hotKeys = hotKeys.get();
    desktop.workspace = workspace.get();
    desktop.lockShield = lockShield.get();
    desktop.ownHotKeys = std::move(hotKeys);
    desktop.ownWorkspace = std::move(workspace);
    desktop.ownLockShield = std::move(lockShield);
}

QString resetSocketPath(const QString& runtimeFolder)
{
    return runtimeFolder + QStringLiteral("/velmora.reset");
}

int sendResetCommand(const QString& socketPath)
{
    return CommandHotKeys::sendReset(socketPath);
}

Desktop chooseDesktop(const QString& runtimeFolder, const QString& prepared)
{
    Desktop desktop;
    if (QGuiApplication::platformName() != QLatin1String("wayland")) {
        auto workspace = std::make_unique<X11Workspace>();
        X11Workspace* x11 = workspace.get();
        desktop.setLog = [x11](std::function<void(const QString&)> log) { x11->setLog(std::move(log)); };
        keep(desktop, std::make_unique<X11HotKeys>(), std::move(workspace), nullptr);
        desktop.chosen << QStringLiteral("Desktop: X11 (%1)").arg(QGuiApplication::platformName());
        return desktop;
    }

    desktop.chosen << QStringLiteral("Desktop: Wayland");
    if (tookGnomeShell(desktop))
        return desktop;
    auto shield = std::make_unique<WaylandLockShield>();
    desktop.chosen << (shield->holds()
                           ? QStringLiteral("Lock: layer-shell overlay surfaces")
                           : QStringLiteral("Lock: full-screen windows (no layer shell offered)"));

    // The desktop's own shortcut settings where it has them; the command always.
    const bool portal = PortalHotKeys::offered();
    std::unique_ptr<CommandHotKeys> hotKeys =
        portal ? std::make_unique<PortalHotKeys>(resetSocketPath(runtimeFolder))
               : std::make_unique<CommandHotKeys>(resetSocketPath(runtimeFolder));
    desktop.chosen << QStringLiteral("Hot keys: %1the command velmora --reset%2")
                          .arg(portal ? QStringLiteral("the GlobalShortcuts portal and ") : QString(),
                               hotKeys->isListening() ? QString() : QStringLiteral(" (could not listen)"));
    CommandHotKeys* command = hotKeys.get();

    std::function<void(std::function<void(const QString&)>)> setWorkspaceLog;
    std::unique_ptr<ListedWorkspace> listed = std::make_unique<WlrWorkspace>();
    QString list =
        QStringLiteral("wlr-foreign-toplevel-management%1")
            .arg(qEnvironmentVariableIsSet("SWAYSOCK") ? QStringLiteral(", hiding through sway's IPC")
                                                       : QString());
    if (!listed->isActive()) {
        listed = std::make_unique<PlasmaWorkspace>();
        list = QStringLiteral("org_kde_plasma_window_management");
    }
    if (!prepared.isEmpty())
        desktop.chosen << prepared;
    if (listed->isActive()) {
        desktop.chosen << QStringLiteral("Workspace: %1").arg(list);
        ListedWorkspace* workspace = listed.get();
        setWorkspaceLog = [workspace](auto log) { workspace->setLog(std::move(log)); };
        keep(desktop, std::move(hotKeys), std::move(listed), std::move(shield));
    } else {
        // Without a window list there is no front application and nothing to
        // hide; desktop entries, launching and addresses still work.
        auto entriesOnly = std::make_unique<X11Workspace>();
        X11Workspace* workspace = entriesOnly.get();
        setWorkspaceLog = [workspace](auto log) { workspace->setLog(std::move(log)); };
        keep(desktop, std::move(hotKeys), std::move(entriesOnly), std::move(shield));
        desktop.chosen << QStringLiteral("Workspace: none offered (no front application, no hiding)");
    }
    desktop.setLog = [command, setWorkspaceLog](std::function<void(const QString&)> log) {
        command->setLog(log);
        setWorkspaceLog(std::move(log));
    };
    return desktop;
}

} // namespace velmora
