#pragma once

#include "DesktopEntries.h"
#include "Workspace.h"

#include <functional>
#include <memory>

namespace velmora {

class SwayIpc;

// The desktop as a wlroots compositor shows it (sway, Hyprland, labwc, wayfire,
// river): the windows and which one is active come from
// wlr-foreign-toplevel-management; a window's app id names its application.
// Hiding minimises, except under sway, which ignores that: there the
// application's windows go to the scratchpad through sway's IPC.
class WlrWorkspace : public Workspace
{
    Q_OBJECT
public:
    // Needs the QGuiApplication on the wayland platform.
    explicit WlrWorkspace(QObject* parent = nullptr);
    ~WlrWorkspace() override;

    // Whether the compositor offers the window list.
    bool isActive() const;

    Application frontmostApplication() override;
    void hide(const Application& application) override;
    QStringList runningApplications() override;
    QList<Application> installedApplications() override;
    Application applicationFor(const QString& desktopFileOrName) override;
    bool launch(const Application& application) override;
    bool openUrl(const QString& address) override;

    void setLog(std::function<void(const QString&)> log);

    // One window as the compositor announces it.
    struct Toplevel
    {
        QString appId;
        bool activated = false;
    };
    // Called by the protocol objects.
    void toplevelsChanged();

private:
    class Manager;
    class Handle;
    friend class Manager;
    friend class Handle;

    Application applicationOfAppId(const QString& appId);
    void log(const QString& line) const;

    std::unique_ptr<Manager> m_manager;
    DesktopEntries m_entries;
    std::unique_ptr<SwayIpc> m_sway;
    QString m_lastFront;
    std::function<void(const QString&)> m_log;
};

// An app id as the desktop-entry index knows a window: the id the toolkit set,
// also taken as the window class (StartupWMClass, then lower-cased id). Without an
// entry the lower-cased app id names the application.
Application applicationForAppId(DesktopEntries& entries, const QString& appId);

} // namespace velmora
