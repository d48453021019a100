#pragma once

#include "LoginService.h"

#include <QString>
#include <QStringList>
#include <QUrl>

namespace velmora {

// An XDG autostart entry starts the program at login on every desktop. A systemd
// user service, velmora.service, keeps it alive: it restarts the program whenever
// it ends, except when it exits with QuitExitStatus. A copy started outside the
// service, where a user manager answers, hands over to the service and ends.
class SystemdLoginService : public LoginService
{
public:
    // The program's own quit exits with this status so that the service stays down.
    static constexpr int QuitExitStatus = kQuitExitStatus;

    // An empty path means this program's own executable. A configuration server
    // given to this copy is given to the copies the unit and the autostart entry start.
    explicit SystemdLoginService(const QString& programPath = {}, const QUrl& configServer = {});

    static QString unitFilePath();
    static QString autostartFilePath();

    bool install() override;
    // Where a systemd user manager answers: gives it the session's display variables,
    // starts the service and answers true, so that the caller ends and the supervised
    // copy runs. False where there is none, or it would not start the service.
    bool handOverToUserManager() const;
    void enable() override;
    void disable() override;

private:
    bool hasSystemdUserSession() const;
    QStringList command() const;
    QString unitText() const;
    QString autostartText() const;
    // Runs "systemctl --user <arguments>" and answers its standard output; empty
    // when systemctl is missing, fails to start or takes too long.
    QString systemctl(const QStringList& arguments, bool* succeeded = nullptr) const;

    QString m_programPath;
    QString m_configServer;
};

} // namespace velmora
