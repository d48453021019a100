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

// What preparing did, for the debug log once there is one.
static QString g_prepared;

void prepareDesktop()
{
    if (!startsOnWayland())
        return;
    if (!qEnvironmentVariableIsSet("QT_WAYLAND_SHELL_INTEGRATION"))
        qputenv("QT_WAYLAND_SHELL_INTEGRATION",
                QByteArray(wayland::kShellIntegrationKey) + QByteArrayLiteral(";xdg-shell"));
    // KWin reads which restricted interfaces a program may have when it connects.
    g_prepared = ensureKdeDesktopEntry(QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath(),
                                       DesktopEntries::applicationFolders());
}

QString resetSocketPath(const QString& runtimeFolder)
{
    return runtimeFolder + QStringLiteral("/velmora.reset");
}

int sendResetCommand(const QString& socketPath)
{
    return CommandHotKeys::sendReset(socketPath);
}

Desktop chooseDesktop(const QString& runtimeFolder)
{
    Desktop desktop;
    if (QGuiApplication::platformName() != QLatin1String("wayland")) {
        auto hotKeys = std::make_unique<X11HotKeys>();
        auto workspace = std::make_unique<X11Workspace>();
        X11Workspace* x11 = workspace.get();
        desktop.setLog = [x11](std::function<void(const QString&)> log) { x11->setLog(std::move(log)); };
        desktop.hotKeys = std::move(hotKeys);
        desktop.workspace = std::move(workspace);
        desktop.chosen << QStringLiteral("Desktop: X11 (%1)").arg(QGuiApplication::platformName());
        return desktop;
    }

    desktop.chosen << QStringLiteral("Desktop: Wayland");
    auto shield = std::make_unique<WaylandLockShield>();
    desktop.chosen << (shield->holds()
                           ? QStringLiteral("Lock: layer-shell overlay surfaces")
                           : QStringLiteral("Lock: full-screen windows (no layer shell offered)"));
    desktop.lockShield = std::move(shield);

    // The desktop's own shortcut settings where it has them; the command always.
    const bool portal = PortalHotKeys::offered();
    std::unique_ptr<CommandHotKeys> hotKeys =
        portal ? std::make_unique<PortalHotKeys>(resetSocketPath(runtimeFolder))
               : std::make_unique<CommandHotKeys>(resetSocketPath(runtimeFolder));
    desktop.chosen << QStringLiteral("Hot keys: %1the command velmora --reset%2")
                          .arg(portal ? QStringLiteral("the GlobalShortcuts portal and ") : QString(),
                               hotKeys->isListening() ? QString() : QStringLiteral(" (could not listen)"));
    CommandHotKeys* command = hotKeys.get();
    desktop.hotKeys = std::move(hotKeys);

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
    if (!g_prepared.isEmpty())
        desktop.chosen << g_prepared;
    if (listed->isActive()) {
        desktop.chosen << QStringLiteral("Workspace: %1").arg(list);
        ListedWorkspace* workspace = listed.get();
        setWorkspaceLog = [workspace](auto log) { workspace->setLog(std::move(log)); };
        desktop.workspace = std::move(listed);
    } else {
        // Without a window list there is no front application and nothing to
        // hide; desktop entries, launching and addresses still work.
        auto entriesOnly = std::make_unique<X11Workspace>();
        X11Workspace* workspace = entriesOnly.get();
        setWorkspaceLog = [workspace](auto log) { workspace->setLog(std::move(log)); };
        desktop.workspace = std::move(entriesOnly);
        desktop.chosen << QStringLiteral("Workspace: none offered (no front application, no hiding)");
    }
    desktop.setLog = [command, setWorkspaceLog](std::function<void(const QString&)> log) {
        command->setLog(log);
        setWorkspaceLog(std::move(log));
    };
    return desktop;
}

} // namespace velmora
