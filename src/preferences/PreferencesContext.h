#pragma once

#include "Alerts.h"

#include <functional>
#include <QString>

class QWidget;

namespace velmora {

class BrowserTabs;
class Clock;
class DebugLog;
class FocusTypeList;
class Preferences;
class Scheduler;
class TextCatalogue;
class Workspace;
struct RunState;

// What the preferences window and the panel share. One per application object.
struct PreferencesContext
{
    RunState& state;
    Preferences& preferences;
    const Clock& clock;
    Scheduler& scheduler;
    const DebugLog& log;
    const TextCatalogue& texts;
    // The focus types; the program always gives them, a test of another tab may not.
    FocusTypeList* focusTypes = nullptr;
    // The installed applications for the focus types' chooser; without it only a
    // desktop file can be chosen.
    Workspace* workspace = nullptr;
    // Which browsers' extensions are connected.
    BrowserTabs* browserTabs = nullptr;
};

} // namespace velmora
