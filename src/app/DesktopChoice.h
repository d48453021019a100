#pragma once

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
    std::unique_ptr<HotKeys> hotKeys;
    std::unique_ptr<Workspace> workspace;
    std::unique_ptr<LockShield> lockShield; // none on X11: the lock windows hold by themselves
    // One line per port: which implementation was chosen and why.
    QStringList chosen;
    std::function<void(std::function<void(const QString&)>)> setLog;
};

// Before the application object exists: on Wayland, Qt must load the program's
// own shell integration, which gives the lock windows their layer role.
void prepareDesktop();

// After it exists.
Desktop chooseDesktop(const QString& runtimeFolder);

// The socket that `velmora --reset` talks to, and the command itself: asks the
// running instance, answers the exit status.
QString resetSocketPath(const QString& runtimeFolder);
int sendResetCommand(const QString& socketPath);

} // namespace velmora
