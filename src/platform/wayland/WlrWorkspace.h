#pragma once

#include "ListedWorkspace.h"

#include <memory>

namespace velmora {

class SwayIpc;

// The windows of a wlroots compositor (sway, Hyprland, labwc, wayfire, river),
// from wlr-foreign-toplevel-management. Hiding minimises, except under sway,
// which ignores that: there the application's windows go to the scratchpad
// through sway's IPC.
class WlrWorkspace : public ListedWorkspace
{
    Q_OBJECT
public:
    // Needs the QGuiApplication on the wayland platform.
    explicit WlrWorkspace(QObject* parent = nullptr);
    ~WlrWorkspace() override;

    bool isActive() const override;
    void hide(const Application& application) override;
    void setLog(std::function<void(const QString&)> log) override;

private:
    class Manager;
    class Handle;
    friend class Handle;

    QList<Window> windows() override;

    std::unique_ptr<Manager> m_manager;
    std::unique_ptr<SwayIpc> m_sway;
};

} // namespace velmora
