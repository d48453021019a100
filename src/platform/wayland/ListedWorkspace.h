#pragma once

#include "DesktopEntries.h"
#include "Workspace.h"

#include <functional>

namespace velmora {

// The desktop as a Wayland compositor that lists its windows shows it: each
// window's app id names its application (mapped to a desktop entry), one of them
// is active. The protocol of the list is the subclass's; the rest is shared.
class ListedWorkspace : public Workspace
{
    Q_OBJECT
public:
    using Workspace::Workspace;

    // Whether the compositor offers the window list.
    virtual bool isActive() const = 0;

    Application frontmostApplication() override;
    QStringList runningApplications() override;
    QList<Application> installedApplications() override;
    Application applicationFor(const QString& desktopFileOrName) override;
    bool launch(const Application& application) override;
    bool openUrl(const QString& address) override;

    virtual void setLog(std::function<void(const QString&)> log) { m_log = std::move(log); }

protected:
    struct Window
    {
        QString appId;
        bool active = false;
    };
    // The windows the compositor announced and has not closed.
    virtual QList<Window> windows() = 0;
    // Called by the subclass when a window changed: reports a new front application.
    void windowsChanged();
    // The application of an app id; invalid for our own windows.
    Application applicationOfAppId(const QString& appId);
    void log(const QString& line) const;

private:
    DesktopEntries m_entries;
    QString m_lastFront;
    bool m_frontKnown = false;
    std::function<void(const QString&)> m_log;
};

// An app id as the desktop-entry index knows a window: the id the toolkit set,
// also taken as the window class (StartupWMClass, then lower-cased id). Without an
// entry the lower-cased app id names the application.
Application applicationForAppId(DesktopEntries& entries, const QString& appId);

} // namespace velmora
