#include "AppDelegate.h"
#include "CrashLog.h"
#include "DebugLog.h"
#include "DesktopNotifier.h"
#include "NetworkHttp.h"
#include "ProcessLauncher.h"
#include "PulseMediaMonitor.h"
#include "QtScheduler.h"
#include "ScreenSaverDisplayAwake.h"
#include "SettingsLoader.h"
#include "SettingsPreferences.h"
#include "SingleInstance.h"
#include "SystemClock.h"
#include "SystemdLoginService.h"
#include "X11HotKeys.h"
#include "X11Workspace.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QStandardPaths>

using namespace velmora;

static QUrl configServerFromCommandLine(const QApplication& app)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Time at the computer, deserved."));
    parser.addHelpOption();
    const QCommandLineOption server(
        QStringLiteral("config-server"),
        QStringLiteral("Where the text catalogue and settings schema are served."), QStringLiteral("URL"));
    parser.addOption(server);
    parser.process(app);
    if (parser.isSet(server))
        return QUrl(parser.value(server));
    return QUrl(qEnvironmentVariable("VELMORA_CONFIG_SERVER"));
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

int main(int argc, char* argv[])
{
    if (settingsMayShowPages())
        QApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("velmora"));
    QApplication::setApplicationVersion(QStringLiteral(VELMORA_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("velmora"));
    QApplication::setQuitOnLastWindowClosed(false);

    AppPaths paths;
    paths.configServer = configServerFromCommandLine(app);
    paths.dataFolder =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/velmora");

    QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (runtime.isEmpty())
        runtime = QDir::tempPath();
    SingleInstance instance(runtime + QStringLiteral("/velmora.instance"));
    if (!instance.claim())
        return SystemdLoginService::QuitExitStatus; // the running one stays; no restart for us

    installCrashLog(paths.dataFolder + QStringLiteral("/Debug_Logs.txt"));

    SystemClock clock;
    QtScheduler scheduler;
    SettingsPreferences preferences;
    PulseMediaMonitor media;
    ScreenSaverDisplayAwake displayAwake;
    DesktopNotifier notifier(paths.dataFolder + QStringLiteral("/sounds"));
    NetworkHttp http;
    ProcessLauncher launcher;
    SystemdLoginService loginService;
    X11HotKeys hotKeys;
    X11Workspace workspace;
    Ports ports{&clock, &scheduler, &preferences,  &media,   &displayAwake, &notifier,
                &http,  &launcher,  &loginService, &hotKeys, &workspace};

    AppDelegate delegate(ports, paths);
    workspace.setLog([&delegate](const QString& line) { delegate.debugLog().addLog(line); });
    delegate.applicationWillFinishLaunching();
    return app.exec();
}
