#pragma once

namespace velmora {

// What the routine controller needs from the lock shell and the scheduler.
class RoutineHost
{
public:
    virtual ~RoutineHost() = default;
    virtual void setMainWindowVisible(bool visible) = 0;
    virtual bool isMainWindowVisible() const = 0;
    virtual void showExtraWindows() = 0;
    virtual void hideBlankWindowInSecondaryMonitor() = 0;
    virtual void bringToFront() = 0;
    virtual void setBackgroundThreadTimer() = 0;
    virtual void setCallLook() = 0;
    virtual bool isShutOffTimeGoing() const = 0;
    virtual bool isPreventUserIdleDisplaySleepOn() = 0;
    // An item with allowed applications starts: launch them and keep the rest away.
    virtual void startTimerActivitiesAllowedApp() = 0;
    // Any item is over: the watch over its applications and addresses ends.
    virtual void itemAllowListsOver() = 0;
    // The pomodoro window, unless a block, a call or the shut-off is on.
    virtual void showAutoPomodoroModeView() = 0;
};

} // namespace velmora
