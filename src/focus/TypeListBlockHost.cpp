#include "TypeListBlockHost.h"

#include "FocusTypes.h"
#include "RunState.h"

namespace velmora {

bool TypeListBlockHost::isFocusModeOn() const
{
    return focus::isFocusModeOn(m_state.arrFocusType);
}

QStringList TypeListBlockHost::onFocusTypeNames() const
{
    QStringList names;
    for (const QVariant& type : m_state.arrFocusType) {
        const QVariantMap map = type.toMap();
        if (map.value(QStringLiteral("isOn")).toBool())
            names << map.value(QStringLiteral("name")).toString();
    }
    return names;
}

QStringList TypeListBlockHost::allowAppsPath() const
{
    return fillAllowAppArray(m_state.arrFocusType).entries;
}

bool TypeListBlockHost::isAllowedAllAppsInFocus() const
{
    return fillAllowAppArray(m_state.arrFocusType).allowAll;
}

QStringList TypeListBlockHost::allowUrl() const
{
    return fillAllowUrlArray(m_state.arrFocusType).entries;
}

bool TypeListBlockHost::isAllowedAllUrlsInFocus() const
{
    return fillAllowUrlArray(m_state.arrFocusType).allowAll;
}

} // namespace velmora
