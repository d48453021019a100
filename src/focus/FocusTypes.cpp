#include "FocusTypes.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace velmora::focus {

namespace {

int hexDigit(QChar c)
{
    const char16_t u = c.unicode();
    if (u >= u'0' && u <= u'9')
        return u - u'0';
    if (u >= u'a' && u <= u'f')
        return u - u'a' + 10;
    if (u >= u'A' && u <= u'F')
        return u - u'A' + 10;
    return -1;
}

QString builtInColor()
{
    return getColorString(208 / 255.0, 150 / 255.0, 60 / 255.0);
}

std::optional<bool> asBool(const QVariant& v)
{
    if (v.typeId() == QMetaType::Bool)
        return v.toBool();
    // Another tool writing the file may spell booleans as words.
    if (v.typeId() == QMetaType::QString && (v.toString() == u"true" || v.toString() == u"false"))
        return v.toString() == u"true";
    return std::nullopt;
}

std::optional<QStringList> asTextList(const QVariant& v)
{
    if (v.typeId() == QMetaType::QStringList)
        return v.toStringList();
    if (v.typeId() != QMetaType::QVariantList)
        return std::nullopt;
    QStringList out;
    for (const QVariant& item : v.toList()) {
        if (item.typeId() != QMetaType::QString)
            return std::nullopt;
        out << item.toString();
    }
    return out;
}

// Puts every key of one stored type into the shape the readers give it, so that
// what the file says and what the screens show cannot drift apart. Answers the
// keys it had to change.
QStringList normalise(QVariantMap& type)
{
    QStringList changed;
    for (const QString& key : {key::name, key::color}) {
        if (type.value(key).typeId() != QMetaType::QString) {
            changed << key;
            type.insert(key, QString());
        }
    }
    const QString color = type.value(key::color).toString();
    if (!isHexColorString(color)) {
        if (!changed.contains(key::color))
            changed << key::color;
        type.insert(key::color, getColorString(colorFromString(color)));
    }
    for (const QString& key : {key::appsArray, key::urlsArray}) {
        const QVariant v = type.value(key);
        if (v.typeId() == QMetaType::QStringList)
            continue;
        changed << key;
        if (const auto list = asTextList(v))
            type.insert(key, *list);
        else if (v.typeId() == QMetaType::QString) // one entry written as plain text
            type.insert(key, QStringList{v.toString()});
        else
            type.insert(key, QStringList());
    }
    for (const QString& key : {key::isOn, key::isAllowedAllApps, key::isAllowedAllUrls}) {
        const QVariant v = type.value(key);
        if (v.typeId() == QMetaType::Bool)
            continue;
        changed << key;
        type.insert(key, asBool(v).value_or(false));
    }
    // The markers are present, and true, only on their own type.
    for (const QString& key : {key::isDefault, key::isMeetings}) {
        if (!type.contains(key))
            continue;
        const QVariant v = type.value(key);
        if (v.typeId() == QMetaType::Bool && v.toBool())
            continue;
        changed << key;
        if (asBool(v).value_or(false))
            type.insert(key, true);
        else
            type.remove(key);
    }
    return changed;
}

} // namespace

QString getColorString(double red, double green, double blue)
{
    auto component = [](double c) { return qBound(0, static_cast<int>(c * 255.0), 255); };
    return QStringLiteral("%1%2%3")
        .arg(component(red), 2, 16, QLatin1Char('0'))
        .arg(component(green), 2, 16, QLatin1Char('0'))
        .arg(component(blue), 2, 16, QLatin1Char('0'))
        .toUpper();
}

QString getColorString(const QColor& color)
{
    const QColor rgb = color.toRgb();
    return getColorString(rgb.redF(), rgb.greenF(), rgb.blueF());
}

QColor colorFromString(const QString& text)
{
    qsizetype i = 0;
    while (i < text.size() && text[i] == u'#')
        ++i;
    if (i + 1 < text.size() && text[i] == u'0' && (text[i + 1] == u'x' || text[i + 1] == u'X'))
        i += 2;
    quint64 value = 0;
    bool any = false;
    for (; i < text.size() && hexDigit(text[i]) >= 0; ++i) {
        any = true;
        // Too many digits read as the largest number, that is white.
        value = qMin<quint64>(value * 16 + hexDigit(text[i]), std::numeric_limits<quint32>::max());
    }
    if (!any)
        return QColor(0, 0, 0);
    return QColor(int((value >> 16) & 0xFF), int((value >> 8) & 0xFF), int(value & 0xFF));
}

bool isHexColorString(const QString& text)
{
    const QStringView digits = QStringView(text).mid(text.startsWith(u'#') ? 1 : 0);
    if (digits.size() != 6)
        return false;
    return std::all_of(digits.begin(), digits.end(), [](QChar c) { return hexDigit(c) >= 0; });
}

QVariantMap makeDefaultType()
{
    return {{key::name, kDefaultTypeName},   {key::color, builtInColor()}, {key::appsArray, QStringList()},
            {key::urlsArray, QStringList()}, {key::isOn, false},           {key::isAllowedAllApps, true},
            {key::isAllowedAllUrls, true},   {key::isDefault, true}};
}

QVariantMap makeMeetingsType()
{
    // Meeting programs and the browsers that run web meetings, as desktop entries.
    const QStringList apps{QStringLiteral("/usr/share/applications/teams-for-linux.desktop"),
                           QStringLiteral("/usr/share/applications/Zoom.desktop"),
                           QStringLiteral("/usr/share/applications/jitsi-meet.desktop"),
                           QStringLiteral("/usr/share/applications/firefox.desktop"),
                           QStringLiteral("/usr/share/applications/firefox-esr.desktop"),
                           QStringLiteral("/usr/share/applications/google-chrome.desktop"),
                           QStringLiteral("/usr/share/applications/chromium.desktop")};
    return {{key::name, kMeetingsTypeName},
            {key::color, builtInColor()},
            {key::appsArray, apps},
            {key::urlsArray, QStringList{QStringLiteral("http://meet.google.com")}},
            {key::isOn, false},
            {key::isAllowedAllApps, false},
            {key::isAllowedAllUrls, false},
            {key::isMeetings, true}};
}

QVariantMap makeUserType(const QString& name, const QString& color)
{
    return {{key::name, name},
            {key::color, color},
            {key::appsArray, QStringList()},
            {key::urlsArray, QStringList()},
            {key::isOn, false},
            {key::isAllowedAllApps, true},
            {key::isAllowedAllUrls, true}};
}

QString text(const QVariantMap& type, const QString& key)
{
    const QVariant v = type.value(key);
    return v.typeId() == QMetaType::QString ? v.toString() : QString();
}

QStringList textList(const QVariantMap& type, const QString& key)
{
    return asTextList(type.value(key)).value_or(QStringList());
}

bool flag(const QVariantMap& type, const QString& key)
{
    return asBool(type.value(key)).value_or(false);
}

QVariantList repairAtLaunch(const QVariantList& stored, QStringList* repairs)
{
    QStringList notes;
    QVariantList types;
    for (const QVariant& item : stored) {
        if (item.typeId() == QMetaType::QVariantMap)
            types << item;
    }
    if (types.size() != stored.size()) {
        notes << QStringLiteral("Stored focus types were not a list of dictionaries; starting again "
                                "from the built-in types");
        types.clear();
    }

    int defaultIndex = -1;
    bool hasMeetings = false;
    int typesOn = 0;
    for (int i = 0; i < types.size(); ++i) {
        QVariantMap type = types[i].toMap();
        if (flag(type, key::isOn))
            ++typesOn;
        const QStringList changed = normalise(type);
        if (!changed.isEmpty()) {
            notes << QStringLiteral("Focus type %1 \"%2\": missing or unreadable %3 set to the fallback")
                         .arg(i)
                         .arg(text(type, key::name), changed.join(QStringLiteral(", ")));
        }
        type.insert(key::isOn, false);
        if (flag(type, key::isDefault))
            defaultIndex = i;
        if (flag(type, key::isMeetings))
            hasMeetings = true;
        types[i] = type;
    }
    if (typesOn > 1)
        notes << QStringLiteral("%1 focus types were on at once; all turned off").arg(typesOn);
    if (defaultIndex >= 0) {
        QVariantMap defaultType = types.takeAt(defaultIndex).toMap();
        defaultType.insert(key::name, kDefaultTypeName);
        types.append(defaultType);
    } else {
        types.append(makeDefaultType());
    }
    if (!hasMeetings)
        types.insert(types.size() - 1, makeMeetingsType());
    if (repairs)
        *repairs = notes;
    return types;
}

bool isFocusModeOn(const QVariantList& types)
{
    for (const QVariant& type : types) {
        if (flag(type.toMap(), key::isOn))
            return true;
    }
    return false;
}

} // namespace velmora::focus
