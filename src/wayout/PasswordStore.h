#pragma once

#include <QString>

namespace velmora {

class Preferences;

// The user's own password: its UTF-8 bytes in base64 under one preference key.
// Reversible on purpose: it only keeps the text from being read at a glance.
namespace password {

bool isSet(const Preferences& preferences);
void store(Preferences& preferences, const QString& text);

enum class Check
{
    Correct,
    Wrong,
    // The stored value is no base64 of UTF-8 text: nothing lets the user through.
    Undecodable,
    NotSet,
};
Check check(const Preferences& preferences, const QString& entered);

} // namespace password
} // namespace velmora
