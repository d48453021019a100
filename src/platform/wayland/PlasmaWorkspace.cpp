#include "PlasmaWorkspace.h"

#include "qwayland-plasma-window-management.h"

#include <QtWaylandClient/QWaylandClientExtensionTemplate>
#include <vector>

namespace velmora {

class PlasmaWorkspace::PlasmaWindow : public QtWayland::org_kde_plasma_window
{
public:
    PlasmaWindow(PlasmaWorkspace& workspace, ::org_kde_plasma_window* object)
        : QtWayland::org_kde_plasma_window(object)
        , m_workspace(workspace)
    {
    }
    ~PlasmaWindow() override
    {
        if (QtWayland::org_kde_plasma_window::version() >= 4)
            destroy();
    }

    Window current;
    bool gone = false;

protected:
    void org_kde_plasma_window_app_id_changed(const QString& appId) override
    {
        current.appId = appId;
        m_workspace.windowsChanged();
    }
    void org_kde_plasma_window_state_changed(uint32_t flags) override
    {
        current.active = flags & QtWayland::org_kde_plasma_window_management::state_active;
        m_workspace.windowsChanged();
    }
    void org_kde_plasma_window_unmapped() override
    {
        gone = true;
        m_workspace.windowsChanged();
    }

private:
    PlasmaWorkspace& m_workspace;
};

// Bound at version 12: KWin then announces each window by its number, and the
// window list needs no uuids.
class PlasmaWorkspace::Manager : public QWaylandClientExtensionTemplate<Manager>,
                                 public QtWayland::org_kde_plasma_window_management
{
public:
    explicit Manager(PlasmaWorkspace& workspace)
        : QWaylandClientExtensionTemplate<Manager>(12)
        , m_workspace(workspace)
    {
        initialize();
    }
    ~Manager() override { windows.clear(); }

    std::vector<std::unique_ptr<PlasmaWindow>> windows;

    void dropGone()
    {
        std::erase_if(windows, [](const std::unique_ptr<PlasmaWindow>& window) { return window->gone; });
    }

protected:
    void org_kde_plasma_window_management_window(uint32_t id) override
    {
        windows.push_back(std::make_unique<PlasmaWindow>(m_workspace, get_window(id)));
    }

private:
    PlasmaWorkspace& m_workspace;
};

PlasmaWorkspace::PlasmaWorkspace(QObject* parent)
    : ListedWorkspace(parent)
    , m_manager(std::make_unique<Manager>(*this))
{
}

PlasmaWorkspace::~PlasmaWorkspace() = default;

bool PlasmaWorkspace::isActive() const
{
    return m_manager->isActive();
}

QList<ListedWorkspace::Window> PlasmaWorkspace::windows()
{
    m_manager->dropGone();
    QList<Window> out;
    for (const auto& window : m_manager->windows)
        out << window->current;
    return out;
}

void PlasmaWorkspace::hide(const Application& application)
{
    m_manager->dropGone();
    int minimised = 0;
    for (const auto& window : m_manager->windows) {
        if (applicationOfAppId(window->current.appId).name != application.name)
            continue;
        window->set_state(QtWayland::org_kde_plasma_window_management::state_minimized,
                          QtWayland::org_kde_plasma_window_management::state_minimized);
        ++minimised;
    }
    if (minimised > 0)
        log(QStringLiteral("Minimised %1 through KWin's window list").arg(application.name));
}

} // namespace velmora
