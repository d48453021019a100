#include "LayerShellIntegration.h"

#include "qwayland-keyboard-shortcuts-inhibit-unstable-v1.h"
#include "qwayland-wlr-layer-shell-unstable-v1.h"
#include "wayland-xdg-shell-client-protocol.h"

#include <memory>
#include <optional>
#include <QApplication>
#include <QGuiApplication>
#include <QHash>
#include <QKeyEvent>
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
#include <tuple>
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

// A binding of our own to xdg_wm_base, for the popups of layer surfaces, which
// Qt's xdg-shell cannot make. Through the C interface: Qt 6.5 and later export
// C++ classes of the same names from QtWaylandClient.
class WmBase : public QWaylandClientExtensionTemplate<WmBase>
{
public:
    WmBase()
        : QWaylandClientExtensionTemplate<WmBase>(1)
    {
    }
    ~WmBase() override
    {
        if (m_base)
            xdg_wm_base_destroy(m_base);
    }
    static const wl_interface* interface() { return &xdg_wm_base_interface; }
    void init(::wl_registry* registry, int id, int version)
    {
        m_base = static_cast<::xdg_wm_base*>(
            wl_registry_bind(registry, uint32_t(id), interface(), uint32_t(version)));
        static const xdg_wm_base_listener listener{
            .ping = [](void*, ::xdg_wm_base* base, uint32_t serial) { xdg_wm_base_pong(base, serial); }};
        xdg_wm_base_add_listener(m_base, &listener, nullptr);
    }
    void bindNow() { initialize(); }
    ::xdg_wm_base* base() const { return m_base; }

private:
    ::xdg_wm_base* m_base = nullptr;
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
class PopupSurface;
QHash<QWindow*, LayerSurface*> g_surfaces;
QHash<QWindow*, PopupSurface*> g_popups;
// Our mapped layer surfaces, bottom first, as we want them stacked.
QList<LayerSurface*> g_stack;
std::function<void(QWindow*)> g_closedHandler;
LayerShell* g_layerShell = nullptr;
InhibitManager* g_inhibitManager = nullptr;
WmBase* g_wmBase = nullptr;

// Only to learn which QWindow a QWaylandWindow belongs to: the class is not
// complete here.
class WindowProbe : public QWaylandShellSurface
{
public:
    using QWaylandShellSurface::QWaylandShellSurface;
};

// How a layer surface is placed: covering its output, or in its middle (a window
// above the lock).
enum class Placement
{
    Cover,
    Centred
};

// A window in the overlay layer. Covering windows are anchored to all four edges,
// so the compositor sizes them to their output and ignores other surfaces'
// exclusive zones; the others are anchored to the top left corner of their output
// at a position Qt knows, so that Qt's idea of where they are (which places their
// popups) is the truth.
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
        if (m_placement == Placement::Centred && isInitialized() && rect.isValid())
            place(rect);
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
        const QPoint offset((screen.width() - rect.width()) / 2, (screen.height() - rect.height()) / 2);
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

// The keyboard stays with a popup's parent surface, so Qt sends each key press
// to the parent's window, which hands it to the open popup. A key that closes
// the popup while Qt asks whether it is a shortcut (a combo box takes Return
// so) would then land in the widget that gets the focus next; with the popup
// holding the keyboard, as on X11, it ends with the popup. This drops it.
class ClosingKeyFilter : public QObject
{
public:
    static void install()
    {
        static ClosingKeyFilter* filter = nullptr;
        if (!filter && qApp) {
            filter = new ClosingKeyFilter;
            filter->setParent(qApp);
            qApp->installEventFilter(filter);
        }
    }

protected:
    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() != QEvent::ShortcutOverride && event->type() != QEvent::KeyPress)
            return QObject::eventFilter(object, event);
        const auto* key = static_cast<QKeyEvent*>(event);
        const auto press = std::make_tuple(key->key(), key->nativeScanCode(), key->timestamp());
        if (event->type() == QEvent::ShortcutOverride) {
            if (QApplication::activePopupWidget())
                m_pressInPopup = press;
        } else if (m_pressInPopup == press) {
            m_pressInPopup.reset();
            if (!QApplication::activePopupWidget())
                return true;
        }
        return QObject::eventFilter(object, event);
    }

private:
    std::optional<std::tuple<int, quint32, quint64>> m_pressInPopup;
};

// A menu, list or tooltip of one of our layer surfaces (or of such a popup): an
// xdg popup that the parent's layer surface adopts. It takes no keyboard grab, so
// the keyboard stays with the parent, and Qt hands its keys to the open popup.
class PopupSurface : public QWaylandShellSurface
{
public:
    PopupSurface(QWaylandWindow* window, QWindow* qwindow, QWindow* parent)
        : QWaylandShellSurface(window)
        , m_window(qwindow)
        , m_parent(parent)
    {
        m_xdgSurface = xdg_wm_base_get_xdg_surface(g_wmBase->base(), wlSurface());
        static const xdg_surface_listener surfaceListener{
            .configure = [](void* self, ::xdg_surface*, uint32_t serial) {
                static_cast<PopupSurface*>(self)->configured(serial);
            }};
        xdg_surface_add_listener(m_xdgSurface, &surfaceListener, this);

        PopupSurface* parentPopup = g_popups.value(parent);
        ::xdg_positioner* placed = positioner(qwindow->geometry(), parent->geometry());
        m_popup =
            xdg_surface_get_popup(m_xdgSurface, parentPopup ? parentPopup->m_xdgSurface : nullptr, placed);
        xdg_positioner_destroy(placed);
        static const xdg_popup_listener popupListener{
            .configure =
                [](void* self, ::xdg_popup*, int32_t x, int32_t y, int32_t width, int32_t height) {
                    static_cast<PopupSurface*>(self)->m_pending = QRect(x, y, width, height);
                },
            .popup_done = [](void* self, ::xdg_popup*) { static_cast<PopupSurface*>(self)->dismissed(); },
            .repositioned = [](void*, ::xdg_popup*, uint32_t) {}};
        xdg_popup_add_listener(m_popup, &popupListener, this);
        if (!parentPopup)
            g_surfaces.value(parent)->get_popup(m_popup);
        g_popups.insert(qwindow, this);
        ClosingKeyFilter::install();
        wl_surface_commit(wlSurface());
    }

    ~PopupSurface() override
    {
        if (g_popups.value(m_window) == this)
            g_popups.remove(m_window);
        xdg_popup_destroy(m_popup);
        xdg_surface_destroy(m_xdgSurface);
    }

    // Whether a popup of PARENT can be one of ours.
    static bool canAdopt(QWindow* parent)
    {
        return g_wmBase && g_wmBase->base() && parent &&
               (g_surfaces.contains(parent) || g_popups.contains(parent));
    }

    bool isExposed() const override { return m_configured; }
    bool handleExpose(const QRegion& region) override { return !m_configured && !region.isEmpty(); }

    void applyConfigure() override
    {
        const QPoint origin = m_parent ? m_parent->geometry().topLeft() : QPoint();
        setGeometryFromApplyConfigure(origin + m_pending.topLeft(), m_pending.size());
    }

private:
    // Where Qt put the popup, relative to its parent. The anchor point must lie in
    // the parent; what is left over is the offset. The compositor slides the popup
    // back onto the output where Qt's guess overlapped its edge.
    static ::xdg_positioner* positioner(const QRect& popup, const QRect& parent)
    {
        ::xdg_positioner* positioner = xdg_wm_base_create_positioner(g_wmBase->base());
        const QPoint wanted = popup.topLeft() - parent.topLeft();
        const QPoint anchor(qBound(0, wanted.x(), qMax(0, parent.width() - 1)),
                            qBound(0, wanted.y(), qMax(0, parent.height() - 1)));
        xdg_positioner_set_size(positioner, qMax(1, popup.width()), qMax(1, popup.height()));
        xdg_positioner_set_anchor_rect(positioner, anchor.x(), anchor.y(), 1, 1);
        xdg_positioner_set_offset(positioner, wanted.x() - anchor.x(), wanted.y() - anchor.y());
        xdg_positioner_set_anchor(positioner, XDG_POSITIONER_ANCHOR_TOP_LEFT);
        xdg_positioner_set_gravity(positioner, XDG_POSITIONER_GRAVITY_BOTTOM_RIGHT);
        xdg_positioner_set_constraint_adjustment(positioner,
                                                 XDG_POSITIONER_CONSTRAINT_ADJUSTMENT_SLIDE_X |
                                                     XDG_POSITIONER_CONSTRAINT_ADJUSTMENT_SLIDE_Y);
        return positioner;
    }

    void configured(uint32_t serial)
    {
        xdg_surface_ack_configure(m_xdgSurface, serial);
        if (m_configured) {
            applyConfigureWhenPossible();
            return;
        }
        m_configured = true;
        applyConfigure();
        if (m_window)
            QWindowSystemInterface::handleExposeEvent(m_window, QRect(QPoint(), m_pending.size()));
    }

    // The compositor took the popup down (a click elsewhere, its parent gone).
    void dismissed()
    {
        QPointer<QWindow> window = m_window;
        QMetaObject::invokeMethod(
            qApp,
            [window] {
                if (window)
                    window->close();
            },
            Qt::QueuedConnection);
    }

    QPointer<QWindow> m_window;
    QPointer<QWindow> m_parent;
    ::xdg_surface* m_xdgSurface = nullptr;
    ::xdg_popup* m_popup = nullptr;
    QRect m_pending;
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
        delete g_wmBase;
        g_wmBase = nullptr;
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
        g_wmBase = new WmBase;
        g_wmBase->bindNow();
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
        // Qt's xdg-shell would make the popups of our layer surfaces popups of
        // a toplevel they do not have.
        QWindow* parent = qwindow->transientParent();
        const bool popup = qwindow->type() == Qt::Popup || qwindow->type() == Qt::ToolTip;
        if (popup && PopupSurface::canAdopt(parent))
            return new PopupSurface(window, qwindow, parent);
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
