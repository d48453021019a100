#include "ProcessLauncher.h"

#include <QCoreApplication>
#include <QProcess>

using namespace Qt::StringLiterals;

namespace velmora {

void ProcessLauncher::restartSoon()
{
    if (startedBySystemd(QProcessEnvironment::systemEnvironment(), QCoreApplication::applicationPid()))
        return;
    QStringList command = QCoreApplication::arguments().mid(1);
    command.prepend(QCoreApplication::applicationFilePath());
    // The new copy waits, a bounded time, for this one to let go of the single-instance name.
    QProcess::startDetached(u"/bin/sh"_s, {u"-c"_s, u"sleep 1; "_s + QLatin1String(kRestartMarker) +
                                                        u"=1 exec "_s + shellQuoted(command)});
}

void ProcessLauncher::run(const QString& program, const QStringList& arguments)
{
    QProcess::startDetached(program, arguments);
}

bool ProcessLauncher::startedBySystemd(const QProcessEnvironment& environment, qint64 processId)
{
    if (environment.value(u"INVOCATION_ID"_s).isEmpty())
        return false;
    // systemd 248 and later name the process they started; older ones do not, and
    // then INVOCATION_ID has to be trusted.
    const QString started = environment.value(u"SYSTEMD_EXEC_PID"_s);
    return started.isEmpty() || started == QString::number(processId);
}

QString ProcessLauncher::shellQuoted(const QStringList& words)
{
    QStringList quoted;
    quoted.reserve(words.size());
    for (QString word : words) {
        // Inside single quotes everything is literal but the single quote itself,
        // which is closed, escaped and reopened.
        word.replace(u'\'', u"'\\''"_s);
        quoted << u'\'' + word + u'\'';
    }
    return quoted.join(u' ');
}

} // namespace velmora
