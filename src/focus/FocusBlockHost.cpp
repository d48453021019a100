#include "FocusBlockHost.h"

#include <QVariantMap>

namespace velmora {

namespace {

AllowList fillAllowArray(const QVariantList& types, const QString& allowAllKey, const QString& listKey)
{
    AllowList list;
    for (const QVariant& value : types) {
        const QVariantMap type = value.toMap();
        if (!type.value(QStringLiteral("isOn")).toBool())
            continue;
        if (type.value(allowAllKey).toBool())
            list.allowAll = true;
        list.entries = type.value(listKey).toStringList();
    }
    return list;
}

} // namespace

AllowList fillAllowAppArray(const QVariantList& arrFocusType)
{
    return fillAllowArray(arrFocusType, QStringLiteral("isAllowedAllApps"), QStringLiteral("appsArray"));
}

AllowList fillAllowUrlArray(const QVariantList& arrFocusType)
{
    return fillAllowArray(arrFocusType, QStringLiteral("isAllowedAllUrls"), QStringLiteral("urlsArray"));
}

} // namespace velmora
