#pragma once

#include <QByteArray>
#include <QString>

namespace velmora {

class Preferences;

// The settings document as the user has it: the saved text, or the packaged
// file while nothing is saved. Empty when neither can be read.
QByteArray settingsDocumentText(const Preferences& preferences, const QString& packagedSettingsPath);

} // namespace velmora
