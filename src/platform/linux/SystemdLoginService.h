#pragma once

#include "LoginService.h"

#include <QString>
#include <QStringList>

namespace velmora {

// A systemd user service, velmora.service, that starts the program with the
// graphical session and restarts it whenever it ends, except when it exits with
// QuitExitStatus. Where no systemd user manager runs, an XDG autostart entry
// starts it at login instead.
class SystemdLoginService : public LoginService
{
public:
    // The program's own quit exits with this status so that the service stays down.
    static constexpr int QuitExitStatus = kQuitExitStatus;

    // An empty path means this program's own executable.
    explicit SystemdLoginService(const QString& programPath = {});

    static QString unitFilePath();
    static QString autostartFilePath();

    bool install() override;
    void enable() override;
    void disable() override;

private:
    bool hasSystemdUserSession() const;
    QString unitText() const;
    QString autostartText() const;
    // Runs "systemctl --user <arguments>" and answers its standard output; empty
    // when systemctl is missing, fails to start or takes too long.
    QString systemctl(const QStringList& arguments) const;

    QString m_programPath;
};

} // namespace velmora
