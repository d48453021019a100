#include "X11HotKeys.h"

#include <QCoreApplication>
#include <QGuiApplication>

#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>

#include <cstdlib>
#include <vector>

namespace velmora {

namespace {

// A chord must also fire with Caps Lock or Num Lock (Mod2) on, and X matches
// modifiers exactly: each chord is grabbed four times.
constexpr quint16 LockVariants[] = {0, XCB_MOD_MASK_LOCK, XCB_MOD_MASK_2, XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2};
constexpr quint16 IgnoredModifiers = XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2;
// A repeated key's press comes with the same time stamp as its release, in the same
// batch of events; this is ample.
constexpr int RepeatWindowMs = 20;

quint32 keysymFor(int qtKey)
{
    if (qtKey >= Qt::Key_A && qtKey <= Qt::Key_Z)
        return quint32(qtKey - Qt::Key_A + 'a');
    if (qtKey >= Qt::Key_Space && qtKey <= Qt::Key_AsciiTilde)
        return quint32(qtKey);
    // Latin-1 letters: the keysym of the unshifted, lower-case letter.
    if (qtKey >= 0xc0 && qtKey <= 0xde && qtKey != 0xd7)
        return quint32(qtKey + 0x20);
    if (qtKey >= 0xa0 && qtKey <= 0xff)
        return quint32(qtKey);
    if (qtKey >= Qt::Key_F1 && qtKey <= Qt::Key_F35)
        return quint32(0xffbe + (qtKey - Qt::Key_F1));
    switch (qtKey) {
    case Qt::Key_Escape:
        return 0xff1b;
    case Qt::Key_Tab:
        return 0xff09;
    case Qt::Key_Backtab:
        return 0xfe20; // ISO_Left_Tab
    case Qt::Key_Backspace:
        return 0xff08;
    case Qt::Key_Return:
        return 0xff0d;
    case Qt::Key_Enter:
        return 0xff8d; // KP_Enter
    case Qt::Key_Insert:
        return 0xff63;
    case Qt::Key_Delete:
        return 0xffff;
    case Qt::Key_Pause:
        return 0xff13;
    case Qt::Key_Print:
        return 0xff61;
    case Qt::Key_Home:
        return 0xff50;
    case Qt::Key_End:
        return 0xff57;
    case Qt::Key_Left:
        return 0xff51;
    case Qt::Key_Up:
        return 0xff52;
    case Qt::Key_Right:
        return 0xff53;
    case Qt::Key_Down:
        return 0xff54;
    case Qt::Key_PageUp:
        return 0xff55;
    case Qt::Key_PageDown:
        return 0xff56;
    case Qt::Key_Menu:
        return 0xff67;
    default:
        return 0;
    }
}

quint16 x11Modifiers(Qt::KeyboardModifiers modifiers)
{
    quint16 mask = 0;
    if (modifiers & Qt::ShiftModifier)
        mask |= XCB_MOD_MASK_SHIFT;
    if (modifiers & Qt::ControlModifier)
        mask |= XCB_MOD_MASK_CONTROL;
    if (modifiers & Qt::AltModifier)
        mask |= XCB_MOD_MASK_1;
    // Qt's Meta is the Super (Windows) key on X11.
    if (modifiers & Qt::MetaModifier)
        mask |= XCB_MOD_MASK_4;
    return mask;
}

} // namespace

X11HotKeys::X11HotKeys()
{
    const auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    if (!x11 || !x11->connection() || xcb_connection_has_error(x11->connection()))
        return;
    m_releaseTimer.setSingleShot(true);
    m_releaseTimer.setInterval(RepeatWindowMs);
    QObject::connect(&m_releaseTimer, &QTimer::timeout, [this] { finishReleases(); });
    m_connection = x11->connection();
    const xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
    if (!screens.rem)
        return;
    m_root = screens.data->root;
    m_symbols = xcb_key_symbols_alloc(m_connection);
    QCoreApplication::instance()->installNativeEventFilter(this);
}

X11HotKeys::~X11HotKeys()
{
    if (!m_symbols)
        return;
    if (QCoreApplication::instance())
        QCoreApplication::instance()->removeNativeEventFilter(this);
    for (const Chord& chord : std::as_const(m_chords))
        ungrab(chord.keycodes, chord.modifiers);
    xcb_flush(m_connection);
    xcb_key_symbols_free(m_symbols);
}

quint32 X11HotKeys::registerChord(int qtKey, Qt::KeyboardModifiers modifiers, Handler pressed,
                                  Handler released)
{
    if (!m_symbols)
        return 0;
    const quint32 keysym = keysymFor(qtKey);
    if (keysym == 0)
        return 0;
    Chord chord;
    if (xcb_keycode_t* keycodes = xcb_key_symbols_get_keycode(m_symbols, keysym)) {
        for (xcb_keycode_t* code = keycodes; *code != XCB_NO_SYMBOL; ++code)
            chord.keycodes << *code;
        std::free(keycodes);
    }
    if (chord.keycodes.isEmpty())
        return 0;
    chord.modifiers = x11Modifiers(modifiers);
    chord.pressed = std::move(pressed);
    chord.released = std::move(released);
    // A chord this program already holds is shared, not grabbed again.
    if (!isGrabbedByAnother(chord, 0) && !grab(chord.keycodes, chord.modifiers))
        return 0;
    const quint32 handle = m_nextHandle++;
    m_chords.insert(handle, std::move(chord));
    return handle;
}

void X11HotKeys::unregisterChord(quint32 handle)
{
    const auto it = m_chords.find(handle);
    if (it == m_chords.end())
        return;
    if (!isGrabbedByAnother(it.value(), handle)) {
        ungrab(it->keycodes, it->modifiers);
        xcb_flush(m_connection);
    }
    m_chords.erase(it);
}

bool X11HotKeys::grab(const QList<quint8>& keycodes, quint16 modifiers)
{
    QList<xcb_void_cookie_t> cookies;
    for (const quint8 keycode : keycodes) {
        for (const quint16 variant : LockVariants) {
            cookies << xcb_grab_key_checked(m_connection, 1, m_root, modifiers | variant, keycode,
                                            XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        }
    }
    bool granted = true;
    for (const xcb_void_cookie_t cookie : std::as_const(cookies)) {
        if (xcb_generic_error_t* error = xcb_request_check(m_connection, cookie)) {
            // Mostly BadAccess: another client holds the chord.
            granted = false;
            std::free(error);
        }
    }
    if (!granted) {
        // Ungrabbing only ever releases this client's own grabs.
        ungrab(keycodes, modifiers);
        xcb_flush(m_connection);
    }
    return granted;
}

void X11HotKeys::ungrab(const QList<quint8>& keycodes, quint16 modifiers)
{
    for (const quint8 keycode : keycodes) {
        for (const quint16 variant : LockVariants)
            xcb_ungrab_key(m_connection, keycode, m_root, modifiers | variant);
    }
}

bool X11HotKeys::isGrabbedByAnother(const Chord& chord, quint32 except) const
{
    for (auto it = m_chords.cbegin(); it != m_chords.cend(); ++it) {
        if (it.key() != except && it->modifiers == chord.modifiers && it->keycodes == chord.keycodes)
            return true;
    }
    return false;
}

bool X11HotKeys::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*)
{
    if (eventType != "xcb_generic_event_t" || !message || m_chords.isEmpty())
        return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    const quint8 type = event->response_type & ~0x80;
    if (type != XCB_KEY_PRESS && type != XCB_KEY_RELEASE)
        return false;
    const auto* key = reinterpret_cast<const xcb_key_press_event_t*>(event);
    const quint16 modifiers = key->state & 0xff & ~IgnoredModifiers;

    std::vector<Handler> toRun;
    bool matched = false;
    for (Chord& chord : m_chords) {
        if (!chord.keycodes.contains(key->detail))
            continue;
        if (type == XCB_KEY_PRESS && chord.releasePending) {
            // The key is held and repeating: neither a release nor a new press.
            matched = true;
            chord.releasePending = false;
        } else if (type == XCB_KEY_PRESS && modifiers == chord.modifiers) {
            matched = true;
            if (!chord.down && chord.pressed)
                toRun.push_back(chord.pressed);
            chord.down = true;
        } else if (type == XCB_KEY_RELEASE && chord.down) {
            // The modifiers may already be up: any release of the key ends the chord.
            matched = true;
            chord.releasePending = true;
            m_releaseTimer.start();
        }
    }
    // Handlers may register or unregister chords: they run from copies, after the
    // search.
    for (const Handler& handler : toRun)
        handler();
    return matched;
}

void X11HotKeys::finishReleases()
{
    std::vector<Handler> toRun;
    for (Chord& chord : m_chords) {
        if (!chord.releasePending)
            continue;
        chord.releasePending = false;
        chord.down = false;
        if (chord.released)
            toRun.push_back(chord.released);
    }
    for (const Handler& handler : toRun)
        handler();
}

} // namespace velmora
