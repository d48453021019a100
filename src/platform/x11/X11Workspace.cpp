#include "X11Workspace.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QFileInfo>
#include <QGuiApplication>
#include <QUrl>
#include <QWindow>

#include <cstdlib>
#include <cstring>
#include <iterator>
#include <unistd.h>
#include <xcb/res.h>
#include <xcb/xcb.h>

namespace velmora {

namespace {

constexpr const char* AtomNames[] = {
    "_NET_ACTIVE_WINDOW",
    "_NET_CLIENT_LIST",
    "_NET_CLIENT_LIST_STACKING",
    "_NET_SUPPORTED",
    "_NET_WM_PID",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_WINDOW_TYPE_DESKTOP",
    "_NET_WM_WINDOW_TYPE_DOCK",
    "_NET_WM_WINDOW_TYPE_NOTIFICATION",
    "_NET_WM_STATE_HIDDEN",
    "WM_CHANGE_STATE",
    "_GTK_APPLICATION_ID",
    "_KDE_NET_WM_DESKTOP_FILE",
    "UTF8_STRING",
    "_NET_WM_WINDOW_TYPE_DIALOG",
    "_NET_WM_WINDOW_TYPE_UTILITY",
};

constexpr quint32 IconicState = 3;
// Any property may be long; the ones read here never come near this.
constexpr quint32 PropertyWords = 4096;

} // namespace

X11Workspace::X11Workspace(QObject* parent)
    : Workspace(parent)
{
    static_assert(std::size(AtomNames) == AtomCount);
    const auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    if (!x11 || !x11->connection() || xcb_connection_has_error(x11->connection()))
        return;
    xcb_connection_t* connection = x11->connection();
    const xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    if (!screens.rem)
        return;
    m_connection = connection;
    m_root = screens.data->root;

    xcb_intern_atom_cookie_t cookies[AtomCount];
    for (int i = 0; i < AtomCount; ++i)
        cookies[i] = xcb_intern_atom(m_connection, 0, quint16(qstrlen(AtomNames[i])), AtomNames[i]);
    for (int i = 0; i < AtomCount; ++i) {
        if (xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(m_connection, cookies[i], nullptr)) {
            m_atoms[i] = reply->atom;
            std::free(reply);
        }
    }

    // Qt listens to the root window too: add to its event mask, never replace it.
    quint32 mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    const auto attributesCookie = xcb_get_window_attributes(m_connection, m_root);
    if (auto* attributes = xcb_get_window_attributes_reply(m_connection, attributesCookie, nullptr)) {
        mask |= attributes->your_event_mask;
        std::free(attributes);
    }
    xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, &mask);
    xcb_flush(m_connection);
    // XRes 1.2 tells the process of a local client's window.
    const xcb_query_extension_reply_t* res = xcb_get_extension_data(m_connection, &xcb_res_id);
    if (res && res->present) {
        const auto cookie = xcb_res_query_version(m_connection, 1, 2);
        if (auto* version = xcb_res_query_version_reply(m_connection, cookie, nullptr)) {
            m_hasRes =
                version->server_major > 1 || (version->server_major == 1 && version->server_minor >= 2);
            std::free(version);
        }
    }
    m_lastActive = activeWindow();
    QCoreApplication::instance()->installNativeEventFilter(this);
}

X11Workspace::~X11Workspace()
{
    if (m_connection && QCoreApplication::instance())
        QCoreApplication::instance()->removeNativeEventFilter(this);
}

bool X11Workspace::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*)
{
    if (!m_connection || eventType != "xcb_generic_event_t" || !message)
        return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    if ((event->response_type & ~0x80) != XCB_PROPERTY_NOTIFY)
        return false;
    const auto* property = reinterpret_cast<const xcb_property_notify_event_t*>(event);
    if (property->window != m_root || property->atom != m_atoms[ActiveWindow])
        return false;
    const quint32 active = activeWindow();
    if (active != m_lastActive) {
        m_lastActive = active;
        Q_EMIT frontApplicationChanged();
    }
    return false; // Qt may want it as well
}

QByteArray X11Workspace::propertyBytes(quint32 window, quint32 property, quint32 type) const
{
    if (!m_connection || !window || !property)
        return {};
    const auto cookie = xcb_get_property(m_connection, 0, window, property, type, 0, PropertyWords);
    xcb_get_property_reply_t* reply = xcb_get_property_reply(m_connection, cookie, nullptr);
    if (!reply)
        return {};
    QByteArray bytes;
    if (reply->type != XCB_NONE) {
        const int length = xcb_get_property_value_length(reply);
        bytes = QByteArray(static_cast<const char*>(xcb_get_property_value(reply)), qMax(0, length));
    }
    std::free(reply);
    return bytes;
}

quint32 X11Workspace::cardinal(quint32 window, Atom property) const
{
    const QByteArray bytes = propertyBytes(window, m_atoms[property], XCB_ATOM_ANY);
    if (bytes.size() < int(sizeof(quint32)))
        return 0;
    quint32 value = 0;
    std::memcpy(&value, bytes.constData(), sizeof value);
    return value;
}

quint32 X11Workspace::activeWindow() const
{
    return cardinal(m_root, ActiveWindow);
}

QList<quint32> X11Workspace::windowList(Atom list) const
{
    const QByteArray bytes = propertyBytes(m_root, m_atoms[list], XCB_ATOM_WINDOW);
    QList<quint32> windows(bytes.size() / int(sizeof(quint32)));
    std::memcpy(windows.data(), bytes.constData(), size_t(windows.size()) * sizeof(quint32));
    return windows;
}

QList<quint32> X11Workspace::atomsOf(quint32 window, Atom property) const
{
    const QByteArray bytes = propertyBytes(window, m_atoms[property], XCB_ATOM_ATOM);
    QList<quint32> atoms(bytes.size() / int(sizeof(quint32)));
    std::memcpy(atoms.data(), bytes.constData(), size_t(atoms.size()) * sizeof(quint32));
    return atoms;
}

bool X11Workspace::isExempt(const WindowOwner& owner, quint32 ownPid)
{
    if (owner.realPid != 0 && owner.realPid == ownPid)
        return true;
    return owner.desktopType && !owner.ownerShowsOrdinaryWindow;
}

quint32 X11Workspace::realPid(quint32 window) const
{
    if (!m_hasRes)
        return 0;
    xcb_res_client_id_spec_t spec{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const auto cookie = xcb_res_query_client_ids(m_connection, 1, &spec);
    xcb_res_query_client_ids_reply_t* reply = xcb_res_query_client_ids_reply(m_connection, cookie, nullptr);
    if (!reply)
        return 0;
    quint32 pid = 0;
    for (auto it = xcb_res_query_client_ids_ids_iterator(reply); it.rem; xcb_res_client_id_value_next(&it)) {
        if ((it.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) &&
            xcb_res_client_id_value_value_length(it.data) > 0) {
            pid = *xcb_res_client_id_value_value(it.data);
            break;
        }
    }
    std::free(reply);
    return pid;
}

bool X11Workspace::hasDesktopType(quint32 window) const
{
    for (const quint32 type : atomsOf(window, WmWindowType)) {
        if (type == m_atoms[TypeDesktop] || type == m_atoms[TypeDock] || type == m_atoms[TypeNotification])
            return true;
    }
    return false;
}

X11Workspace::WindowOwner X11Workspace::ownerOf(quint32 window) const
{
    WindowOwner owner;
    owner.claimedPid = cardinal(window, WmPid);
    owner.realPid = realPid(window);
    owner.desktopType = hasDesktopType(window);
    if (owner.desktopType && owner.realPid) {
        // A program that calls one of its windows a dock still shows the others.
        for (const quint32 other : windowList(ClientList)) {
            if (other != window && !hasDesktopType(other) && realPid(other) == owner.realPid) {
                owner.ownerShowsOrdinaryWindow = true;
                break;
            }
        }
    }
    return owner;
}

bool X11Workspace::isJudged(quint32 window, quint32* process) const
{
    if (!window)
        return false;
    for (const QWindow* own : QGuiApplication::allWindows()) {
        if (own->handle() && quint32(own->winId()) == window)
            return false;
    }
    const WindowOwner owner = ownerOf(window);
    if (process)
        *process = processOf(owner);
    return !isExempt(owner, quint32(::getpid()));
}

bool X11Workspace::isDialog(quint32 window) const
{
    // A transient window (a file chooser, a print dialog) belongs to its parent's
    // program, whose windows it serves.
    if (!propertyBytes(window, XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW).isEmpty())
        return true;
    for (const quint32 type : atomsOf(window, WmWindowType)) {
        if (type == m_atoms[TypeDialog] || type == m_atoms[TypeUtility])
            return true;
    }
    return false;
}

WindowFacts X11Workspace::factsOf(quint32 window, quint32 process) const
{
    WindowFacts facts;
    facts.gtkApplicationId =
        QString::fromUtf8(propertyBytes(window, m_atoms[GtkApplicationId], XCB_ATOM_ANY));
    facts.kdeDesktopFile = QString::fromUtf8(propertyBytes(window, m_atoms[KdeDesktopFile], XCB_ATOM_ANY));
    // WM_CLASS is "instance\0class\0", in Latin-1.
    const QList<QByteArray> wmClass = propertyBytes(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING).split('\0');
    if (!wmClass.isEmpty())
        facts.wmInstance = QString::fromLatin1(wmClass.at(0));
    if (wmClass.size() > 1)
        facts.wmClass = QString::fromLatin1(wmClass.at(1));
    // The pid may be missing, or a sandbox's own number: then it names nothing.
    // Where the server knows the real process, the window's claim is not asked.
    if (process)
        facts.executable = QFileInfo(QStringLiteral("/proc/%1/exe").arg(process)).canonicalFilePath();
    return facts;
}

Application X11Workspace::applicationOf(quint32 window, quint32 process)
{
    const WindowFacts facts = factsOf(window, process);
    if (facts.wmClass.isEmpty() && facts.wmInstance.isEmpty() && facts.gtkApplicationId.isEmpty() &&
        facts.kdeDesktopFile.isEmpty() && facts.executable.isEmpty())
        return {};
    return m_entries.applicationForWindow(facts);
}

Application X11Workspace::frontmostApplication()
{
    const quint32 window = activeWindow();
    quint32 process = 0;
    if (!isJudged(window, &process))
        return {};
    Application application = applicationOf(window, process);
    if (application.isValid()) {
        application.pid = process;
        application.dialog = isDialog(window);
    }
    return application;
}

void X11Workspace::hide(const Application& application)
{
    if (!m_connection || !application.isValid())
        return;
    int count = 0;
    for (const quint32 window : windowList(ClientList)) {
        quint32 process = 0;
        if (isJudged(window, &process) && applicationOf(window, process).name == application.name) {
            iconify(window);
            ++count;
        }
    }
    if (count && !windowManagerIconifies())
        moveFocusAwayFrom(application);
    xcb_flush(m_connection);
}

void X11Workspace::iconify(quint32 window)
{
    // ICCCM 4.1.4: ask the window manager, through the root window, to iconify.
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = m_atoms[WmChangeState];
    message.data.data32[0] = IconicState;
    xcb_send_event(m_connection, 0, m_root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
}

bool X11Workspace::windowManagerIconifies()
{
    if (m_iconifies < 0) {
        const QList<quint32> supported = atomsOf(m_root, Supported);
        m_iconifies = supported.contains(m_atoms[WmStateHidden]) ? 1 : 0;
        if (!m_iconifies)
            log(QStringLiteral(
                "The window manager does not iconify; refused windows lose the focus instead"));
    }
    return m_iconifies == 1;
}

void X11Workspace::moveFocusAwayFrom(const Application& application)
{
    // A tiling manager keeps the window on screen: give the focus to the topmost
    // window of another application.
    const QList<quint32> stacking = windowList(ClientListStacking);
    for (auto it = stacking.crbegin(); it != stacking.crend(); ++it) {
        quint32 process = 0;
        if (!isJudged(*it, &process) || applicationOf(*it, process).name == application.name)
            continue;
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = *it;
        message.type = m_atoms[ActiveWindow];
        message.data.data32[0] = 2; // a pager's request: honoured without focus-stealing rules
        xcb_send_event(m_connection, 0, m_root,
                       XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&message));
        return;
    }
}

QStringList X11Workspace::runningApplications()
{
    QStringList names;
    for (const quint32 window : windowList(ClientList)) {
        quint32 process = 0;
        if (!isJudged(window, &process))
            continue;
        const Application application = applicationOf(window, process);
        if (application.isValid() && !names.contains(application.name))
            names << application.name;
    }
    return names;
}

QList<Application> X11Workspace::installedApplications()
{
    return m_entries.installed();
}

Application X11Workspace::applicationFor(const QString& desktopFileOrName)
{
    return m_entries.applicationFor(desktopFileOrName);
}

bool X11Workspace::launch(const Application& application)
{
    QString error;
    if (m_entries.launch(application, &error))
        return true;
    log(QStringLiteral("Could not launch %1: %2").arg(application.name, error));
    return false;
}

bool X11Workspace::openUrl(const QString& address)
{
    const QUrl url(address, QUrl::TolerantMode);
    if (url.isValid() && QDesktopServices::openUrl(url))
        return true;
    log(QStringLiteral("Could not open %1").arg(address));
    return false;
}

void X11Workspace::log(const QString& line) const
{
    if (m_log)
        m_log(line);
}

} // namespace velmora
