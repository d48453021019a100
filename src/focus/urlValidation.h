#pragma once

#include <QString>
#include <QStringList>

namespace velmora {

// Whole-string match where "*" stands for any run of characters and "?" for one.
// Case-sensitive, like the rest of address matching.
bool wildcard(const QString& text, const QString& pattern);

// The host of an address, with every "www." taken out; empty text when the text
// is no address or has no host ("example.org" alone has none). Characters in the
// path, query or fragment that no address may hold ("%zz", "|") do not hide the
// host.
QString getDomainFromUrl(const QString& url);

// Whether an entry of an address list can match anything: an entry with "http"
// stands for its host, and one whose host cannot be read ("httpbin.org",
// "http://") stands for nothing.
bool isReadableEntry(const QString& entry);

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

// Whether any entry of the list matches the address. `host` is the host as the
// browser parsed the address; the address's own host serves when it is empty.
bool matchesAnyEntry(const QString& address, const QString& host, const QStringList& list);

} // namespace velmora
