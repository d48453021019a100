#include "ListedWorkspace.h"

#include <QDesktopServices>
#include <QUrl>

namespace velmora {

// The app id our own windows carry (QGuiApplication::desktopFileName).
static const QString kOwnAppId = QStringLiteral("velmora");

Application applicationForAppId(DesktopEntries& entries, const QString& appId)
{
    WindowFacts facts;
    facts.gtkApplicationId = appId;
    facts.wmInstance = appId;
    facts.wmClass = appId;
    facts.processUnknown = true;
    return entries.applicationForWindow(facts);
}

void ListedWorkspace::windowsChanged()
{
    QString front;
    const QList<Window> all = windows();
    for (const Window& window : all) {
        if (window.active)
            front = window.appId;
    }
    if (m_frontKnown && front == m_lastFront)
        return;
    m_frontKnown = true;
    m_lastFront = front;
    // Not from inside the protocol object's own event: a listener asks again.
    QMetaObject::invokeMethod(this, &Workspace::frontApplicationChanged, Qt::QueuedConnection);
}

Application ListedWorkspace::applicationOfAppId(const QString& appId)
{
    if (appId.isEmpty() || appId == kOwnAppId)
        return {};
    return applicationForAppId(m_entries, appId);
}

Application ListedWorkspace::frontmostApplication()
{
    const QList<Window> all = windows();
    for (const Window& window : all) {
        if (window.active)
            return applicationOfAppId(window.appId);
    }
    return {};
}

QStringList ListedWorkspace::runningApplications()
{
    QStringList names;
    const QList<Window> all = windows();
    for (const Window& window : all) {
        const Application application = applicationOfAppId(window.appId);
        if (application.isValid() && !names.contains(application.name))
            names << application.name;
    }
    return names;
}

QList<Application> ListedWorkspace::installedApplications()
{
    return m_entries.installed();
}

Application ListedWorkspace::applicationFor(const QString& desktopFileOrName)
{
    return m_entries.applicationFor(desktopFileOrName);
}

bool ListedWorkspace::launch(const Application& application)
{
    QString error;
    if (m_entries.launch(application, &error))
        return true;
    log(QStringLiteral("Could not launch %1: %2").arg(application.name, error));
    return false;
}

bool ListedWorkspace::openUrl(const QString& address)
{
    const QUrl url(address, QUrl::TolerantMode);
    if (url.isValid() && QDesktopServices::openUrl(url))
        return true;
    log(QStringLiteral("Could not open %1").arg(address));
    return false;
}

void ListedWorkspace::log(const QString& line) const
{
    if (m_log)
        m_log(line);
}

} // namespace velmora
