#pragma once

#include "BrowserTabs.h"
#include "Clock.h"
#include "DisplayAwake.h"
#include "HotKeys.h"
#include "Http.h"
#include "Launcher.h"
#include "LockShield.h"
#include "LoginService.h"
#include "MediaMonitor.h"
#include "Notifier.h"
#include "Preferences.h"
#include "Scheduler.h"
#include "Workspace.h"

namespace velmora {

// Every touch of the outside world, handed to the program at construction.
struct Ports
{
    Clock* clock = nullptr;
    Scheduler* scheduler = nullptr;
    Preferences* preferences = nullptr;
    MediaMonitor* media = nullptr;
    DisplayAwake* displayAwake = nullptr;
    Notifier* notifier = nullptr;
    Http* http = nullptr;
    Launcher* launcher = nullptr;
    LoginService* loginService = nullptr;
    HotKeys* hotKeys = nullptr;
    Workspace* workspace = nullptr;
    // None: no browser is looked at.
    BrowserTabs* browserTabs = nullptr;
    // None: the lock windows hold by themselves (X11, and the tests' offscreen screens).
    LockShield* lockShield = nullptr;
};

} // namespace velmora
