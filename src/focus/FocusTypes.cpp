#include "FocusTypes.h"

namespace velmora::focus {

QString getColorString(double red, double green, double blue)
{
    auto component = [](double c) { return static_cast<int>(c * 255.0); };
    return QStringLiteral("%1%2%3")
        .arg(component(red), 2, 16, QLatin1Char('0'))
        .arg(component(green), 2, 16, QLatin1Char('0'))
        .arg(component(blue), 2, 16, QLatin1Char('0'))
        .toUpper();
}

static QString builtInColor()
{
    return getColorString(208 / 255.0, 150 / 255.0, 60 / 255.0);
}

QVariantMap makeDefaultType()
{
    return {{QStringLiteral("name"), kDefaultTypeName},
            {QStringLiteral("color"), builtInColor()},
            {QStringLiteral("appsArray"), QStringList()},
            {QStringLiteral("urlsArray"), QStringList()},
            {QStringLiteral("isOn"), false},
            {QStringLiteral("isAllowedAllApps"), true},
            {QStringLiteral("isAllowedAllUrls"), true},
            {QStringLiteral("isDefault"), true}};
}

QVariantMap makeMeetingsType()
{
    // Meeting programs and the browsers that run web meetings, as desktop entries.
    const QStringList apps{QStringLiteral("/usr/share/applications/teams-for-linux.desktop"),
                           QStringLiteral("/usr/share/applications/Zoom.desktop"),
                           QStringLiteral("/usr/share/applications/jitsi-meet.desktop"),
                           QStringLiteral("/usr/share/applications/firefox.desktop"),
                           QStringLiteral("/usr/share/applications/google-chrome.desktop"),
                           QStringLiteral("/usr/share/applications/chromium.desktop")};
    return {{QStringLiteral("name"), kMeetingsTypeName},
            {QStringLiteral("color"), builtInColor()},
            {QStringLiteral("appsArray"), apps},
            {QStringLiteral("urlsArray"), QStringList{QStringLiteral("http://meet.google.com")}},
            {QStringLiteral("isOn"), false},
            {QStringLiteral("isAllowedAllApps"), false},
            {QStringLiteral("isAllowedAllUrls"), false},
            {QStringLiteral("isMeetings"), true}};
}

static bool flag(const QVariantMap& type, const char* key)
{
    const QVariant v = type.value(QLatin1String(key));
    return v.typeId() == QMetaType::Bool ? v.toBool() : v.toString() == u"true";
}

QVariantList repairAtLaunch(const QVariantList& stored)
{
    QVariantList types;
    for (const QVariant& item : stored) {
        if (item.typeId() == QMetaType::QVariantMap)
            types << item;
    }
    if (types.size() != stored.size())
        types.clear(); // not a list of dictionaries: start again from the built-in types

    int defaultIndex = -1;
    bool hasMeetings = false;
    for (int i = 0; i < types.size(); ++i) {
        QVariantMap type = types[i].toMap();
        type.insert(QStringLiteral("isOn"), false);
        if (flag(type, "isDefault"))
            defaultIndex = i;
        if (flag(type, "isMeetings"))
            hasMeetings = true;
        types[i] = type;
    }
    if (defaultIndex >= 0) {
        QVariantMap defaultType = types.takeAt(defaultIndex).toMap();
        defaultType.insert(QStringLiteral("name"), kDefaultTypeName);
        types.append(defaultType);
    } else {
        types.append(makeDefaultType());
    }
    if (!hasMeetings)
        types.insert(types.size() - 1, makeMeetingsType());
    return types;
}

bool isFocusModeOn(const QVariantList& types)
{
    for (const QVariant& type : types) {
        if (flag(type.toMap(), "isOn"))
            return true;
    }
    return false;
}

} // namespace velmora::focus
