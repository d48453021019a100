#pragma once

#include <functional>
#include <QString>

class QWidget;

namespace velmora {

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
};

// A question with two answers; true for the first.
using AskAlert = std::function<bool(const QString& text, const QString& yes, const QString& no)>;
// A notice with one button.
using InformAlert = std::function<void(const QString& title, const QString& text)>;

// The modal boxes behind the two, kept above the lock windows.
bool askModally(QWidget* parent, const QString& text, const QString& yes, const QString& no);
void informModally(QWidget* parent, const QString& title, const QString& text, const QString& ok);

} // namespace velmora
