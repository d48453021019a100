#pragma once

#include <QString>

namespace velmora {

// Whole-string match where "*" stands for any run of characters and "?" for one.
// Case-sensitive, like the rest of address matching.
bool wildcard(const QString& text, const QString& pattern);

// The host of an address, with every "www." taken out; empty text when the text
// is no address or has no host ("example.org" alone has none).
QString getDomainFromUrl(const QString& url);

// One entry of an address list against an address and its domain. A match is an
// allowed address for an allow list and a refused one for the always-blocked list.
struct urlValidation
{
    // An entry with "http" stands for its host; one with "file://" is matched
    // against the whole address; one with "*" is a pattern for the domain; any
    // other entry matches every domain that contains it. Matching is
    // case-sensitive: "Example" does not match "example.org".
    static bool isUrlValid(const QString& urlToCheck, const QString& allowUrl, const QString& domain);
};

} // namespace velmora
