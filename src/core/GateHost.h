#pragma once

namespace velmora {

// What the day's gates need from the rest of the program: the lock windows, the
// routine screens, the status item and the focus engine.
class GateHost
{
public:
    virtual ~GateHost() = default;

    virtual void abortAllProcess() = 0;
    // Makes sure the lock window exists without showing it.
    virtual void loadMainWindow() = 0;
    virtual void showMainWindow() = 0;
    virtual bool isMainWindowVisible() const = 0;
    virtual void showExtraWindows() = 0;

    virtual void setActivityTimer() = 0;
    virtual void showAllMorningHabits() = 0;
    virtual void showAllEveningHabits() = 0;
    virtual void showFocusSummaryView() = 0;
    // Puts up the shut-off screen (does nothing when it is up already).
    virtual void showShutOffScreen() = 0;

    virtual void setCallLook() = 0;
    virtual void checkIsMeetingsGoingOn() = 0;

    virtual bool isFocusModeOn() const = 0;
    virtual void focusModeFinishedFromShutOff() = 0;
};

} // namespace velmora
