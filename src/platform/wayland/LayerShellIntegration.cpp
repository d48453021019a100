#include "LayerShellIntegration.h"

#include "qwayland-keyboard-shortcuts-inhibit-unstable-v1.h"
#include "qwayland-wlr-layer-shell-unstable-v1.h"

#include <QGuiApplication>
#include <QHash>
#include <QPointer>
#include <QScreen>
#include <QWindow>
#include <QtCore/private/qfactoryloader_p.h>
#include <QtGui/qpa/qplatformnativeinterface.h>
#include <QtGui/qpa/qplatformwindow.h>
#include <QtGui/qpa/qwindowsysteminterface.h>
#include <QtWaylandClient/QWaylandClientExtensionTemplate>
#include <QtWaylandClient/private/qwaylandshellintegration_p.h>
#include <QtWaylandClient/private/qwaylandshellintegrationplugin_p.h>
#include <QtWaylandClient/private/qwaylandshellsurface_p.h>
#include <memory>
#include <wayland-client-core.h>
#include <wayland-client-protocol.h>

// The base of a shell integration and of its surfaces changed in Qt 6.5 (shell
// integrations became per window, popups are attached through the parent's
// shell surface). What follows is written against 6.4's interface; the few
// places that differ are marked.

using namespace QtWaylandClient;

namespace velmora::wayland {

namespace {

class LayerShell : public QWaylandClientExtensionTemplate<LayerShell>, public QtWayland::zwlr_layer_shell_v1
{
public:
    LayerShell()
        : QWaylandClientExtensionTemplate<LayerShell>(4)
    {
    }
    // Binds at once when the registry has been read already.
    void bindNow() { initialize(); }
    ~LayerShell() override
    {
        if (isInitialized() && QtWayland::zwlr_layer_shell_v1::version() >= 3)
            destroy();
    }
};

class InhibitManager : public QWaylandClientExtensionTemplate<InhibitManager>,
                       public QtWayland::zwp_keyboard_shortcuts_inhibit_manager_v1
{
public:
    InhibitManager()
        : QWaylandClientExtensionTemplate<InhibitManager>(1)
    {
    }
    void bindNow() { initialize(); }
    ~InhibitManager() override
    {
        if (isInitialized())
            destroy();
    }
};

class Inhibitor : public QtWayland::zwp_keyboard_shortcuts_inhibitor_v1
{
public:
    explicit Inhibitor(::zwp_keyboard_shortcuts_inhibitor_v1* object)
        : QtWayland::zwp_keyboard_shortcuts_inhibitor_v1(object)
    {
    }
    ~Inhibitor() override { destroy(); }
};

class LayerSurface;
QHash<QWindow*, LayerSurface*> g_surfaces;
std::function<void(QWindow*)> g_closedHandler;
LayerShell* g_layerShell = nullptr;
InhibitManager* g_inhibitManager = nullptr;

// Only to learn which QWindow a QWaylandWindow belongs to: the class is not
// complete here.
class WindowProbe : public QWaylandShellSurface
{
public:
    using QWaylandShellSurface::QWaylandShellSurface;
};

// A window in the overlay layer. Lock and blank windows are anchored to all four
// edges, so the compositor sizes them to their output and ignores other
// surfaces' exclusive zones; a window above the lock keeps its own size and sits
// in the middle of its output.
class LayerSurface : public QWaylandShellSurface, public QtWayland::zwlr_layer_surface_v1
{
public:
    LayerSurface(QWaylandWindow* window, QWindow* qwindow, LayerRole role)
        : QWaylandShellSurface(window)
        , m_window(qwindow)
    {
        auto* native = QGuiApplication::platformNativeInterface();
        auto* output =
            static_cast<::wl_output*>(native->nativeResourceForScreen("output", qwindow->screen()));
        init(g_layerShell->get_layer_surface(wlSurface(), output, QtWayland::zwlr_layer_shell_v1::layer_overlay,
                                             QStringLiteral("velmora")));
        if (role == LayerRole::AboveLock) {
            const QSize size = qwindow->geometry().size();
            set_size(uint32_t(qMax(1, size.width())), uint32_t(qMax(1, size.height())));
        } else {
            set_anchor(anchor_top | anchor_bottom | anchor_left | anchor_right);
            set_exclusive_zone(-1);
            set_size(0, 0);
        }
        set_keyboard_interactivity(role == LayerRole::Blank ? keyboard_interactivity_none
                                                            : keyboard_interactivity_exclusive);
        auto* seat = static_cast<::wl_seat*>(native->nativeResourceForIntegration("wl_seat"));
        if (g_inhibitManager && g_inhibitManager->isActive() && seat)
            m_inhibitor = std::make_unique<Inhibitor>(g_inhibitManager->inhibit_shortcuts(wlSurface(), seat));
        g_surfaces.insert(qwindow, this);
        // The protocol wants one commit without a buffer before the first configure.
        wl_surface_commit(wlSurface());
    }

    ~LayerSurface() override
    {
        g_surfaces.remove(m_window);
        m_inhibitor.reset();
        if (isInitialized())
            destroy();
    }

    // The protocol leaves the order of surfaces within one layer open, and
    // compositors differ: sway draws the newest below the older ones. A surface
    // whose layer changes goes to the bottom of its new layer there and keeps its
    // place elsewhere, so the covering surfaces step out of the overlay layer and
    // back, to lie below a window the user may reach over the lock.
    static void sinkCoveringSurfaces()
    {
        for (LayerSurface* surface : std::as_const(g_surfaces)) {
            if (surface->m_aboveLock || !surface->isInitialized()
                || surface->QtWayland::zwlr_layer_surface_v1::version() < 2)
                continue;
            surface->set_layer(QtWayland::zwlr_layer_shell_v1::layer_top);
            wl_surface_commit(surface->wlSurface());
            surface->set_layer(QtWayland::zwlr_layer_shell_v1::layer_overlay);
            wl_surface_commit(surface->wlSurface());
        }
    }

    void setKeyboard(bool exclusive)
    {
        if (!isInitialized())
            return;
        set_keyboard_interactivity(exclusive ? keyboard_interactivity_exclusive : keyboard_interactivity_none);
        wl_surface_commit(wlSurface());
    }

    bool isExposed() const override { return m_configured; }
    bool handleExpose(const QRegion& region) override { return !m_configured && !region.isEmpty(); }

    void applyConfigure() override
    {
        if (m_pending.isValid())
            resizeFromApplyConfigure(m_pending);
    }

    void setWindowGeometry(const QRect& rect) override
    {
        // A window above the lock follows its own size; the others, their output's.
        if (m_aboveLock && isInitialized() && rect.isValid())
            set_size(uint32_t(rect.width()), uint32_t(rect.height()));
    }

protected:
    void zwlr_layer_surface_v1_configure(uint32_t serial, uint32_t width, uint32_t height) override
    {
        ack_configure(serial);
        QSize size{int(width), int(height)};
        if (size.width() <= 0 || size.height() <= 0)
            size = m_window ? m_window->geometry().size() : QSize();
        m_pending = size;
        if (!m_configured) {
            m_configured = true;
            applyConfigure();
            if (m_window)
                QWindowSystemInterface::handleExposeEvent(m_window, QRect(QPoint(), size));
            if (m_aboveLock)
                sinkCoveringSurfaces();
        } else {
            applyConfigureWhenPossible();
        }
    }

    void zwlr_layer_surface_v1_closed() override
    {
        // The output is gone; the window needs a surface on another one.
        QPointer<QWindow> window = m_window;
        QMetaObject::invokeMethod(
            qApp,
            [window] {
                if (window && g_closedHandler)
                    g_closedHandler(window);
            },
            Qt::QueuedConnection);
    }

private:
    QPointer<QWindow> m_window;
    std::unique_ptr<Inhibitor> m_inhibitor;
    QSize m_pending;
    bool m_configured = false;
    bool m_aboveLock = false;

    friend class Integration;
};

class Integration : public QWaylandShellIntegration
{
public:
    ~Integration() override
    {
        delete g_layerShell;
        g_layerShell = nullptr;
        delete g_inhibitManager;
        g_inhibitManager = nullptr;
    }

    bool initialize(QWaylandDisplay* display) override
    {
        static QFactoryLoader loader(QWaylandShellIntegrationFactoryInterface_iid,
                                     QStringLiteral("/wayland-shell-integration"), Qt::CaseInsensitive);
        m_xdg.reset(qLoadPlugin<QWaylandShellIntegration, QWaylandShellIntegrationPlugin>(
            &loader, QStringLiteral("xdg-shell"), QStringList()));
        if (!m_xdg || !m_xdg->initialize(display))
            return false;
        // The registry is read already: these bind at once when offered.
        g_layerShell = new LayerShell;
        g_layerShell->bindNow();
        g_inhibitManager = new InhibitManager;
        g_inhibitManager->bindNow();
        return true;
    }

    QWaylandShellSurface* createShellSurface(QWaylandWindow* window) override
    {
        QWindow* qwindow = WindowProbe(window).platformWindow()->window();
        const auto role = LayerRole(qwindow->property(kLayerRoleProperty).toInt());
        if (role != LayerRole::None && g_layerShell && g_layerShell->isActive() && qwindow->screen()) {
            auto* surface = new LayerSurface(window, qwindow, role);
            surface->m_aboveLock = role == LayerRole::AboveLock;
            return surface;
        }
        return m_xdg->createShellSurface(window);
    }

    void* nativeResourceForWindow(const QByteArray& resource, QWindow* window) override
    {
        return m_xdg->nativeResourceForWindow(resource, window);
    }

private:
    std::unique_ptr<QWaylandShellIntegration> m_xdg;
};

} // namespace

bool layerShellOffered()
{
    if (g_layerShell)
        return g_layerShell->isActive();
    // Before the first window Qt has not loaded the integration yet: ask the
    // registry, when the integration will be the one loaded.
    if (QGuiApplication::platformName() != QLatin1String("wayland")
        || !qEnvironmentVariable("QT_WAYLAND_SHELL_INTEGRATION").startsWith(QLatin1String(kShellIntegrationKey)))
        return false;
    LayerShell probe;
    probe.bindNow();
    return probe.isActive();
}

bool shortcutsInhibitOffered()
{
    return g_inhibitManager && g_inhibitManager->isActive();
}

void setLayerKeyboard(QWindow* window, bool exclusive)
{
    if (LayerSurface* surface = g_surfaces.value(window))
        surface->setKeyboard(exclusive);
}

bool hasLayerSurface(QWindow* window)
{
    return g_surfaces.contains(window);
}

void setLayerClosedHandler(std::function<void(QWindow*)> handler)
{
    g_closedHandler = std::move(handler);
}

} // namespace velmora::wayland

class VelmoraShellIntegrationPlugin : public QtWaylandClient::QWaylandShellIntegrationPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QWaylandShellIntegrationFactoryInterface_iid FILE "velmora-shell.json")
public:
    QtWaylandClient::QWaylandShellIntegration* create(const QString&, const QStringList&) override
    {
        return new velmora::wayland::Integration;
    }
};

#include "LayerShellIntegration.moc"
