#pragma once

#include <optional>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace velmora {

// The persistent key-value store. Values read back may have been written by an
// older version or edited by hand, so the typed readers answer "absent" for a
// value of the wrong type instead of guessing.
class Preferences
{
public:
    virtual ~Preferences() = default;

    virtual QVariant value(const QString& key) const = 0;
    virtual void setValue(const QString& key, const QVariant& value) = 0;
    virtual void remove(const QString& key) = 0;
    virtual bool contains(const QString& key) const = 0;
    // Deletes everything, as a full reset does.
    virtual void clear() = 0;
    virtual void sync() = 0;

    std::optional<bool> boolean(const QString& key) const;
    std::optional<QString> string(const QString& key) const;
    std::optional<QDateTime> date(const QString& key) const;
    std::optional<QStringList> stringList(const QString& key) const;
    // An array of dictionaries; absent unless every element is a dictionary.
    std::optional<QVariantList> mapList(const QString& key) const;
};

} // namespace velmora
