#pragma once

#include <array>
#include <optional>
#include <QString>
#include <QtGlobal>

namespace velmora {

// The keys a hot key can be made of. `return_` and `delete_` carry an underscore
// only because the plain words are reserved in C++.
enum class Key
{
    // clang-format off
    a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y, z,
    zero, one, two, three, four, five, six, seven, eight, nine,
    period, quote, rightBracket, semicolon, slash, backslash, comma, equal, grave, leftBracket, minus,
    space, tab, return_,
    command, rightCommand, option, rightOption, control, rightControl, shift, rightShift, function, capsLock,
    pageUp, pageDown, home, end, upArrow, rightArrow, downArrow, leftArrow,
    f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17, f18, f19, f20,
    keypad0, keypad1, keypad2, keypad3, keypad4, keypad5, keypad6, keypad7, keypad8, keypad9,
    keypadClear, keypadDecimal, keypadDivide, keypadEnter, keypadEquals, keypadMinus, keypadMultiply, keypadPlus,
    escape, delete_, forwardDelete, help, volumeUp, volumeDown, mute,
    // clang-format on
};

inline constexpr std::size_t keyCount = 113;

// Every case, in declaration order.
const std::array<Key, keyCount>& allKeys();

// The Qt::Key that stands for the key. Keypad keys are the Qt key of the same
// sign with Qt::KeypadModifier added, as QKeySequence writes them ("Num+0").
// Qt does not tell left from right for Ctrl, Alt and Shift, so a right-hand
// modifier has the code of its left-hand twin.
quint32 keyCode(Key key);

// The inverse of keyCode(); a right-hand modifier's code answers the left-hand
// key. Absent for a code no key stands for.
std::optional<Key> keyFromKeyCode(quint32 code);

// Reads a key from the lower-cased name of its case ("return", "f12",
// "rightbracket"), from the character it types (",", "=", " ") or from its
// description ("↩"). Letters are taken in either case.
std::optional<Key> keyFromString(const QString& text);

// What the key shows in a menu or a preferences field: "A", "0", "]", "↩", "F5".
QString description(Key key);

} // namespace velmora
