#pragma once

#include <functional>
#include <memory>
#include <QString>

namespace velmora {

class GnomeShellBus;
class GnomeLockShield;
class GnomeWorkspace;
class GnomeHotKeys;
class HotKeys;
class LockShield;
class Notifier;
class Workspace;

// GNOME Shell through Velmora's own shell extension: the lock, the applications
// and the hot keys. Exists only while the extension answers on the session bus.
class GnomeShellDesktop
{
public:
    struct Probe
    {
        std::unique_ptr<GnomeShellDesktop> desktop; // none: not GNOME, or the extension does not answer
        bool isGnome = false;
        // The extension was installed or updated but GNOME loads it only at the next
        // login: the user is to be told.
        bool needsNewLogin = false;
        QString logLine; // for the debug log at every start
    };

    // Asks the session bus for GNOME Shell; on GNOME installs or updates the
    // extension in the user's extensions folder (unless the system's is as new)
    // and enables it, then asks the extension for its version.
    static Probe connect(const QString& extensionsFolder);

    // Says once per extension version, in a notification, that a new login is
    // needed; `stateFolder` remembers that it was said.
    static void tellOnceToLogInAgain(Notifier& notifier, const QString& stateFolder);

    ~GnomeShellDesktop();
    void setLog(std::function<void(const QString&)> log);

    LockShield& lockShield();
    Workspace& workspace();
    HotKeys& hotKeys();

private:
    GnomeShellDesktop();

    std::unique_ptr<GnomeShellBus> m_bus;
    std::unique_ptr<GnomeLockShield> m_shield;
    std::unique_ptr<GnomeWorkspace> m_workspace;
    std::unique_ptr<GnomeHotKeys> m_hotKeys;
};

} // namespace velmora
