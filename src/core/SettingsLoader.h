#pragma once

#include "RunState.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace velmora {

class DebugLog;
class Preferences;

// The settings document as stored, the one reader of it for the day and for every
// editor: the saved text whenever the key holds text, even empty or malformed; the
// packaged file while nothing is saved. Empty when neither can be read.
QByteArray settingsDocumentText(const Preferences& preferences, const QString& packagedSettingsPath);

// Turns the settings document into the routine lists and times of the run
// state. A saved document always wins over the packaged one, even when it is
// malformed: a broken document means an empty schedule, never the default one.
void readSettingsJsonDictionary(RunState& state, const Preferences& preferences, const QString& packagedPath,
                                const DebugLog& log);

// Decodes an already parsed document into the state; used by the above.
void applySettingsDocument(RunState& state, const QJsonObject& document);

// True when any routine item or alternative of the loaded document has a page.
bool anyItemHasPage(const RunState& state);

habit decodeHabit(const QJsonObject& object);
breakActivity decodeBreakActivity(const QJsonObject& object);
activityChoice decodeActivityChoice(const QJsonObject& object);

// "7", "07:30", "07:30:00" all read; a part that is no integer counts as 0 and no
// range is checked, so "25:99" is hour 25, minute 99.
Time getTimeFromString(const QString& val);

} // namespace velmora
