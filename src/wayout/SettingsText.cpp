#include "SettingsText.h"

#include "PreferenceKeys.h"
#include "Preferences.h"

#include <QFile>

namespace velmora {

QByteArray settingsDocumentText(const Preferences& preferences, const QString& packagedSettingsPath)
{
    if (const auto saved = preferences.string(keys::kUserdefaultsSelectedJson); saved && !saved->isEmpty())
        return saved->toUtf8();
    QFile packaged(packagedSettingsPath);
    if (!packaged.open(QIODevice::ReadOnly))
        return {};
    return packaged.readAll();
}

} // namespace velmora
