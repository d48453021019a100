#include "AppDelegate.h"
#include "CrashLog.h"
#include "DebugLog.h"
#include "DesktopChoice.h"
#include "DesktopNotifier.h"
#include "IdleMemory.h"
#include "LocalBrowserTabs.h"
#include "LockWindows.h"
#include "NetworkHttp.h"
#include "ProcessLauncher.h"
#include "PulseMediaMonitor.h"
#include "QtScheduler.h"
#include "QuitOnSignals.h"
#include "ScreenSaverDisplayAwake.h"
#include "SettingsLoader.h"
#include "SettingsPreferences.h"
#include "SingleInstance.h"
#include "SystemClock.h"
#include "SystemdLoginService.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QTimer>

#include <csignal>

using namespace velmora;

namespace {
// Calls back when the watched window is hidden.
class LockHiddenWatch : public QObject
{
public:
    explicit LockHiddenWatch(std::function<void()> hidden)
        : m_hidden(std::move(hidden))
    {
    }
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Hide)
            m_hidden();
        return false;
    }

private:
    std::function<void()> m_hidden;
};
} // namespace

struct CommandLine
{
    QUrl configServer;
    bool reset = false;
};

static CommandLine readCommandLine(const QApplication& app)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Time at the computer, deserved."));
    parser.addHelpOption();
    const QCommandLineOption server(
        QStringLiteral("config-server"),
        QStringLiteral("Where the text catalogue and settings schema are served."), QStringLiteral("URL"));
    parser.addOption(server);
    const QCommandLineOption reset(
        QStringLiteral("reset"),
        QStringLiteral("Ask the running Velmora to reset, as its reset chord does."));
    parser.addOption(reset);
    parser.process(app);
    CommandLine line;
    line.reset = parser.isSet(reset);
    line.configServer =
        QUrl(parser.isSet(server) ? parser.value(server) : qEnvironmentVariable("VELMORA_CONFIG_SERVER"));
    return line;
}

// The web engine needs a shared graphics context made before the application
// object, and making one loads the whole graphics stack (some 45 MB in software).
// Only a day whose settings hold pages pays for it; a first run shows the
// packaged intro, which has none.
static bool settingsMayShowPages()
{
    SettingsPreferences preferences;
    RunState state;
    SystemClock clock;
    DebugLog quiet(clock, QString());
    readSettingsJsonDictionary(state, preferences, QStringLiteral(":/settings.json"), quiet);
    return anyItemHasPage(state);
}

static int runVelmora(int argc, char* argv[], int& stopSignal)
{
    if (settingsMayShowPages())
        QApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    const QString desktopPrepared = prepareDesktop();
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("velmora"));
    QApplication::setApplicationVersion(QStringLiteral(VELMORA_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("velmora"));
    QApplication::setQuitOnLastWindowClosed(false);

    QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (runtime.isEmpty())
        runtime = QDir::tempPath();
    const CommandLine commandLine = readCommandLine(app);
    if (commandLine.reset)
        return sendResetCommand(resetSocketPath(runtime));

    AppPaths paths;
    paths.configServer = commandLine.configServer;
    paths.dataFolder =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/velmora");

    // Started at login by the autostart entry, or by hand: where systemd runs, the
    // copy under its user service is the one that lives.
    const QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (!ProcessLauncher::startedBySystemd(environment, QCoreApplication::applicationPid())) {
        SystemdLoginService service({}, paths.configServer);
        if (service.install() && service.handOverToUserManager())
            return 0;
    }

    SingleInstance instance(runtime + QStringLiteral("/velmora.instance"));
    const bool restarted = environment.contains(QLatin1String(ProcessLauncher::kRestartMarker));
    qunsetenv(ProcessLauncher::kRestartMarker); // not for the programs this one starts
    if (!instance.claim(restarted ? 10'000 : 0))
        return SystemdLoginService::QuitExitStatus; // the running one stays; no restart for us

    installCrashLog(paths.dataFolder + QStringLiteral("/Debug_Logs.txt"));
    const DebugLog* debugLog = nullptr;
    QuitOnSignals quitOnSignals([&debugLog, &stopSignal](int signal) {
        if (debugLog)
            debugLog->addLog(QStringLiteral("Stopped by signal %1").arg(signal));
        stopSignal = signal;
        QCoreApplication::exit(0);
    });

    SystemClock clock;
    QtScheduler scheduler;
    SettingsPreferences preferences;
    PulseMediaMonitor media;
    ScreenSaverDisplayAwake displayAwake;
    DesktopNotifier notifier(paths.dataFolder + QStringLiteral("/sounds"));
    NetworkHttp http;
    ProcessLauncher launcher;
    SystemdLoginService loginService({}, paths.configServer);
    Desktop desktop = chooseDesktop(runtime, desktopPrepared);
    LocalBrowserTabs browserTabs;
    Ports ports{&clock,
                &scheduler,
                &preferences,
                &media,
                &displayAwake,
                &notifier,
                &http,
                &launcher,
                &loginService,
                desktop.hotKeys,
                desktop.workspace,
                &browserTabs,
                desktop.lockShield};

    AppDelegate delegate(ports, paths);
    debugLog = &delegate.debugLog();
    delegate.applicationWillFinishLaunching();
    // Start-up and each lock touch much that the idle hours do not need.
    QTimer idle;
    idle.setSingleShot(true);
    idle.setInterval(5'000);
    QObject::connect(&idle, &QTimer::timeout, &app, &releaseIdleMemory);
    LockHiddenWatch lockHidden([&idle] { idle.start(); });
    delegate.mainWindow().installEventFilter(&lockHidden);
    idle.start();
    const auto log = [&delegate](const QString& line) { delegate.debugLog().addLog(line); };
    desktop.setLog(log);
    for (const QString& line : std::as_const(desktop.chosen))
        log(line);
    if (desktop.needsNewLogin)
        GnomeShellDesktop::tellOnceToLogInAgain(notifier, paths.dataFolder);
    browserTabs.setLog(log);
    // The browsers start our host per connection; their manifests say where it is.
    // A browser run for the first time later gets its manifest then.
    const QString configHome = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    const QString hostProgram = QApplication::applicationDirPath() + QStringLiteral("/velmora-browser-host");
    browserTabs.writeHostManifests(QDir::homePath(), configHome, hostProgram);
    browserTabs.watchBrowserFolders(QDir::homePath(), configHome, hostProgram);
    browserTabs.listen(runtime);
    // A stop that a start-up dialog's own event loop saw would be forgotten by exec().
    const int status = stopSignal != 0 ? 0 : app.exec();
    debugLog = nullptr; // a signal during the teardown below goes unlogged
    return status;
}

int main(int argc, char* argv[])
{
    int stopSignal = 0;
    const int status = runVelmora(argc, argv, stopSignal);
    if (stopSignal != 0) {
        // Everything is written and let go; now end as the signal would have, so
        // that whoever waits for the program sees why it ended.
        std::signal(stopSignal, SIG_DFL);
        std::raise(stopSignal);
    }
    return status;
}
