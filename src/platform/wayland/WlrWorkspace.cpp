#include "WlrWorkspace.h"

#include "qwayland-wlr-foreign-toplevel-management-unstable-v1.h"
#include "SwayIpc.h"

#include <QRegularExpression>
#include <QtWaylandClient/QWaylandClientExtensionTemplate>
#include <vector>

namespace velmora {

class WlrWorkspace::Handle : public QtWayland::zwlr_foreign_toplevel_handle_v1
{
public:
    Handle(WlrWorkspace& workspace, ::zwlr_foreign_toplevel_handle_v1* object)
        : QtWayland::zwlr_foreign_toplevel_handle_v1(object)
        , m_workspace(workspace)
    {
    }
    ~Handle() override { destroy(); }

    Window current;
    bool closed = false;

protected:
    void zwlr_foreign_toplevel_handle_v1_app_id(const QString& appId) override { m_pending.appId = appId; }
    void zwlr_foreign_toplevel_handle_v1_state(wl_array* state) override
    {
        m_pending.active = false;
        const auto* states = static_cast<const uint32_t*>(state->data);
        for (size_t i = 0; i < state->size / sizeof(uint32_t); ++i) {
            if (states[i] == state_activated)
                m_pending.active = true;
        }
    }
    void zwlr_foreign_toplevel_handle_v1_done() override
    {
        current = m_pending;
        m_workspace.windowsChanged();
    }
    void zwlr_foreign_toplevel_handle_v1_closed() override
    {
        closed = true;
        m_workspace.windowsChanged();
    }

private:
    WlrWorkspace& m_workspace;
    Window m_pending;
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

WlrWorkspace::WlrWorkspace(QObject* parent)
    : ListedWorkspace(parent)
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
    if (m_sway)
        m_sway->setLog(log);
    ListedWorkspace::setLog(std::move(log));
}

QList<ListedWorkspace::Window> WlrWorkspace::windows()
{
    m_manager->dropClosed();
    QList<Window> out;
    for (const auto& handle : m_manager->handles)
        out << handle->current;
    return out;
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
        const QString pattern =
            QRegularExpression::escape(appId).replace(QLatin1Char('"'), QLatin1String("\\\""));
        m_sway->run(QStringLiteral("[app_id=\"^%1$\"] move scratchpad").arg(pattern));
        m_sway->run(QStringLiteral("[class=\"^%1$\"] move scratchpad").arg(pattern));
    }
    if (!appIds.isEmpty())
        log(QStringLiteral("Hid %1 in sway's scratchpad").arg(application.name));
}

} // namespace velmora
