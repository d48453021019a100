#include "WlrWorkspace.h"

#include "SwayIpc.h"
#include "qwayland-wlr-foreign-toplevel-management-unstable-v1.h"

#include <QDesktopServices>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QUrl>
#include <QtWaylandClient/QWaylandClientExtensionTemplate>
#include <vector>

namespace velmora {

// The app id our own windows carry (QGuiApplication::desktopFileName).
static const QString kOwnAppId = QStringLiteral("velmora");

class WlrWorkspace::Handle : public QtWayland::zwlr_foreign_toplevel_handle_v1
{
public:
    Handle(WlrWorkspace& workspace, ::zwlr_foreign_toplevel_handle_v1* object)
        : QtWayland::zwlr_foreign_toplevel_handle_v1(object)
        , m_workspace(workspace)
    {
    }
    ~Handle() override { destroy(); }

    Toplevel current;
    bool closed = false;

protected:
    void zwlr_foreign_toplevel_handle_v1_app_id(const QString& appId) override { m_pending.appId = appId; }
    void zwlr_foreign_toplevel_handle_v1_state(wl_array* state) override
    {
        m_pending.activated = false;
        const auto* states = static_cast<const uint32_t*>(state->data);
        for (size_t i = 0; i < state->size / sizeof(uint32_t); ++i) {
            if (states[i] == state_activated)
                m_pending.activated = true;
        }
    }
    void zwlr_foreign_toplevel_handle_v1_done() override
    {
        current = m_pending;
        m_workspace.toplevelsChanged();
    }
    void zwlr_foreign_toplevel_handle_v1_closed() override
    {
        closed = true;
        m_workspace.toplevelsChanged();
    }

private:
    WlrWorkspace& m_workspace;
    Toplevel m_pending;
};

class WlrWorkspace::Manager : public QWaylandClientExtensionTemplate<Manager>,
                              public QtWayland::zwlr_foreign_toplevel_manager_v1
{
public:
    explicit Manager(WlrWorkspace& workspace)
        : QWaylandClientExtensionTemplate<Manager>(3)
        , m_workspace(workspace)
    {
        initialize();
    }
    ~Manager() override
    {
        handles.clear();
        if (isInitialized())
            stop();
    }

    std::vector<std::unique_ptr<Handle>> handles;

    void dropClosed()
    {
        std::erase_if(handles, [](const std::unique_ptr<Handle>& handle) { return handle->closed; });
    }

protected:
    void zwlr_foreign_toplevel_manager_v1_toplevel(::zwlr_foreign_toplevel_handle_v1* toplevel) override
    {
        handles.push_back(std::make_unique<Handle>(m_workspace, toplevel));
    }

private:
    WlrWorkspace& m_workspace;
};

Application applicationForAppId(DesktopEntries& entries, const QString& appId)
{
    WindowFacts facts;
    facts.gtkApplicationId = appId;
    facts.wmInstance = appId;
    facts.wmClass = appId;
    return entries.applicationForWindow(facts);
}

WlrWorkspace::WlrWorkspace(QObject* parent)
    : Workspace(parent)
    , m_manager(std::make_unique<Manager>(*this))
{
    const QString swaySocket = SwayIpc::socketFromEnvironment();
    if (!swaySocket.isEmpty())
        m_sway = std::make_unique<SwayIpc>(swaySocket);
}

WlrWorkspace::~WlrWorkspace() = default;

bool WlrWorkspace::isActive() const
{
    return m_manager->isActive();
}

void WlrWorkspace::setLog(std::function<void(const QString&)> log)
{
    m_log = log;
    if (m_sway)
        m_sway->setLog(std::move(log));
}

void WlrWorkspace::toplevelsChanged()
{
    QString front;
    for (const auto& handle : m_manager->handles) {
        if (!handle->closed && handle->current.activated)
            front = handle->current.appId;
    }
    if (front != m_lastFront) {
        m_lastFront = front;
        // Not from inside the protocol object's own event: a listener that asks
        // again drops closed windows.
        QMetaObject::invokeMethod(this, &Workspace::frontApplicationChanged, Qt::QueuedConnection);
    }
}

Application WlrWorkspace::applicationOfAppId(const QString& appId)
{
    if (appId.isEmpty() || appId == kOwnAppId)
        return {};
    return applicationForAppId(m_entries, appId);
}

Application WlrWorkspace::frontmostApplication()
{
    m_manager->dropClosed();
    for (const auto& handle : m_manager->handles) {
        if (handle->current.activated)
            return applicationOfAppId(handle->current.appId);
    }
    return {};
}

void WlrWorkspace::hide(const Application& application)
{
    m_manager->dropClosed();
    QStringList appIds;
    for (const auto& handle : m_manager->handles) {
        if (applicationOfAppId(handle->current.appId).name != application.name)
            continue;
        if (m_sway) {
            if (!appIds.contains(handle->current.appId))
                appIds << handle->current.appId;
        } else {
            handle->set_minimized();
        }
    }
    // sway matches app ids (native windows) and classes (X11 ones) by pattern.
    for (const QString& appId : std::as_const(appIds)) {
        const QString pattern = QRegularExpression::escape(appId).replace(QLatin1Char('"'), QLatin1String("\\\""));
        m_sway->run(QStringLiteral("[app_id=\"^%1$\"] move scratchpad").arg(pattern));
        m_sway->run(QStringLiteral("[class=\"^%1$\"] move scratchpad").arg(pattern));
    }
    if (!appIds.isEmpty())
        log(QStringLiteral("Hid %1 in sway's scratchpad").arg(application.name));
}

QStringList WlrWorkspace::runningApplications()
{
    m_manager->dropClosed();
    QStringList names;
    for (const auto& handle : m_manager->handles) {
        const Application application = applicationOfAppId(handle->current.appId);
        if (application.isValid() && !names.contains(application.name))
            names << application.name;
    }
    return names;
}

QList<Application> WlrWorkspace::installedApplications()
{
    return m_entries.installed();
}

Application WlrWorkspace::applicationFor(const QString& desktopFileOrName)
{
    return m_entries.applicationFor(desktopFileOrName);
}

bool WlrWorkspace::launch(const Application& application)
{
    QString error;
    if (m_entries.launch(application, &error))
        return true;
    log(QStringLiteral("Could not launch %1: %2").arg(application.name, error));
    return false;
}

bool WlrWorkspace::openUrl(const QString& address)
{
    const QUrl url(address, QUrl::TolerantMode);
    if (url.isValid() && QDesktopServices::openUrl(url))
        return true;
    log(QStringLiteral("Could not open %1").arg(address));
    return false;
}

void WlrWorkspace::log(const QString& line) const
{
    if (m_log)
        m_log(line);
}

} // namespace velmora
