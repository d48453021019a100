#pragma once

#include "HotKeys.h"

#include <map>
#include <QUuid>

namespace velmora {

class HotKey;

// One registered hot key.
struct HotKeyBox
{
    QUuid identifier;
    HotKey* hotKey = nullptr; // the HotKey removes its box before it goes away
    quint32 handle = 0;       // from the HotKeys port; 0 when the chord could not be grabbed
    quint32 hotKeyID = 0;     // the box's key in HotKeysController::hotKeys()
};

// The table of the program's system-wide hot keys, and the dispatch of the
// port's callbacks to them. The HotKeys this controller registers must not
// outlive it.
class HotKeysController
{
public:
    explicit HotKeysController(HotKeys& port);
    // Gives back every chord still held at the port.
    ~HotKeysController();

    HotKeysController(const HotKeysController&) = delete;
    HotKeysController& operator=(const HotKeysController&) = delete;

    // Enters the hot key and grabs its chord. A hot key whose identifier is in
    // the table already is left alone. A chord the port refuses stays in the
    // table without a handle and never fires.
    void registerHotKey(HotKey& hotKey);
    // Gives the chord back and forgets the hot key; only the HotKey that owns a
    // box can remove it.
    void unregisterHotKey(HotKey& hotKey);

    // Runs the key-down (pressed) or key-up handler of the hot key with that id.
    // Answers whether a handler ran: not for an unknown id, a paused or refused
    // hot key, or a missing handler.
    bool handleHotKeyEvent(quint32 hotKeyID, bool pressed);

    const std::map<quint32, HotKeyBox>& hotKeys() const { return m_hotKeys; }
    quint32 hotKeysCount() const { return m_hotKeysCount; }

private:
    HotKeys& m_port;
    std::map<quint32, HotKeyBox> m_hotKeys;
    quint32 m_hotKeysCount = 0;
};

} // namespace velmora
