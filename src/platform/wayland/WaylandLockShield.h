#pragma once

#include "LockShield.h"

#include <QList>
#include <QObject>
#include <QPointer>

class QWidget;

namespace velmora {

// The lock on a compositor that offers the layer shell (wlroots compositors,
// KWin): each lock window is an overlay surface on its output that holds the
// keyboard and the compositor's key bindings; our windows the user may reach
// over the lock become overlay surfaces above it while it is up. Without the
// layer shell the windows stay ordinary full-screen ones and holds() says so.
class WaylandLockShield : public QObject, public LockShield
{
    Q_OBJECT
public:
    explicit WaylandLockShield(QObject* parent = nullptr);
    ~WaylandLockShield() override;

    void prepare(QWidget* window, Surface surface) override;
    void setLockUp(bool up) override;
    void setHoldsKeyboard(bool held) override;
    bool holds() const override;

private:
    // A shown window gets its new role with a new surface.
    static void remake(QWidget* window);

    QPointer<QWidget> m_lock;
    QList<QPointer<QWidget>> m_above;
    bool m_up = false;
    bool m_held = false;
};

} // namespace velmora
