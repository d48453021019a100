#pragma once

#include "Launcher.h"

#include <QProcessEnvironment>

namespace velmora {

class ProcessLauncher : public Launcher
{
public:
    // Under our systemd user service nothing is started: the service brings the
    // program back by itself once it exits (with any status but the quit status).
    // Otherwise a detached shell waits a second and starts the program again with
    // the same arguments.
    void restartSoon() override;
    void run(const QString& program, const QStringList& arguments) override;

    // True when systemd started this very process, so that its restart policy
    // applies. A program started from a terminal that runs under systemd only
    // inherits INVOCATION_ID and does not count.
    static bool startedBySystemd(const QProcessEnvironment& environment, qint64 processId);
    // Set in the environment of a copy that restartSoon started.
    static constexpr const char* kRestartMarker = "VELMORA_RESTARTED";
    // The words as one POSIX shell command line, each quoted.
    static QString shellQuoted(const QStringList& words);
};

} // namespace velmora
