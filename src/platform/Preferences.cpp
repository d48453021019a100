#include "Preferences.h"

namespace velmora {

std::optional<bool> Preferences::boolean(const QString& key) const
{
    const QVariant v = value(key);
    if (v.typeId() == QMetaType::Bool)
        return v.toBool();
    // The INI store gives bools back as the words it wrote.
    if (v.typeId() == QMetaType::QString) {
        const QString s = v.toString();
        if (s == u"true")
            return true;
        if (s == u"false")
            return false;
    }
    return std::nullopt;
}

std::optional<QString> Preferences::string(const QString& key) const
{
    const QVariant v = value(key);
    if (v.typeId() == QMetaType::QString)
        return v.toString();
    return std::nullopt;
}

std::optional<QDateTime> Preferences::date(const QString& key) const
{
    const QVariant v = value(key);
    if (v.typeId() == QMetaType::QDateTime && v.toDateTime().isValid())
        return v.toDateTime();
    return std::nullopt;
}

std::optional<QStringList> Preferences::stringList(const QString& key) const
{
    const QVariant v = value(key);
    // The INI store writes an empty list as "@Invalid()" and reads it back as nothing.
    if (!v.isValid())
        return contains(key) ? std::optional(QStringList{}) : std::nullopt;
    if (v.typeId() == QMetaType::QStringList)
        return v.toStringList();
    if (v.typeId() == QMetaType::QVariantList) {
        QStringList out;
        for (const QVariant& item : v.toList()) {
            if (item.typeId() != QMetaType::QString)
                return std::nullopt;
            out << item.toString();
        }
        return out;
    }
    // A one-element list comes back from the INI store as a plain string.
    if (v.typeId() == QMetaType::QString)
        return QStringList{v.toString()};
    return std::nullopt;
}

std::optional<QVariantList> Preferences::mapList(const QString& key) const
{
    const QVariant v = value(key);
    if (!v.isValid())
        return contains(key) ? std::optional(QVariantList{}) : std::nullopt;
    if (v.typeId() != QMetaType::QVariantList)
        return std::nullopt;
    const QVariantList list = v.toList();
    for (const QVariant& item : list) {
        if (item.typeId() != QMetaType::QVariantMap)
            return std::nullopt;
    }
    return list;
}

} // namespace velmora
