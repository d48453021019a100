#pragma once

#include <QColor>

namespace velmora {

// What the focus engine needs from the rest of the program: the tray icon, the
// day's gates, the preferences window and the blockers.
class FocusHost
{
public:
    virtual ~FocusHost() = default;

    // The tray icon: the running type's colour, plain, or the blue of a call.
    virtual void setFocusLook(const QColor& color) = 0;
    virtual void setPlainLook() = 0;
    virtual void setCallLook() = 0;
    virtual bool isCallLookShown() const = 0;

    virtual bool isShutOffTimeGoing() const = 0;
    virtual bool isPreventUserIdleDisplaySleepOn() = 0;

    // The preferences window, when it is up on its focus tab, follows a block
    // that starts or ends.
    virtual void focusPreferencesFollowBlock() = 0;
    // Opens the preferences window on its focus tab.
    virtual void showFocusPreferences() = 0;

    // The blockers take the rules of the type that is on, or let go of them.
    virtual void armBlockers() = 0;
    virtual void disarmBlockers() = 0;
};

} // namespace velmora
