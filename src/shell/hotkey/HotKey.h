#pragma once

#include "KeyCombo.h"

#include <functional>
#include <QUuid>

namespace velmora {

class HotKeysController;

// A system-wide chord with press and release callbacks. It is registered with
// its controller from construction to destruction, except while paused. The
// controller keeps its address, so a HotKey neither copies nor moves, and the
// controller must outlive it.
class HotKey
{
public:
    using Handler = std::function<void()>;

    HotKey(HotKeysController& controller, const KeyCombo& keyCombo, Handler keyDownHandler = {},
           Handler keyUpHandler = {});
    HotKey(HotKeysController& controller, Key key, Qt::KeyboardModifiers modifiers,
           Handler keyDownHandler = {}, Handler keyUpHandler = {});
    // For a hot key that keeps its identity across restarts. A second HotKey
    // with an identifier already registered stays unregistered.
    HotKey(HotKeysController& controller, const QUuid& identifier, const KeyCombo& keyCombo,
           Handler keyDownHandler = {}, Handler keyUpHandler = {});
    ~HotKey();

    HotKey(const HotKey&) = delete;
    HotKey& operator=(const HotKey&) = delete;

    QUuid identifier() const { return m_identifier; }
    KeyCombo keyCombo() const { return m_keyCombo; }

    const Handler& keyDownHandler() const { return m_keyDownHandler; }
    void setKeyDownHandler(Handler handler) { m_keyDownHandler = std::move(handler); }
    const Handler& keyUpHandler() const { return m_keyUpHandler; }
    void setKeyUpHandler(Handler handler) { m_keyUpHandler = std::move(handler); }

    // Pausing gives the chord back to the system; resuming grabs it again.
    bool isPaused() const { return m_isPaused; }
    void setPaused(bool paused);

private:
    HotKeysController& m_controller;
    const QUuid m_identifier;
    const KeyCombo m_keyCombo;
    Handler m_keyDownHandler;
    Handler m_keyUpHandler;
    bool m_isPaused = false;
};

} // namespace velmora
