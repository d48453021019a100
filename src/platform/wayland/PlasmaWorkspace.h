#pragma once

#include "ListedWorkspace.h"

#include <memory>

namespace velmora {

// The windows of KWin (Plasma), from org_kde_plasma_window_management. KWin hands
// that interface only to a program whose desktop entry lists it in
// X-KDE-Wayland-Interfaces and whose Exec is the running binary
// (KdeDesktopEntry.h). Hiding minimises.
class PlasmaWorkspace : public ListedWorkspace
{
    Q_OBJECT
public:
    explicit PlasmaWorkspace(QObject* parent = nullptr);
    ~PlasmaWorkspace() override;

    bool isActive() const override;
    void hide(const Application& application) override;

private:
    class Manager;
    class PlasmaWindow;
    friend class PlasmaWindow;

    QList<Window> windows() override;

    std::unique_ptr<Manager> m_manager;
};

} // namespace velmora
