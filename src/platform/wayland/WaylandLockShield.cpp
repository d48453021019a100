#include "WaylandLockShield.h"

#include "LayerShellIntegration.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <QWindow>

namespace velmora {

using wayland::LayerRole;

static QWidget* widgetOf(QWindow* window)
{
    const QList<QWidget*> widgets = QApplication::topLevelWidgets();
    for (QWidget* widget : widgets) {
        if (widget->windowHandle() == window)
            return widget;
    }
    return nullptr;
}

WaylandLockShield::WaylandLockShield(QObject* parent)
    : QObject(parent)
{
    // An output that goes away closes the surfaces on it; by the time Qt has
    // moved the window to a remaining screen it can have a new one there.
    wayland::setLayerClosedHandler([this](QWindow* window) {
        QPointer<QWidget> widget = widgetOf(window);
        QTimer::singleShot(200, this, [widget] {
            if (widget && widget->isVisible())
                remake(widget);
        });
    });
}

WaylandLockShield::~WaylandLockShield()
{
    wayland::setLayerClosedHandler({});
}

void WaylandLockShield::prepare(QWidget* window, Surface surface)
{
    window->winId();
    QWindow* handle = window->windowHandle();
    if (!handle)
        return;
    switch (surface) {
    case Surface::Lock:
        handle->setProperty(wayland::kLayerRoleProperty, int(LayerRole::Lock));
        m_lock = window;
        break;
    case Surface::Blank:
        handle->setProperty(wayland::kLayerRoleProperty, int(LayerRole::Blank));
        break;
    case Surface::AboveLock:
        handle->setProperty(wayland::kLayerRoleProperty, int(LayerRole::AboveLock));
        if (!m_above.contains(window))
            m_above << window;
        // A window already shown has an ordinary surface, below the lock.
        if (window->isVisible() && !wayland::hasLayerSurface(handle) && wayland::layerShellOffered())
            remake(window);
        else
            wayland::setLayerKeyboard(handle, !m_held);
        break;
    }
}

void WaylandLockShield::setLockUp(bool up)
{
    if (m_up == up)
        return;
    m_up = up;
    if (up)
        return;
    // Our other windows go back to being ordinary ones.
    const auto above = m_above;
    m_above.clear();
    for (const QPointer<QWidget>& window : above) {
        if (!window || !window->windowHandle())
            continue;
        window->windowHandle()->setProperty(wayland::kLayerRoleProperty, int(LayerRole::None));
        if (window->isVisible() && wayland::hasLayerSurface(window->windowHandle()))
            remake(window);
    }
}

void WaylandLockShield::setHoldsKeyboard(bool held)
{
    m_held = held;
    if (m_lock && m_lock->windowHandle())
        wayland::setLayerKeyboard(m_lock->windowHandle(), held);
    for (const QPointer<QWidget>& window : std::as_const(m_above)) {
        if (window && window->windowHandle())
            wayland::setLayerKeyboard(window->windowHandle(), !held);
    }
}

bool WaylandLockShield::holds() const
{
    return wayland::layerShellOffered();
}

void WaylandLockShield::remake(QWidget* window)
{
    const QRect geometry = window->geometry();
    const Qt::WindowStates states = window->windowState();
    window->hide();
    window->setWindowState(states);
    window->setGeometry(geometry);
    window->show();
    window->activateWindow();
}

} // namespace velmora
