#pragma once

class QWidget;

namespace velmora {

// What the desktop must do for the lock to hold: keep the lock windows above
// every other window on every output, give them the keyboard, and hold its own
// key bindings back. On X11 the lock windows manage this themselves (stay on top
// and a keyboard grab), so nothing needs asking there; on Wayland only the
// compositor can do it, each family in its own terms.
class LockShield
{
public:
    virtual ~LockShield() = default;

    enum class Surface
    {
        Lock,      // the main lock window, which holds the keyboard
        Blank,     // a blank window covering another output
        AboveLock, // one of our windows the user may reach over the lock (quit flow, preferences, reset
                   // question)
    };

    // Before the window is first shown: some desktops fix a window's role when
    // its surface is made. Called again for an AboveLock window whenever it is
    // shown while the lock is up.
    virtual void prepare(QWidget* window, Surface surface) = 0;
    // The lock went up or down.
    virtual void setLockUp(bool up) = 0;
    // The main lock window holds the keyboard, or lets one of ours above it type.
    virtual void setHoldsKeyboard(bool held) = 0;
    // False where the desktop offers no way to keep the lock above everything:
    // the user is told once that the lock can be left there.
    virtual bool holds() const = 0;
};

} // namespace velmora
