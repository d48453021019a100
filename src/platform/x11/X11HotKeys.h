#pragma once

#include "HotKeys.h"

#include <QAbstractNativeEventFilter>
#include <QHash>
#include <QList>
#include <QTimer>

struct xcb_connection_t;
struct _XCBKeySymbols;

namespace velmora {

// Passive key grabs on the X11 root window. Off X11 (Wayland without Xwayland
// focus, the offscreen platform) every chord answers 0.
class X11HotKeys : public HotKeys, public QAbstractNativeEventFilter
{
public:
    // Needs the QGuiApplication to exist already.
    X11HotKeys();
    ~X11HotKeys() override;
    X11HotKeys(const X11HotKeys&) = delete;
    X11HotKeys& operator=(const X11HotKeys&) = delete;

    quint32 registerChord(int qtKey, Qt::KeyboardModifiers modifiers, Handler pressed,
                          Handler released) override;
    void unregisterChord(quint32 handle) override;

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    struct Chord
    {
        QList<quint8> keycodes;
        quint16 modifiers = 0;
        Handler pressed;
        Handler released;
        bool down = false;
        // Released, unless a press follows at once: X11 repeats a held key as
        // release-press pairs.
        bool releasePending = false;
    };

    bool grab(const QList<quint8>& keycodes, quint16 modifiers);
    void ungrab(const QList<quint8>& keycodes, quint16 modifiers);
    bool isGrabbedByAnother(const Chord& chord, quint32 except) const;
    void finishReleases();

    xcb_connection_t* m_connection = nullptr;
    quint32 m_root = 0;
    _XCBKeySymbols* m_symbols = nullptr;
    QHash<quint32, Chord> m_chords;
    quint32 m_nextHandle = 1;
    QTimer m_releaseTimer;
};

} // namespace velmora
