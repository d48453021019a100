#pragma once

#include "Preferences.h"

#include <QSettings>

namespace velmora {

// The preferences file, $XDG_CONFIG_HOME/velmora/velmora.conf, in INI format.
class SettingsPreferences : public Preferences
{
public:
    // An empty path means the standard file.
    explicit SettingsPreferences(const QString& filePath = {});

    static QString defaultFilePath();
    QString filePath() const;

    QVariant value(const QString& key) const override;
    void setValue(const QString& key, const QVariant& value) override;
    void remove(const QString& key) override;
    bool contains(const QString& key) const override;
    void clear() override;
    void sync() override;

private:
    QSettings m_settings;
};

} // namespace velmora
