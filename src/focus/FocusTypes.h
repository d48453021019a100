#pragma once

#include <QString>
#include <QVariantList>

namespace velmora {

// Focus types are kept as an ordered list of dictionaries: "name", "color",
// "appsArray", "urlsArray", "isOn", "isAllowedAllApps", "isAllowedAllUrls", and
// "isDefault" or "isMeetings" on the two built-in types. The default type is
// always last.
namespace focus {

inline const QString kDefaultTypeName = QStringLiteral("Complete anarchy! Block nothing 😬");
inline const QString kMeetingsTypeName = QStringLiteral("Meetings");

// Six upper-case hexadecimal digits, no "#"; each component in 0..1.
QString getColorString(double red, double green, double blue);

QVariantMap makeDefaultType();
QVariantMap makeMeetingsType();

// Brings a stored list into shape at launch: no block survives a restart, the
// default type is last and carries its own name, and the meetings type exists.
QVariantList repairAtLaunch(const QVariantList& stored);

bool isFocusModeOn(const QVariantList& types);

} // namespace focus
} // namespace velmora
