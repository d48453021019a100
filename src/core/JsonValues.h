#pragma once

#include <cmath>
#include <limits>
#include <optional>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QStringList>
#include <QVector>

namespace velmora::json {

// Strict readers for untrusted JSON: a value of another type is absent, never
// converted.

inline std::optional<QString> string(const QJsonObject& o, const char* key)
{
    const QJsonValue v = o.value(QLatin1String(key));
    return v.isString() ? std::optional<QString>(v.toString()) : std::nullopt;
}

inline std::optional<bool> boolean(const QJsonObject& o, const char* key)
{
    const QJsonValue v = o.value(QLatin1String(key));
    return v.isBool() ? std::optional<bool>(v.toBool()) : std::nullopt;
}

inline std::optional<int> integer(const QJsonValue& v)
{
    if (!v.isDouble())
        return std::nullopt;
    const double d = v.toDouble();
    if (!std::isfinite(d) || d != std::floor(d) || d < std::numeric_limits<int>::min() ||
        d > std::numeric_limits<int>::max())
        return std::nullopt;
    return static_cast<int>(d);
}

inline std::optional<int> integer(const QJsonObject& o, const char* key)
{
    return integer(o.value(QLatin1String(key)));
}

inline std::optional<QStringList> stringArray(const QJsonObject& o, const char* key)
{
    const QJsonValue v = o.value(QLatin1String(key));
    if (!v.isArray())
        return std::nullopt;
    QStringList out;
    for (const QJsonValue& item : v.toArray()) {
        if (!item.isString())
            return std::nullopt;
        out << item.toString();
    }
    return out;
}

inline std::optional<QVector<QJsonObject>> objectArray(const QJsonObject& o, const char* key)
{
    const QJsonValue v = o.value(QLatin1String(key));
    if (!v.isArray())
        return std::nullopt;
    QVector<QJsonObject> out;
    for (const QJsonValue& item : v.toArray()) {
        if (!item.isObject())
            return std::nullopt;
        out << item.toObject();
    }
    return out;
}

} // namespace velmora::json
