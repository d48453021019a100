#include "LayerShellIntegration.h"

#include "qwayland-keyboard-shortcuts-inhibit-unstable-v1.h"
#include "qwayland-wlr-layer-shell-unstable-v1.h"

#include <memory>
#include <QGuiApplication>
#include <QHash>
#include <QPointer>
#include <QScreen>
#include <QtCore/private/qfactoryloader_p.h>
#include <QtGui/qpa/qplatformnativeinterface.h>
#include <QtGui/qpa/qplatformwindow.h>
#include <QtGui/qpa/qwindowsysteminterface.h>
#include <QtWaylandClient/private/qwaylandshellintegration_p.h>
#include <QtWaylandClient/private/qwaylandshellintegrationplugin_p.h>
#include <QtWaylandClient/private/qwaylandshellsurface_p.h>
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
#include <QtWaylandClient/private/qwaylandshellintegrationfactory_p.h>
#endif
#include <QtWaylandClient/QWaylandClientExtensionTemplate>
#include <QWindow>
#include <wayland-client-core.h>
#include <wayland-client-protocol.h>

// Written against Qt 6.4's shell-integration interface. From Qt 6.5 on, xdg-shell
// is built into QtWaylandClient rather than loaded as a plugin, so it is made
// through the factory there; that part is behind a version check.

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
// Our mapped layer surfaces, bottom first, as we want them stacked.
QList<LayerSurface*> g_stack;
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

// How a layer surface is placed: covering its output, in its middle (a window
// above the lock), or where Qt put it (a menu or list of one of ours).
enum class Placement
{
    Cover,
    Centred,
    AsPlaced
};

// A window in the overlay layer. Covering windows are anchored to all four edges,
// so the compositor sizes them to their output and ignores other surfaces'
// exclusive zones; the others are anchored to the top left corner of their output
// at a position Qt knows, so that Qt's idea of where they are (which places their
// menus) is the truth.
class LayerSurface : public QWaylandShellSurface, public QtWayland::zwlr_layer_surface_v1
{
public:
    LayerSurface(QWaylandWindow* window, QWindow* qwindow, QScreen* screen, Placement placement,
                 bool keyboard)
        : QWaylandShellSurface(window)
        , m_window(qwindow)
        , m_screen(screen)
        , m_placement(placement)
    {
        auto* native = QGuiApplication::platformNativeInterface();
        auto* output = static_cast<::wl_output*>(native->nativeResourceForScreen("output", screen));
        init(g_layerShell->get_layer_surface(
            wlSurface(), output, QtWayland::zwlr_layer_shell_v1::layer_overlay, QStringLiteral("velmora")));
        if (placement == Placement::Cover) {
            set_anchor(anchor_top | anchor_bottom | anchor_left | anchor_right);
            set_exclusive_zone(-1);
            set_size(0, 0);
        } else {
            set_anchor(anchor_top | anchor_left);
            set_exclusive_zone(-1);
            place(qwindow->geometry());
        }
        set_keyboard_interactivity(keyboard ? keyboard_interactivity_exclusive : keyboard_interactivity_none);
        auto* seat = static_cast<::wl_seat*>(native->nativeResourceForIntegration("wl_seat"));
        if (keyboard && g_inhibitManager && g_inhibitManager->isActive() && seat)
            m_inhibitor = std::make_unique<Inhibitor>(g_inhibitManager->inhibit_shortcuts(wlSurface(), seat));
        g_surfaces.insert(qwindow, this);
        // The protocol wants one commit without a buffer before the first configure.
        wl_surface_commit(wlSurface());
    }

    ~LayerSurface() override
    {
        g_stack.removeAll(this);
        if (g_surfaces.value(m_window) == this)
            g_surfaces.remove(m_window);
        m_inhibitor.reset();
        if (isInitialized())
            destroy();
    }

    void setKeyboard(bool exclusive)
    {
        if (!isInitialized())
            return;
        set_keyboard_interactivity(exclusive ? keyboard_interactivity_exclusive
                                             : keyboard_interactivity_none);
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
        if (m_placement != Placement::Cover && isInitialized() && rect.isValid())
            place(rect);
    }
    void setWindowPosition(const QPoint& position) override
    {
        if (m_placement == Placement::AsPlaced && isInitialized() && m_window)
            place(QRect(position, m_window->geometry().size()));
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
            if (m_placement == Placement::Centred && m_screen)
                repositionFromApplyConfigure(m_screen->geometry().topLeft() + m_placed);
            if (m_window)
                QWindowSystemInterface::handleExposeEvent(m_window, QRect(QPoint(), size));
            raiseAboveOurOthers();
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
    void place(const QRect& rect)
    {
        const QRect screen = m_screen ? m_screen->geometry() : QRect();
        QPoint offset = rect.topLeft() - screen.topLeft();
        if (m_placement == Placement::Centred)
            offset = QPoint((screen.width() - rect.width()) / 2, (screen.height() - rect.height()) / 2);
        m_placed = QPoint(qMax(0, offset.x()), qMax(0, offset.y()));
        set_margin(m_placed.y(), 0, 0, m_placed.x());
        set_size(uint32_t(qMax(1, rect.width())), uint32_t(qMax(1, rect.height())));
    }

    // The protocol leaves the order of surfaces within one layer open, and
    // compositors differ: sway draws the newest below the older ones. A surface
    // whose layer changes goes to the bottom of its new layer there and keeps its
    // place elsewhere; so our other surfaces step out of the overlay layer and
    // back, the highest first, to keep their order below the newest one.
    void raiseAboveOurOthers()
    {
        for (auto it = g_stack.crbegin(); it != g_stack.crend(); ++it) {
            LayerSurface* surface = *it;
            if (!surface->isInitialized() || surface->QtWayland::zwlr_layer_surface_v1::version() < 2)
                continue;
            surface->set_layer(QtWayland::zwlr_layer_shell_v1::layer_top);
            wl_surface_commit(surface->wlSurface());
            surface->set_layer(QtWayland::zwlr_layer_shell_v1::layer_overlay);
            wl_surface_commit(surface->wlSurface());
        }
        g_stack.removeAll(this);
        g_stack.append(this);
    }

    QPointer<QWindow> m_window;
    QPointer<QScreen> m_screen;
    Placement m_placement;
    std::unique_ptr<Inhibitor> m_inhibitor;
    QSize m_pending;
    QPoint m_placed;
    bool m_configured = false;
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
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
        m_xdg.reset(QWaylandShellIntegrationFactory::create(QStringLiteral("xdg-shell"), display));
        if (!m_xdg)
            return false;
#else
        static QFactoryLoader loader(QWaylandShellIntegrationFactoryInterface_iid,
                                     QStringLiteral("/wayland-shell-integration"), Qt::CaseInsensitive);
        m_xdg.reset(qLoadPlugin<QWaylandShellIntegration, QWaylandShellIntegrationPlugin>(
            &loader, QStringLiteral("xdg-shell"), QStringList()));
        if (!m_xdg || !m_xdg->initialize(display))
            return false;
#endif
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
        if (!g_layerShell || !g_layerShell->isActive())
            return m_xdg->createShellSurface(window);
        const auto role = LayerRole(qwindow->property(kLayerRoleProperty).toInt());
        if (role != LayerRole::None && qwindow->screen()) {
            return new LayerSurface(window, qwindow, qwindow->screen(),
                                    role == LayerRole::AboveLock ? Placement::Centred : Placement::Cover,
                                    role != LayerRole::Blank);
        }
        // A menu, list or tooltip of a layer surface cannot be an xdg popup without
        // more protocol than the compositors share: it is a layer surface above its
        // parent, where Qt placed it, and takes the keyboard while open.
        // Unfinished: under sway 1.7 such a list loses the keyboard focus a few
        // milliseconds after it is drawn and Qt closes it at once (a combo box still
        // changes with the arrow keys while closed). Making it an xdg_popup of the
        // parent's layer surface (zwlr_layer_surface_v1.get_popup) is the way out.
        QWindow* parent = qwindow->transientParent();
        const bool popup = qwindow->type() == Qt::Popup || qwindow->type() == Qt::ToolTip;
        if (popup && parent && g_surfaces.contains(parent) && parent->screen())
            return new LayerSurface(window, qwindow, parent->screen(), Placement::AsPlaced, true);
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
    if (QGuiApplication::platformName() != QLatin1String("wayland") ||
        !qEnvironmentVariable("QT_WAYLAND_SHELL_INTEGRATION").startsWith(QLatin1String(kShellIntegrationKey)))
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
