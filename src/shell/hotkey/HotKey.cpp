#include "HotKey.h"

#include "HotKeysController.h"

namespace velmora {

HotKey::HotKey(HotKeysController& controller, const KeyCombo& keyCombo, Handler keyDownHandler,
               Handler keyUpHandler)
    : HotKey(controller, QUuid::createUuid(), keyCombo, std::move(keyDownHandler), std::move(keyUpHandler))
{
}

HotKey::HotKey(HotKeysController& controller, Key key, Qt::KeyboardModifiers modifiers,
               Handler keyDownHandler, Handler keyUpHandler)
    : HotKey(controller, KeyCombo(key, modifiers), std::move(keyDownHandler), std::move(keyUpHandler))
{
}

HotKey::HotKey(HotKeysController& controller, const QUuid& identifier, const KeyCombo& keyCombo,
               Handler keyDownHandler, Handler keyUpHandler)
    : m_controller(controller)
    , m_identifier(identifier)
    , m_keyCombo(keyCombo)
    , m_keyDownHandler(std::move(keyDownHandler))
    , m_keyUpHandler(std::move(keyUpHandler))
{
    m_controller.registerHotKey(*this);
}

HotKey::~HotKey()
{
    m_controller.unregisterHotKey(*this);
}

void HotKey::setPaused(bool paused)
{
    if (paused == m_isPaused)
        return;
    m_isPaused = paused;
    if (paused)
        m_controller.unregisterHotKey(*this);
    else
        m_controller.registerHotKey(*this);
}

} // namespace velmora
