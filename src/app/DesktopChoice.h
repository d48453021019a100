#pragma once

#include "GnomeShellDesktop.h"
#include "HotKeys.h"
#include "LockShield.h"
#include "Workspace.h"

#include <functional>
#include <memory>
#include <QStringList>

namespace velmora {

// The implementations of the ports that depend on the display server and the
// compositor: X11, or on Wayland what the compositor offers (not what it is
// called). Everything above the ports is the same on all of them.
struct Desktop
{
    HotKeys* hotKeys = nullptr;
    Workspace* workspace = nullptr;
    LockShield* lockShield = nullptr; // none on X11: the lock windows hold by themselves
    // One line per port: which implementation was chosen and why.
    QStringList chosen;
    // GNOME: our shell extension was installed or updated and answers only after
    // the next login; the user is to be told.
    bool needsNewLogin = false;
    std::function<void(std::function<void(const QString&)>)> setLog;

    // What the three pointers above point into.
    std::unique_ptr<HotKeys> ownHotKeys;
    std::unique_ptr<Workspace> ownWorkspace;
    std::unique_ptr<LockShield> ownLockShield;
    std::unique_ptr<GnomeShellDesktop> gnome;
};

// Before the application object exists: on Wayland, Qt must load the program's
// own shell integration, which gives the lock windows their layer role. Answers
// a line for the debug log, once there is one.
QString prepareDesktop();

// After it exists. `prepared` is what prepareDesktop() answered.
Desktop chooseDesktop(const QString& runtimeFolder, const QString& prepared);

// The socket that `velmora --reset` talks to, and the command itself: asks the
// running instance, answers the exit status.
QString resetSocketPath(const QString& runtimeFolder);
int sendResetCommand(const QString& socketPath);

} // namespace velmora
