#include "SystemdLoginService.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr int SystemctlTimeoutMs = 5000;
const auto UnitName = u"velmora.service"_s;

// One word of a unit's command line. Specifiers (%) and variables ($) are doubled
// so that systemd takes them literally; a path with spaces or quotes is quoted.
QString unitWord(const QString& word)
{
    QString escaped = word;
    escaped.replace(u'%', u"%%"_s).replace(u'$', u"$$"_s);
    static const QString special = u" \t\n\"'\\;"_s;
    bool needsQuotes = false;
    for (const QChar c : escaped)
        needsQuotes |= special.contains(c);
    if (!needsQuotes)
        return escaped;
    escaped.replace(u'\\', u"\\\\"_s).replace(u'"', u"\\\""_s).replace(u'\n', u"\\n"_s);
    return u'"' + escaped + u'"';
}

// One word of a desktop entry's Exec key: quoted when it holds a reserved
// character, then escaped again as the key's string value.
QString desktopExecWord(const QString& word)
{
    static const QString reserved = u" \t\n\"'\\><~|&;$*?#()`"_s;
    bool needsQuotes = false;
    for (const QChar c : word)
        needsQuotes |= reserved.contains(c);
    QString escaped = word;
    if (needsQuotes) {
        QString inner;
        for (const QChar c : word) {
            if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
                inner += u'\\';
            inner += c;
        }
        escaped = u'"' + inner + u'"';
    }
    escaped.replace(u'\\', u"\\\\"_s).replace(u'\n', u"\\n"_s);
    escaped.replace(u'%', u"%%"_s);
    return escaped;
}

QString words(const QStringList& command, QString (*word)(const QString&))
{
    QStringList quoted;
    for (const QString& each : command)
        quoted << word(each);
    return quoted.join(u' ');
}

bool writeAtomically(const QString& path, const QString& text)
{
    if (!QDir().mkpath(QFileInfo(path).absolutePath()))
        return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(text.toUtf8());
    return file.commit();
}

} // namespace

SystemdLoginService::SystemdLoginService(const QString& programPath, const QUrl& configServer)
    : m_programPath(programPath.isEmpty() ? QCoreApplication::applicationFilePath() : programPath)
    , m_configServer(configServer.toString(QUrl::FullyEncoded))
{
}

QStringList SystemdLoginService::command() const
{
    QStringList words{m_programPath};
    if (!m_configServer.isEmpty())
        words << u"--config-server"_s << m_configServer;
    return words;
}

QString SystemdLoginService::unitFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u"/systemd/user/"_s +
           UnitName;
}

QString SystemdLoginService::autostartFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           u"/autostart/velmora.desktop"_s;
}

bool SystemdLoginService::install()
{
    // Both always: the autostart entry starts the program at login whatever the
    // desktop, and the program hands itself over to the unit where systemd runs.
    const bool unit = writeAtomically(unitFilePath(), unitText());
    return writeAtomically(autostartFilePath(), autostartText()) && unit;
}

bool SystemdLoginService::handOverToUserManager() const
{
    if (!hasSystemdUserSession())
        return false;
    systemctl({u"daemon-reload"_s});
    systemctl({u"import-environment"_s, u"DISPLAY"_s, u"XAUTHORITY"_s, u"WAYLAND_DISPLAY"_s,
               u"XDG_CURRENT_DESKTOP"_s});
    bool started = false;
    systemctl({u"start"_s, UnitName}, &started);
    return started;
}

void SystemdLoginService::enable()
{
    // Without --now: a program started by hand must not get a second instance.
    systemctl({u"daemon-reload"_s});
    systemctl({u"enable"_s, UnitName});
}

// The autostart entry stays: the program starts at the next login, whatever
// the user did, and enables the unit again.
void SystemdLoginService::disable()
{
    systemctl({u"disable"_s, UnitName});
}

bool SystemdLoginService::hasSystemdUserSession() const
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty() && QFileInfo(runtime + u"/systemd"_s).isDir())
        return true;
    const QString state = systemctl({u"is-system-running"_s}).trimmed();
    return !state.isEmpty() && state != u"offline" && state != u"unknown";
}

QString SystemdLoginService::unitText() const
{
    return uR"([Unit]
Description=Velmora
PartOf=graphical-session.target
After=graphical-session.target
StartLimitIntervalSec=0
ConditionFileIsExecutable=%3

[Service]
ExecStart=%1
Restart=always
RestartSec=1
RestartPreventExitStatus=%2

[Install]
WantedBy=graphical-session.target
)"_s.arg(words(command(), unitWord), QString::number(QuitExitStatus),
         // Once the program is removed, the unit is skipped rather than restarted for ever.
         QString(m_programPath).replace(u'%', QStringLiteral("%%")));
}

QString SystemdLoginService::autostartText() const
{
    return uR"([Desktop Entry]
Type=Application
Name=Velmora
Exec=%1
X-GNOME-Autostart-enabled=true
NoDisplay=true
)"_s.arg(words(command(), desktopExecWord));
}

QString SystemdLoginService::systemctl(const QStringList& arguments, bool* succeeded) const
{
    if (succeeded)
        *succeeded = false;
    const QString program = QStandardPaths::findExecutable(u"systemctl"_s);
    if (program.isEmpty())
        return {};
    QProcess process;
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.start(program, QStringList{u"--user"_s} + arguments);
    if (!process.waitForFinished(SystemctlTimeoutMs)) {
        process.kill();
        process.waitForFinished(1000);
        return {};
    }
    if (succeeded)
        *succeeded = process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    return QString::fromLocal8Bit(process.readAllStandardOutput());
}

} // namespace velmora
