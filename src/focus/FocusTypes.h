#pragma once

#include <QColor>
#include <QString>
#include <QStringList>
#include <QVariantList>

namespace velmora {

// Focus types are kept as an ordered list of dictionaries: "name", "color",
// "appsArray", "urlsArray", "isOn", "isAllowedAllApps", "isAllowedAllUrls", and
// "isDefault" or "isMeetings" on the two built-in types. The default type is
// always last.
namespace focus {

// The keys of one type.
namespace key {
inline const QString name = QStringLiteral("name");
inline const QString color = QStringLiteral("color");
inline const QString appsArray = QStringLiteral("appsArray");
inline const QString urlsArray = QStringLiteral("urlsArray");
inline const QString isOn = QStringLiteral("isOn");
inline const QString isAllowedAllApps = QStringLiteral("isAllowedAllApps");
inline const QString isAllowedAllUrls = QStringLiteral("isAllowedAllUrls");
inline const QString isDefault = QStringLiteral("isDefault");
inline const QString isMeetings = QStringLiteral("isMeetings");
} // namespace key

inline const QString kDefaultTypeName = QStringLiteral("Complete anarchy! Block nothing 😬");
inline const QString kMeetingsTypeName = QStringLiteral("Meetings");

// Six upper-case hexadecimal digits, no "#"; each component in 0..1.
QString getColorString(double red, double green, double blue);
QString getColorString(const QColor& color);
// The reverse: leading "#" skipped, then a hexadecimal number read as 0xRRGGBB.
// Anything else reads as black.
QColor colorFromString(const QString& text);
bool isHexColorString(const QString& text);

QVariantMap makeDefaultType();
QVariantMap makeMeetingsType();
// A type the user adds: nothing blocked until he chooses what is allowed.
QVariantMap makeUserType(const QString& name, const QString& color);

// Readers of one type. A missing or wrongly typed key reads as empty text, an
// empty list or false.
QString text(const QVariantMap& type, const QString& key);
QStringList textList(const QVariantMap& type, const QString& key);
bool flag(const QVariantMap& type, const QString& key);

// Brings a stored list into shape at launch: no block survives a restart, the
// default type is last and carries its own name, and the meetings type exists.
// Each repair of bad data is described in `repairs`.
QVariantList repairAtLaunch(const QVariantList& stored, QStringList* repairs = nullptr);

bool isFocusModeOn(const QVariantList& types);

} // namespace focus
} // namespace velmora
