#include "HotKeysController.h"

#include "HotKey.h"

#include <algorithm>

namespace velmora {

HotKeysController::HotKeysController(HotKeys& port)
    : m_port(port)
{
}

HotKeysController::~HotKeysController()
{
    for (const auto& [id, box] : m_hotKeys) {
        if (box.handle != 0)
            m_port.unregisterChord(box.handle);
    }
}

void HotKeysController::registerHotKey(HotKey& hotKey)
{
    const bool known = std::any_of(m_hotKeys.cbegin(), m_hotKeys.cend(), [&](const auto& entry) {
        return entry.second.identifier == hotKey.identifier();
    });
    if (known)
        return;

    const quint32 id = ++m_hotKeysCount;
    HotKeyBox& box = m_hotKeys[id];
    box.identifier = hotKey.identifier();
    box.hotKey = &hotKey;
    box.hotKeyID = id;

    // The port takes a bare Qt::Key; a keypad key's Qt::KeypadModifier travels
    // with the other modifiers.
    const KeyCombo combo = hotKey.keyCombo();
    const quint32 modifierBits = quint32(Qt::KeyboardModifierMask);
    const int qtKey = int(combo.keyCode & ~modifierBits);
    const Qt::KeyboardModifiers modifiers =
        combo.qtModifiers() | Qt::KeyboardModifiers::fromInt(int(combo.keyCode & modifierBits));

    box.handle = m_port.registerChord(
        qtKey, modifiers, [this, id] { handleHotKeyEvent(id, true); },
        [this, id] { handleHotKeyEvent(id, false); });
}

void HotKeysController::unregisterHotKey(HotKey& hotKey)
{
    const auto entry = std::find_if(m_hotKeys.begin(), m_hotKeys.end(), [&](const auto& candidate) {
        return candidate.second.identifier == hotKey.identifier();
    });
    if (entry == m_hotKeys.end() || entry->second.hotKey != &hotKey)
        return;
    const quint32 handle = entry->second.handle;
    m_hotKeys.erase(entry);
    if (handle != 0)
        m_port.unregisterChord(handle);
}

bool HotKeysController::handleHotKeyEvent(quint32 hotKeyID, bool pressed)
{
    const auto entry = m_hotKeys.find(hotKeyID);
    if (entry == m_hotKeys.end())
        return false;
    const HotKeyBox& box = entry->second;
    if (box.hotKey == nullptr || box.handle == 0 || box.hotKey->isPaused())
        return false;
    // A copy, because the handler may well destroy its own HotKey.
    const HotKey::Handler handler = pressed ? box.hotKey->keyDownHandler() : box.hotKey->keyUpHandler();
    if (!handler)
        return false;
    handler();
    return true;
}

} // namespace velmora
