#include "Key.h"

#include <Qt>

namespace velmora {

namespace {

struct KeyInfo
{
    Key key;
    quint32 code;
    const char* name;        // the lower-cased case name
    const char16_t* display; // what description() shows
};

constexpr quint32 qt(Qt::Key key)
{
    return quint32(key);
}

constexpr quint32 keypad(Qt::Key key)
{
    return quint32(key) | quint32(Qt::KeypadModifier);
}

// clang-format off
constexpr KeyInfo keyTable[] = {
    {Key::a, qt(Qt::Key_A), "a", u"A"},
    {Key::b, qt(Qt::Key_B), "b", u"B"},
    {Key::c, qt(Qt::Key_C), "c", u"C"},
    {Key::d, qt(Qt::Key_D), "d", u"D"},
    {Key::e, qt(Qt::Key_E), "e", u"E"},
    {Key::f, qt(Qt::Key_F), "f", u"F"},
    {Key::g, qt(Qt::Key_G), "g", u"G"},
    {Key::h, qt(Qt::Key_H), "h", u"H"},
    {Key::i, qt(Qt::Key_I), "i", u"I"},
    {Key::j, qt(Qt::Key_J), "j", u"J"},
    {Key::k, qt(Qt::Key_K), "k", u"K"},
    {Key::l, qt(Qt::Key_L), "l", u"L"},
    {Key::m, qt(Qt::Key_M), "m", u"M"},
    {Key::n, qt(Qt::Key_N), "n", u"N"},
    {Key::o, qt(Qt::Key_O), "o", u"O"},
    {Key::p, qt(Qt::Key_P), "p", u"P"},
    {Key::q, qt(Qt::Key_Q), "q", u"Q"},
    {Key::r, qt(Qt::Key_R), "r", u"R"},
    {Key::s, qt(Qt::Key_S), "s", u"S"},
    {Key::t, qt(Qt::Key_T), "t", u"T"},
    {Key::u, qt(Qt::Key_U), "u", u"U"},
    {Key::v, qt(Qt::Key_V), "v", u"V"},
    {Key::w, qt(Qt::Key_W), "w", u"W"},
    {Key::x, qt(Qt::Key_X), "x", u"X"},
    {Key::y, qt(Qt::Key_Y), "y", u"Y"},
    {Key::z, qt(Qt::Key_Z), "z", u"Z"},
    {Key::zero, qt(Qt::Key_0), "zero", u"0"},
    {Key::one, qt(Qt::Key_1), "one", u"1"},
    {Key::two, qt(Qt::Key_2), "two", u"2"},
    {Key::three, qt(Qt::Key_3), "three", u"3"},
    {Key::four, qt(Qt::Key_4), "four", u"4"},
    {Key::five, qt(Qt::Key_5), "five", u"5"},
    {Key::six, qt(Qt::Key_6), "six", u"6"},
    {Key::seven, qt(Qt::Key_7), "seven", u"7"},
    {Key::eight, qt(Qt::Key_8), "eight", u"8"},
    {Key::nine, qt(Qt::Key_9), "nine", u"9"},
    {Key::period, qt(Qt::Key_Period), "period", u"."},
    {Key::quote, qt(Qt::Key_Apostrophe), "quote", u"'"},
    {Key::rightBracket, qt(Qt::Key_BracketRight), "rightbracket", u"]"},
    {Key::semicolon, qt(Qt::Key_Semicolon), "semicolon", u";"},
    {Key::slash, qt(Qt::Key_Slash), "slash", u"/"},
    {Key::backslash, qt(Qt::Key_Backslash), "backslash", u"\\"},
    {Key::comma, qt(Qt::Key_Comma), "comma", u","},
    {Key::equal, qt(Qt::Key_Equal), "equal", u"="},
    {Key::grave, qt(Qt::Key_QuoteLeft), "grave", u"`"},
    {Key::leftBracket, qt(Qt::Key_BracketLeft), "leftbracket", u"["},
    {Key::minus, qt(Qt::Key_Minus), "minus", u"-"},
    {Key::space, qt(Qt::Key_Space), "space", u"Space"},
    {Key::tab, qt(Qt::Key_Tab), "tab", u"⇥"},
    {Key::return_, qt(Qt::Key_Return), "return", u"↩"},
    {Key::command, qt(Qt::Key_Super_L), "command", u"Super"},
    {Key::rightCommand, qt(Qt::Key_Super_L), "rightcommand", u"Super"},
    {Key::option, qt(Qt::Key_Alt), "option", u"Alt"},
    {Key::rightOption, qt(Qt::Key_Alt), "rightoption", u"Alt"},
    {Key::control, qt(Qt::Key_Control), "control", u"Ctrl"},
    {Key::rightControl, qt(Qt::Key_Control), "rightcontrol", u"Ctrl"},
    {Key::shift, qt(Qt::Key_Shift), "shift", u"Shift"},
    {Key::rightShift, qt(Qt::Key_Shift), "rightshift", u"Shift"},
    // PC keyboards have no Fn key that reaches applications; Hyper is the
    // spare modifier X11 keeps for it.
    {Key::function, qt(Qt::Key_Hyper_L), "function", u"Fn"},
    {Key::capsLock, qt(Qt::Key_CapsLock), "capslock", u"Caps Lock"},
    {Key::pageUp, qt(Qt::Key_PageUp), "pageup", u"Page Up"},
    {Key::pageDown, qt(Qt::Key_PageDown), "pagedown", u"Page Down"},
    {Key::home, qt(Qt::Key_Home), "home", u"Home"},
    {Key::end, qt(Qt::Key_End), "end", u"End"},
    {Key::upArrow, qt(Qt::Key_Up), "uparrow", u"↑"},
    {Key::rightArrow, qt(Qt::Key_Right), "rightarrow", u"→"},
    {Key::downArrow, qt(Qt::Key_Down), "downarrow", u"↓"},
    {Key::leftArrow, qt(Qt::Key_Left), "leftarrow", u"←"},
    {Key::f1, qt(Qt::Key_F1), "f1", u"F1"},
    {Key::f2, qt(Qt::Key_F2), "f2", u"F2"},
    {Key::f3, qt(Qt::Key_F3), "f3", u"F3"},
    {Key::f4, qt(Qt::Key_F4), "f4", u"F4"},
    {Key::f5, qt(Qt::Key_F5), "f5", u"F5"},
    {Key::f6, qt(Qt::Key_F6), "f6", u"F6"},
    {Key::f7, qt(Qt::Key_F7), "f7", u"F7"},
    {Key::f8, qt(Qt::Key_F8), "f8", u"F8"},
    {Key::f9, qt(Qt::Key_F9), "f9", u"F9"},
    {Key::f10, qt(Qt::Key_F10), "f10", u"F10"},
    {Key::f11, qt(Qt::Key_F11), "f11", u"F11"},
    {Key::f12, qt(Qt::Key_F12), "f12", u"F12"},
    {Key::f13, qt(Qt::Key_F13), "f13", u"F13"},
    {Key::f14, qt(Qt::Key_F14), "f14", u"F14"},
    {Key::f15, qt(Qt::Key_F15), "f15", u"F15"},
    {Key::f16, qt(Qt::Key_F16), "f16", u"F16"},
    {Key::f17, qt(Qt::Key_F17), "f17", u"F17"},
    {Key::f18, qt(Qt::Key_F18), "f18", u"F18"},
    {Key::f19, qt(Qt::Key_F19), "f19", u"F19"},
    {Key::f20, qt(Qt::Key_F20), "f20", u"F20"},
    {Key::keypad0, keypad(Qt::Key_0), "keypad0", u"0"},
    {Key::keypad1, keypad(Qt::Key_1), "keypad1", u"1"},
    {Key::keypad2, keypad(Qt::Key_2), "keypad2", u"2"},
    {Key::keypad3, keypad(Qt::Key_3), "keypad3", u"3"},
    {Key::keypad4, keypad(Qt::Key_4), "keypad4", u"4"},
    {Key::keypad5, keypad(Qt::Key_5), "keypad5", u"5"},
    {Key::keypad6, keypad(Qt::Key_6), "keypad6", u"6"},
    {Key::keypad7, keypad(Qt::Key_7), "keypad7", u"7"},
    {Key::keypad8, keypad(Qt::Key_8), "keypad8", u"8"},
    {Key::keypad9, keypad(Qt::Key_9), "keypad9", u"9"},
    {Key::keypadClear, keypad(Qt::Key_Clear), "keypadclear", u"Clear"},
    {Key::keypadDecimal, keypad(Qt::Key_Period), "keypaddecimal", u"."},
    {Key::keypadDivide, keypad(Qt::Key_Slash), "keypaddivide", u"/"},
    {Key::keypadEnter, keypad(Qt::Key_Enter), "keypadenter", u"Enter"},
    {Key::keypadEquals, keypad(Qt::Key_Equal), "keypadequals", u"="},
    {Key::keypadMinus, keypad(Qt::Key_Minus), "keypadminus", u"-"},
    {Key::keypadMultiply, keypad(Qt::Key_Asterisk), "keypadmultiply", u"*"},
    {Key::keypadPlus, keypad(Qt::Key_Plus), "keypadplus", u"+"},
    {Key::escape, qt(Qt::Key_Escape), "escape", u"⎋"},
    {Key::delete_, qt(Qt::Key_Backspace), "delete", u"⌫"},
    {Key::forwardDelete, qt(Qt::Key_Delete), "forwarddelete", u"⌦"},
    {Key::help, qt(Qt::Key_Help), "help", u"Help"},
    {Key::volumeUp, qt(Qt::Key_VolumeUp), "volumeup", u"Volume Up"},
    {Key::volumeDown, qt(Qt::Key_VolumeDown), "volumedown", u"Volume Down"},
    {Key::mute, qt(Qt::Key_VolumeMute), "mute", u"Mute"},
};
// clang-format on

constexpr bool tableFollowsEnum()
{
    for (std::size_t index = 0; index < std::size(keyTable); ++index) {
        if (keyTable[index].key != Key(index))
            return false;
    }
    return true;
}

static_assert(std::size(keyTable) == keyCount);
static_assert(tableFollowsEnum(), "keyTable rows must follow the order of Key");

// Codes Qt also sends for keys that have one of their own in the table.
struct KeyAlias
{
    quint32 code;
    Key key;
};

constexpr KeyAlias codeAliases[] = {
    {qt(Qt::Key_Super_R), Key::command},
    {qt(Qt::Key_Meta), Key::command},
    {qt(Qt::Key_Backtab), Key::tab}, // Tab with Shift held
};

const KeyInfo& info(Key key)
{
    return keyTable[std::size_t(key)];
}

} // namespace

const std::array<Key, keyCount>& allKeys()
{
    static const std::array<Key, keyCount> keys = [] {
        std::array<Key, keyCount> result{};
        for (std::size_t index = 0; index < keyCount; ++index)
            result[index] = keyTable[index].key;
        return result;
    }();
    return keys;
}

quint32 keyCode(Key key)
{
    return info(key).code;
}

std::optional<Key> keyFromKeyCode(quint32 code)
{
    // Left-hand modifiers come first in the table, so they win over their twins.
    for (const KeyInfo& row : keyTable) {
        if (row.code == code)
            return row.key;
    }
    for (const KeyAlias& alias : codeAliases) {
        if (alias.code == code)
            return alias.key;
    }
    return std::nullopt;
}

std::optional<Key> keyFromString(const QString& text)
{
    if (text == u" ")
        return Key::space;
    if (text == u"\t")
        return Key::tab;
    if (text == u"\r" || text == u"\n")
        return Key::return_;

    for (const KeyInfo& row : keyTable) {
        if (QLatin1StringView(row.name).compare(text, Qt::CaseInsensitive) == 0)
            return row.key;
    }
    // Main-keyboard keys come before the keypad in the table, so "0" and "."
    // answer the main keys.
    for (const KeyInfo& row : keyTable) {
        if (QStringView(row.display).compare(text, Qt::CaseInsensitive) == 0)
            return row.key;
    }
    return std::nullopt;
}

QString description(Key key)
{
    return QStringView(info(key).display).toString();
}

} // namespace velmora
