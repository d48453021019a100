#pragma once

#include "Key.h"

#include <optional>
#include <QString>
#include <Qt>
#include <QVariantMap>

namespace velmora {

// A chord: one key and the modifiers held with it, in the form the preferences
// keep it.
struct KeyCombo
{
    quint32 keyCode = 0;   // keyCode(Key): a Qt::Key, with Qt::KeypadModifier for keypad keys
    quint32 modifiers = 0; // Qt::KeyboardModifiers bits

    KeyCombo() = default;
    KeyCombo(quint32 keyCode, quint32 modifiers);
    KeyCombo(Key key, Qt::KeyboardModifiers modifiers);

    std::optional<Key> key() const;
    Qt::KeyboardModifiers qtModifiers() const;
    bool isValid() const;

    // "Ctrl+Super+J": Ctrl, Alt, Shift and Super in that order, then the key.
    QString description() const;

    // {"keyCode", "modifiers"}, both unsigned numbers.
    QVariantMap dictionary() const;
    // Reads back what dictionary() wrote. The map may have been edited by hand,
    // so anything but two non-negative 32-bit integers, and modifier bits Qt does
    // not know, is refused. Whether the key exists is isValid()'s business.
    static std::optional<KeyCombo> fromDictionary(const QVariantMap& map);

    friend bool operator==(const KeyCombo&, const KeyCombo&) = default;
};

} // namespace velmora
