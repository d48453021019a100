#include "AppDelegate.h"

#include "AppBlocker.h"
#include "FeedbackUpload.h"
#include "FocusEngine.h"
#include "focusPreferencesVc.h"
#include "focusSummaryVc.h"
#include "FocusTypeList.h"
#include "HotKey.h"
#include "HotKeysController.h"
#include "LockWindows.h"
#include "menuViewController.h"
#include "PreferenceKeys.h"
#include "preferencesWindowController.h"
#include "quittingWindow.h"
#include "selectJsonVc.h"
#include "SettingsLoader.h"
#include "StatusItem.h"
#include "timerViewcontroller.h"
#include "uninstallVc.h"
#include "UrlBlocker.h"
#include "ViewController.h"
#include "WayOut.h"

#include <QApplication>
#include <QCursor>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QSaveFile>
#include <QScreen>
#include <QSessionManager>
#include <QTabWidget>
#include <QTextStream>
#include <QUrl>
#include <QWindow>

namespace velmora {

namespace {
constexpr qint64 kTickMs = 5000;
constexpr int kRestartExitStatus = 0;
} // namespace

AppDelegate::AppDelegate(Ports ports, AppPaths paths, QObject* parent)
    : QObject(parent)
    , m_ports(ports)
    , m_paths(withConfigServer(std::move(paths)))
    , m_log(*ports.clock, {})
    , m_usage(*ports.clock, {})
    , m_sync(*ports.preferences, *ports.clock)
{
    m_focusTypes = new FocusTypeList(m_state.arrFocusType, *m_ports.preferences, m_log, this);
    m_schedule = std::make_unique<DaySchedule>(DaySchedule::Deps{m_state, *m_ports.preferences,
                                                                 *m_ports.clock, m_log, *m_ports.media,
                                                                 *m_ports.notifier, m_texts, m_sync, *this});
    mainViewControllerObj = new ViewController(
        {m_state, *m_ports.preferences, *m_ports.clock, *m_ports.scheduler, m_log, m_usage, m_texts,
         *m_ports.notifier, *m_ports.displayAwake, *m_ports.media, m_sync, *m_schedule, *this, m_random});
    m_mainWindow =
        std::make_unique<CustomWindow>(mainViewControllerObj, *m_ports.scheduler, m_ports.lockShield);
    m_lock =
        std::make_unique<LockWindows>(*m_mainWindow, *m_ports.scheduler, m_texts.appName, m_ports.lockShield);
    m_lock->isMainWindowLodded = [this] { return m_state.isMainWindowLodded; };
    statusbutton = new StatusItem(this);
    m_hotKeys = std::make_unique<HotKeysController>(*m_ports.hotKeys);
    terminate = [](int status) { QCoreApplication::exit(status); };
    confirm = [this](const QString& message) {
        QMessageBox box(QMessageBox::Question, m_texts.appName, message);
        box.addButton(m_texts.text("common", "yesText", QStringLiteral("Yes")), QMessageBox::YesRole);
        QAbstractButton* no =
            box.addButton(m_texts.text("common", "noText", QStringLiteral("No")), QMessageBox::NoRole);
        box.setWindowFlags(box.windowFlags() | Qt::WindowStaysOnTopHint);
        // Like the quit flow and the preferences: above a lock, with the keyboard.
        m_question = &box;
        if (isMainWindowVisible()) {
            if (m_ports.lockShield)
                m_ports.lockShield->prepare(&box, LockShield::Surface::AboveLock);
            box.winId();
            box.windowHandle()->setTransientParent(m_mainWindow->windowHandle());
        }
        box.exec();
        m_question = nullptr;
        return box.clickedButton() != no;
    };

    m_feedback =
        std::make_unique<FeedbackUpload>(*m_ports.http, *m_ports.preferences, m_texts, *m_ports.clock,
                                         m_paths.packagedSettings, m_log, *m_ports.scheduler);
    const PreferencesContext preferencesContext{
        m_state, *m_ports.preferences, *m_ports.clock,    *m_ports.scheduler, m_log,
        m_texts, m_focusTypes,         m_ports.workspace, m_ports.browserTabs};
    m_menu = std::make_unique<menuViewController>(menuViewController::Deps{
        preferencesContext, *m_ports.http, m_paths.packagedSettings, configServer()});
    m_preferencesWindow = std::make_unique<preferencesWindowController>(preferencesContext);
    installSettingsEditor();
    m_quittingWindow = std::make_unique<quittingWindow>(QuitFlowContext{
        *m_ports.preferences, *m_ports.clock, *m_ports.scheduler, m_log, m_usage, m_texts, *m_feedback});
    m_menu->onReactivate = [this] { menuItem_Reactivate(); };
    m_menu->onPreferences = [this] { menuItem_Preferences(); };
    m_menu->onExportStatistics = [this] { menuItem_ExportStatistics(); };
    m_menu->onQuit = [this] { m_quittingWindow->btnQuitClicked(); };
    m_quittingWindow->menuItem_Quit = [this] { menuItem_Quit(); };
    m_preferencesWindow->uninstallVcObj->uninstall = [this] { uninstallApp(); };
    connect(statusbutton, &StatusItem::clicked, this, [this] { togglePopover(); });

    m_wayOut = std::make_unique<WayOut>(
        RoutineContext{m_state, *m_ports.preferences, *m_ports.clock, *m_ports.scheduler, m_log, m_usage,
                       m_texts, *m_ports.notifier, *m_ports.displayAwake, *m_ports.media, m_sync, *m_schedule,
                       *this, m_random},
        *mainViewControllerObj, *m_feedback, m_paths.packagedSettings, [this] { quitAndRestartApp(); });
    installFocusSummary();
    installFocusEngine();
    installBlockers();
    shareTheKeyboardWithOurWindows();
    chooseExportFolder = [](const QString& prompt) {
        const auto dialog = exportFolderDialog(prompt);
        return dialog->exec() == QDialog::Accepted ? dialog->selectedFiles().value(0) : QString();
    };
}

// The server given on the command line, or else the packaged catalogue's, read once.
AppPaths AppDelegate::withConfigServer(AppPaths paths)
{
    if (paths.configServer.isEmpty()) {
        TextCatalogue packaged;
        packaged.loadPackaged(paths.packagedCatalogue);
        paths.configServer = QUrl(packaged.text("deployment", "configServer", QString()));
    }
    return paths;
}

std::unique_ptr<QFileDialog> AppDelegate::exportFolderDialog(const QString& prompt)
{
    auto dialog =
        std::make_unique<QFileDialog>(nullptr, QStringLiteral("Export Statistics"), QDir::homePath());
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setLabelText(QFileDialog::Accept, prompt);
    return dialog;
}

// The blockers judge every change of the front application from the start; the
// focus session tells them about the block that runs.
void AppDelegate::installBlockers()
{
    if (!m_ports.workspace)
        return;
    FocusSession& block = m_focus->session();
    m_urlBlocker = std::make_unique<UrlBlocker>(UrlBlocker::Deps{m_state, *m_ports.scheduler,
                                                                 *m_ports.workspace, m_ports.browserTabs,
                                                                 *m_ports.notifier, m_texts, m_log, block});
    m_appBlocker = std::make_unique<AppBlocker>(
        AppBlocker::Deps{m_state, *m_ports.scheduler, *m_ports.workspace, *m_ports.notifier, m_texts, m_log,
                         block, *m_urlBlocker, QStringLiteral("Velmora")});
}

void AppDelegate::startTimerActivitiesAllowedApp()
{
    if (m_appBlocker)
        m_appBlocker->startTimerActivitiesAllowedApp();
}

void AppDelegate::itemAllowListsOver()
{
    if (m_appBlocker)
        m_appBlocker->itemAllowListsOver();
}

// The evening opens with the day's focus blocks and activities, read back from
// the usage log since this morning's start time.
void AppDelegate::installFocusSummary()
{
    m_focusSummary = new focusSummaryVc(m_texts, mainViewControllerObj->containerView);
    m_focusSummary->onContinue = [this] {
        m_state.currentState = CURRENTSTATE::_NOTHING_;
        m_schedule->shutOffMac();
    };
    mainViewControllerObj->setExternalScreen(
        ViewController::ExternalScreen::FocusSummary, m_focusSummary, [this] {
            const QDateTime boundary =
                m_schedule->todayStartInstant().value_or(m_ports.clock->now().addDays(-1));
            m_focusSummary->viewWillAppear(m_usage.path(), boundary);
        });
}

// The focus blocks, their windows and the meeting suggestion; the panel's rows
// lead into them.
void AppDelegate::installFocusEngine()
{
    m_focus = std::make_unique<FocusEngine>(FocusContext{m_state, *m_focusTypes, *m_ports.preferences,
                                                         *m_ports.clock, *m_ports.scheduler, m_log, m_usage,
                                                         m_texts, *this},
                                            *m_ports.media, m_ports.workspace);
    m_menu->onFocusRow = [this](int index) { m_focus->focusRowClicked(index); };
    m_menu->onStartPomodoro = [this] { m_focus->menuShowPomodoroModeView(); };
    m_menu->focusEndTime = [this] { return m_focus->session().endFocusModeTime; };
    if (focusPreferencesVc* prefs = m_preferencesWindow->focusPreferencesVcObj) {
        prefs->showStartingFocusMode = [this](int index, const QString& type) {
            m_focus->showStartingFocusMode(index, type);
        };
        prefs->showAbortingFocusModeVc = [this] { m_focus->showAbortingFocusModeVc(); };
        prefs->isDiscourageSheetShown = [this] { return m_focus->isDiscourageDefaultFocusVcVisible(); };
        prefs->focusTypesRenumbered = [this] { m_focus->focusTypesChanged(); };
    }
}

AppDelegate::~AppDelegate()
{
    qApp->removeEventFilter(this);
    hotKeyClearUserdefaults.reset();
}

// --- launch -----------------------------------------------------------------

void AppDelegate::applicationWillFinishLaunching()
{
    // From here on only the program itself may end the program.
    qApp->installEventFilter(this);
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] { applicationWillTerminate(); });
    auto refuseLogOut = [this](QSessionManager& manager) {
        if (!terminateFromSelf && manager.allowsInteraction()) {
            manager.cancel();
            manager.release();
        }
    };
    connect(qApp, &QGuiApplication::commitDataRequest, this, refuseLogOut);
    connect(qApp, &QGuiApplication::saveStateRequest, this, refuseLogOut);

    auto followScreen = [this](QScreen* screen) {
        connect(screen, &QScreen::geometryChanged, this, [this] { m_lock->screenChanged(); });
    };
    for (QScreen* screen : QGuiApplication::screens())
        followScreen(screen);
    connect(qApp, &QGuiApplication::screenAdded, this, [this, followScreen](QScreen* screen) {
        followScreen(screen);
        m_lock->screenChanged();
    });
    connect(qApp, &QGuiApplication::screenRemoved, this, [this] {
        // The screen is still listed while this runs.
        m_ports.scheduler->post(this, [this] { m_lock->screenChanged(); });
    });

    m_focusTypes->load();
    if (const auto blocked = m_ports.preferences->stringList(keys::kUserdefaultsArrBlockedUrls))
        m_state.arrBlockedUrls = *blocked;
    if (!m_ports.preferences->contains(keys::kUserdefaultsFirstRunDate))
        m_ports.preferences->setValue(keys::kUserdefaultsFirstRunDate, m_ports.clock->now());

    seedBoolPreference(keys::kUserdefaultsOfficeModeEnabled, false, &m_state.isOfficeModeEnabled);
    seedBoolPreference(keys::kUserdefaultsReducedMotion, false, &m_state.kIsReducedMotion);
    seedBoolPreference(keys::kUserdefaultsPromptToRememberHabit, true, &m_state.isPromptToRememberHabit);
    if (!m_ports.preferences->contains(keys::kUserdefaultsPomodoroModeEnabled))
        m_ports.preferences->setValue(keys::kUserdefaultsPomodoroModeEnabled, true);

    // The program insists on starting at login.
    if (m_ports.loginService->install())
        m_ports.loginService->enable();

    prepareDataFolder();
    clearPasswordIfDue();
    installResetHotKey();
    statusbutton->setNormalLook();
    tellOnceWhenThereIsNoTray();
    tellOnceWhenTheLockCannotHold();
    // A browser already in front is judged now, not at the next switch.
    if (m_appBlocker)
        m_appBlocker->frontApplicationChanged();

    m_log.addLog(QStringLiteral("downloading config file"));
    getConfigFile(*m_ports.http, configServer(), m_log, this, [this](std::optional<QJsonObject> catalogue) {
        configurationArrived(std::move(catalogue));
    });
}

void AppDelegate::seedBoolPreference(const QString& key, bool fallback, bool* mirror)
{
    const auto stored = m_ports.preferences->boolean(key);
    if (!stored) {
        if (m_ports.preferences->contains(key))
            m_log.addLog(QStringLiteral("Preference ") + key +
                         QStringLiteral(" was not a bool; reset to default"));
        m_ports.preferences->setValue(key, fallback);
    }
    *mirror = stored.value_or(fallback);
}

void AppDelegate::prepareDataFolder()
{
    if (m_paths.dataFolder.isEmpty())
        return;
    QDir().mkpath(m_paths.dataFolder);
    const QDir folder(m_paths.dataFolder);
    m_log.setPath(folder.filePath(QStringLiteral("Debug_Logs.txt")));
    m_usage.setPath(folder.filePath(QStringLiteral("vlmrStats.csv")));
    m_usage.createIfMissing();
    refreshFromPackage(QStringLiteral(":/block.html"), QStringLiteral("vlmr-focus.html"));
    refreshFromPackage(QStringLiteral(":/vlmr-focus.js"), QStringLiteral("vlmr-focus.js"));
    refreshFromPackage(QStringLiteral(":/logo.png"), QStringLiteral("logo.png"));
    // The sound server plays files, not packaged resources.
    folder.mkpath(QStringLiteral("sounds"));
    for (const QString& sound :
         {QStringLiteral("afterMorningRoutine.wav"), QStringLiteral("everyActivity.wav")})
        refreshFromPackage(QStringLiteral(":/sounds/") + sound, QStringLiteral("sounds/") + sound);
    blockWebUrlString = QUrl::fromLocalFile(folder.filePath(QStringLiteral("vlmr-focus.html"))).toString();
    if (m_urlBlocker)
        m_urlBlocker->setBlockWebUrlString(blockWebUrlString);
}

// Copies a packaged file out to the data folder, replacing the old copy, so that
// the copy always matches the installed version.
void AppDelegate::refreshFromPackage(const QString& resource, const QString& fileName)
{
    const QString target = QDir(m_paths.dataFolder).filePath(fileName);
    if (QFile::exists(target) && !QFile::remove(target))
        qDebug() << "could not remove" << target;
    if (!QFile::exists(target)) {
        if (!QFile::copy(resource, target))
            qDebug() << "could not copy" << resource << "to" << target;
        else
            QFile::setPermissions(target,
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
    }
}

void AppDelegate::clearPasswordIfDue()
{
    const auto clearAt = m_ports.preferences->date(keys::kUserdefaults24HoursClearPasswordTime);
    if (!clearAt) {
        if (timerCheckClearPasswordTime)
            m_ports.scheduler->cancel(*timerCheckClearPasswordTime);
        timerCheckClearPasswordTime.reset();
        return;
    }
    if (m_ports.clock->now() < *clearAt) {
        if (!timerCheckClearPasswordTime)
            timerCheckClearPasswordTime =
                m_ports.scheduler->repeating(kTickMs, this, [this] { clearPasswordIfDue(); });
        return;
    }
    if (timerCheckClearPasswordTime)
        m_ports.scheduler->cancel(*timerCheckClearPasswordTime);
    timerCheckClearPasswordTime.reset();
    m_ports.preferences->remove(keys::kUserdefaults24HoursClearPasswordTime);
    m_ports.preferences->remove(keys::kUserdefaultsAppPassword);
    m_log.addLog(QStringLiteral("password is cleard after 24 hours"));
}

void AppDelegate::installResetHotKey()
{
    // Whatever modifiers are held at launch join the chord, as they always have.
    const Qt::KeyboardModifiers held = QGuiApplication::queryKeyboardModifiers();
    hotKeyClearUserdefaults =
        std::make_unique<HotKey>(*m_hotKeys, Key::j, held | Qt::ControlModifier | Qt::MetaModifier, [this] {
            qDebug() << "Pressed at " << m_ports.clock->now();
            resetAllData();
        });
}

// Stock GNOME shows no tray without an extension. Everything but the icon keeps
// working; the user hears about it once.
void AppDelegate::tellOnceWhenThereIsNoTray()
{
    static const QString shownKey = QStringLiteral("velmoraTrayHintShown");
    if (StatusItem::isTrayAvailable() || m_ports.preferences->contains(shownKey))
        return;
    m_ports.notifier->notify(
        QStringLiteral("Velmora is running without a tray icon"),
        QStringLiteral("Your desktop shows no system tray. On GNOME, install and enable the "
                       "AppIndicator extension (gnome-shell-extension-appindicator) to see "
                       "Velmora's icon. Routines, breaks and the shut-off lock work without "
                       "it."));
    m_ports.preferences->setValue(shownKey, true);
    m_log.addLog(QStringLiteral("No system tray available; told the user once"));
}

// A desktop that lets no program keep its windows above the others: the lock is
// an ordinary full-screen window there, and the user should know it.
void AppDelegate::tellOnceWhenTheLockCannotHold()
{
    static const QString shownKey = QStringLiteral("velmoraLockHintShown");
    if (!m_ports.lockShield || m_ports.lockShield->holds() || m_ports.preferences->contains(shownKey))
        return;
    m_ports.notifier->notify(
        QStringLiteral("Velmora's lock can be left on this desktop"),
        QStringLiteral("Your desktop does not let Velmora keep its lock above other windows, so "
                       "the lock appears as an ordinary full-screen window that other windows and "
                       "the desktop's own key bindings can reach."));
    m_ports.preferences->setValue(shownKey, true);
    m_log.addLog(
        QStringLiteral("The desktop offers no way to keep the lock above other windows; told the user once"));
}

void AppDelegate::installSettingsEditor()
{
    TextCatalogue packaged;
    packaged.loadPackaged(m_paths.packagedCatalogue);
    const QUrl page(
        packaged.text("deployment", "settingsGeneratorUrl", QStringLiteral("qrc:/generator/index.html")));
    auto* editor = new selectJsonVc(
        SettingsEditorContext{*m_ports.preferences, m_log, m_texts, *m_ports.http, m_ports.workspace,
                              configServer(), m_paths.packagedSettings, m_paths.packagedSchema, page});
    editor->quitAndRestartApp = [this] { quitAndRestartApp(); };
    m_preferencesWindow->installSettingsEditor(editor);
}

QUrl AppDelegate::configServer() const
{
    return m_paths.configServer;
}

void AppDelegate::configurationArrived(std::optional<QJsonObject> catalogue)
{
    qDebug() << "response mila";
    if (catalogue)
        m_texts.setConfigjson(*catalogue);
    else if (!m_texts.loadPackaged(m_paths.packagedCatalogue))
        m_log.addLog(QStringLiteral("The packaged catalogue could not be read; default texts apply"));
    m_texts.readConfigFile();
    m_ports.scheduler->post(this, [this] { initialWork(); });
}

void AppDelegate::initialWork()
{
    m_state.isAppInitialLodded = true;
    statusbutton->setClickable(false);
    readSettingsJsonDictionary(m_state, *m_ports.preferences, m_paths.packagedSettings, m_log);

    if (!m_ports.preferences->contains(keys::kUserdefaultsIsAppEnabled)) {
        m_ports.preferences->setValue(keys::kUserdefaultsIsAppEnabled, true);
        m_state.isAppEnable = true;
    }
    if (const auto enabled = m_ports.preferences->boolean(keys::kUserdefaultsIsAppEnabled)) {
        m_state.isAppEnable = *enabled;
        if (!*enabled) {
            statusbutton->setOffLook(m_texts.buttonStatusStateOffText);
            showPomodoroIfOwed();
            m_log.addLog(QStringLiteral("App started in Deactivated state"));
        } else {
            checkWindowState();
            showPomodoroIfOwed();
        }
    } else {
        m_log.addLog(QStringLiteral("kUserdefaultsIsAppEnabled is not a bool; activation left as it was"));
    }

    if (reactivateIfDue())
        return;
    statusbutton->setClickable(true);
    qApp->installEventFilter(this);
}

// A restart after a given-up morning routine still owes the user the pomodoro
// window.
void AppDelegate::showPomodoroIfOwed()
{
    if (!m_ports.preferences->contains(keys::kUserdefaultsShowPomodoroView))
        return;
    m_ports.preferences->remove(keys::kUserdefaultsShowPomodoroView);
    showAutoPomodoroModeView();
}

// A temporary deactivation that has run out restarts the program activated.
bool AppDelegate::reactivateIfDue()
{
    const auto reactivateAt = m_ports.preferences->date(keys::kUserdefaults4HourReActivateTime);
    if (!reactivateAt)
        return false;
    if (!(m_ports.clock->now() < *reactivateAt)) {
        m_ports.preferences->setValue(keys::kUserdefaultsIsAppEnabled, true);
        m_ports.preferences->remove(keys::kUserdefaults4HourReActivateTime);
        m_log.addLog(QStringLiteral("App Reactivated after 4 hours"));
        quitAndRestartApp();
        return true;
    }
    if (!timerCheckReactivateTime)
        timerCheckReactivateTime =
            m_ports.scheduler->repeating(kTickMs, this, [this] { checkFourHourActivateTime(); });
    return false;
}

void AppDelegate::checkWindowState()
{
    if (!m_ports.preferences->contains(keys::kUserdefaultsFirstRun)) {
        m_ports.preferences->setValue(keys::kUserdefaultsFirstRun, true);
        showMainWindow();
        showExtraWindows();
        mainViewControllerObj->showFirstTimeVc();
        m_state.isFirstRun = true;
        m_ports.preferences->setValue(keys::kUserdefaultsLastHabitShowDate, m_ports.clock->now());
        return;
    }
    m_state.isFirstRun = false;

    if (const auto last = m_ports.preferences->date(keys::kUserdefaultsLastHabitShowDate))
        m_schedule->checkLastHabitShowDate(*last);
    else
        m_state.isHabitAlreadyShowed = false;

    const auto start = m_schedule->todayStartInstant();
    if (m_state.startTime && m_state.shutOffTime && start && m_schedule->todayShutOffInstant()) {
        if (m_schedule->isShutOffTimeGoing()) {
            const auto aborted = m_ports.preferences->date(keys::kUserdefaultsShutdownAborted);
            if (!aborted && m_state.currentState != CURRENTSTATE::_SHUTOFFMAC_)
                m_schedule->shutOffMac();
            else if (aborted && m_ports.clock->now() > *aborted)
                m_ports.preferences->remove(keys::kUserdefaultsShutdownAborted);
        } else if (m_state.isHabitAlreadyShowed) {
            loadMainWindow();
            mainViewControllerObj->setActivityTimer();
        } else if (m_ports.clock->now() < *start) {
            qDebug() << "First Date is smaller then second date. all ok ";
        } else {
            m_schedule->startHabitsCall();
        }
    }
    setBackgroundThreadTimer();
}

void AppDelegate::setBackgroundThreadTimer()
{
    if (timerBackgroundThread) {
        m_log.addLog(QStringLiteral("The scheduling tick is already running"));
        return;
    }
    timerBackgroundThread = m_ports.scheduler->repeating(kTickMs, this, [this] { backgroundThread(); });
}

void AppDelegate::backgroundThread()
{
    m_schedule->tick();
}

bool AppDelegate::isTickRunning() const
{
    return timerBackgroundThread && m_ports.scheduler->isActive(*timerBackgroundThread);
}

bool AppDelegate::isReactivationWatchRunning() const
{
    return timerCheckReactivateTime && m_ports.scheduler->isActive(*timerCheckReactivateTime);
}

// --- activation and restarts ---------------------------------------------------

void AppDelegate::checkFourHourActivateTime()
{
    // The only tick a temporarily deactivated program has: it keeps the shut-off
    // lock alive.
    backgroundThread();
    const auto reactivateAt = m_ports.preferences->date(keys::kUserdefaults4HourReActivateTime);
    if (reactivateAt && m_ports.clock->now() < *reactivateAt)
        return;
    if (timerCheckReactivateTime)
        m_ports.scheduler->cancel(*timerCheckReactivateTime);
    timerCheckReactivateTime.reset();
    if (!reactivateAt)
        return;
    m_ports.preferences->setValue(keys::kUserdefaultsIsAppEnabled, true);
    m_ports.preferences->remove(keys::kUserdefaults4HourReActivateTime);
    m_log.addLog(QStringLiteral("App Reactivated after 4 hours"));
    quitAndRestartApp();
}

void AppDelegate::menuItem_Reactivate()
{
    if (timerCheckReactivateTime)
        m_ports.scheduler->cancel(*timerCheckReactivateTime);
    timerCheckReactivateTime.reset();
    m_ports.preferences->setValue(keys::kUserdefaultsIsAppEnabled, true);
    m_ports.preferences->remove(keys::kUserdefaults4HourReActivateTime);
    m_log.addLog(QStringLiteral("App Reactivated by user from top menu"));
    quitAndRestartApp();
}

void AppDelegate::quitAndRestartApp()
{
    m_ports.preferences->sync();
    m_ports.launcher->restartSoon();
    terminateFromSelf = true;
    terminate(kRestartExitStatus);
}

void AppDelegate::resetAllData()
{
    if (!confirm(
            QStringLiteral("Are you sure you want to reset Velmora? All your settings will be deleted.")))
        return;
    m_ports.preferences->clear();
    m_ports.preferences->sync();
    quitAndRestartApp();
}

void AppDelegate::abortAllProcess()
{
    m_log.addLog(QStringLiteral("call abort all process."));
    if (!isMainWindowVisible() || m_state.currentAction != ACTION::_RUNNING_ ||
        !isItemTimerState(m_state.currentState))
        return;
    timerViewcontroller& timer = mainViewControllerObj->timerViewcontrollerObj();
    if (timer.hasLiveTimer()) {
        timer.pauseTimer();
        m_ports.displayAwake->release();
        if (timer.isWebViewShown())
            timer.loadBlankUrl();
    }
}

// --- lock windows ----------------------------------------------------------------

void AppDelegate::loadMainWindow()
{
    m_mainWindow->winId();
}

void AppDelegate::showMainWindow()
{
    m_mainWindow->setIsVisible(true);
}

bool AppDelegate::isMainWindowVisible() const
{
    return m_mainWindow->isVisible();
}

void AppDelegate::setMainWindowVisible(bool visible)
{
    m_mainWindow->setIsVisible(visible);
}

void AppDelegate::bringToFront()
{
    if (m_mainWindow->isVisible()) {
        m_mainWindow->raise();
        m_mainWindow->activateWindow();
    }
}

void AppDelegate::showExtraWindows()
{
    m_lock->showExtraWindows();
}

void AppDelegate::hideBlankWindowInSecondaryMonitor()
{
    m_lock->hideBlankWindowInSecondaryMonitor();
}

bool AppDelegate::isReleaseChord(const QKeyEvent* event) const
{
    const Qt::KeyboardModifiers chord = Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier;
    // Shift+Tab arrives as Backtab.
    return (event->key() == Qt::Key_Tab || event->key() == Qt::Key_Backtab) &&
           (event->modifiers() & chord) == chord;
}

bool AppDelegate::eventFilter(QObject* watched, QEvent* event)
{
    const bool ourWindow = watched == m_quittingWindow.get() || watched == m_preferencesWindow.get() ||
                           (m_question && watched == m_question);
    if (ourWindow && event->type() == QEvent::Show && isMainWindowVisible()) {
        m_mainWindow->giveUpKeyboard();
        keepOurWindowsAboveTheLock();
    }
    if (ourWindow && event->type() == QEvent::Hide && isMainWindowVisible())
        m_ports.scheduler->post(this, [this] { m_mainWindow->takeKeyboard(); });
    if (event->type() == QEvent::Quit && watched == qApp) {
        if (applicationShouldTerminate())
            return QObject::eventFilter(watched, event);
        event->ignore();
        return true;
    }
    if (event->type() == QEvent::Show && watched == m_mainWindow.get())
        keepOurWindowsAboveTheLock();
    if (event->type() == QEvent::Expose && watched == m_mainWindow->windowHandle())
        followTheLockOntoTheScreen();
    // Key presses reach the application once per window before any widget sees
    // them; acting here, and passing every event on, is the lock's key monitor.
    if (event->type() != QEvent::KeyPress || !watched->isWindowType() || !isMainWindowVisible())
        return QObject::eventFilter(watched, event);
    const auto* key = static_cast<QKeyEvent*>(event);
    if (isReleaseChord(key) && !key->isAutoRepeat()) {
        // The last resort out of a lock: no password, no countdown.
        abortAllProcess();
        setMainWindowVisible(false);
        hideBlankWindowInSecondaryMonitor();
        qDebug() << "command contain";
    } else if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
        mainViewControllerObj->handleReturnKey();
    }
    return QObject::eventFilter(watched, event);
}

// --- gates ------------------------------------------------------------------------

void AppDelegate::setActivityTimer()
{
    mainViewControllerObj->setActivityTimer();
}

void AppDelegate::showAllMorningHabits()
{
    mainViewControllerObj->showAllMorningHabits();
}

void AppDelegate::showAllEveningHabits()
{
    mainViewControllerObj->showAllEveningHabits();
}

void AppDelegate::showFocusSummaryView()
{
    mainViewControllerObj->showFocusSummaryView();
}

void AppDelegate::showShutOffScreen()
{
    mainViewControllerObj->shutOffMac();
}

void AppDelegate::setCallLook()
{
    statusbutton->setCallLook(m_texts.buttonStatusStateCallText);
}

void AppDelegate::checkIsMeetingsGoingOn()
{
    m_focus->meetingWatch().checkIsMeetingsGoingOn();
}

bool AppDelegate::isFocusModeOn() const
{
    return m_focus->session().isFocusModeOn();
}

void AppDelegate::focusModeFinishedFromShutOff()
{
    m_focus->session().focusModeFinished(true);
    focusPreferencesFollowBlock();
}

void AppDelegate::showAutoPomodoroModeView()
{
    m_focus->showAutoPomodoroModeView();
}

// --- the focus engine's host -----------------------------------------------------------

void AppDelegate::setFocusLook(const QColor& color)
{
    statusbutton->setFocusLook(m_texts.buttonStatusStateFocusText, color);
}

void AppDelegate::setPlainLook()
{
    statusbutton->setNormalLook();
}

bool AppDelegate::isCallLookShown() const
{
    return statusbutton->look() == StatusItem::Look::Call;
}

void AppDelegate::focusPreferencesFollowBlock()
{
    focusPreferencesVc* prefs = m_preferencesWindow->focusPreferencesVcObj;
    if (!prefs || !m_preferencesWindow->isVisible() ||
        m_preferencesWindow->preferencesTabViewController->currentIndex() !=
            preferencesWindowController::Focus)
        return;
    if (isFocusModeOn())
        prefs->focusModeStarted();
    else
        prefs->focusModeFinished();
}

void AppDelegate::showFocusPreferences()
{
    m_preferencesWindow->menuItem_Preferences();
    m_preferencesWindow->preferencesTabViewController->setCurrentIndex(preferencesWindowController::Focus);
}

void AppDelegate::armBlockers()
{
    if (m_appBlocker)
        m_appBlocker->blockStarted();
}

void AppDelegate::disarmBlockers()
{
    if (m_appBlocker)
        m_appBlocker->blockEnded();
}

bool AppDelegate::isShutOffTimeGoing() const
{
    return m_state.startTime && m_state.shutOffTime && m_schedule->isShutOffTimeGoing();
}

bool AppDelegate::isPreventUserIdleDisplaySleepOn()
{
    return m_schedule->isPreventUserIdleDisplaySleepOn();
}

} // namespace velmora

namespace velmora {

// --- the panel and the ways out ---------------------------------------------------------

void AppDelegate::togglePopover()
{
    // While the discouraging sheet is up the tray does nothing.
    if (!statusbutton->isClickable() || m_focus->isDiscourageDefaultFocusVcVisible())
        return;
    if (m_menu->isVisible()) {
        m_menu->hide();
        return;
    }
    m_menu->popUp(statusbutton->trayGeometry(), QCursor::pos());
}

void AppDelegate::menuItem_Preferences()
{
    m_preferencesWindow->menuItem_Preferences();
}

void AppDelegate::menuItem_ExportStatistics()
{
    const QString folder =
        chooseExportFolder(m_texts.text("common", "buttonExportText", QStringLiteral("Export")));
    if (!folder.isEmpty())
        exportStatistics(folder);
}

// The copy goes to a temporary name in the target folder and replaces the old
// export only once it is complete.
bool AppDelegate::exportStatistics(const QString& folder)
{
    QFile source(m_usage.path());
    if (!source.open(QIODevice::ReadOnly)) {
        QTextStream(stdout) << "Export: " << source.fileName() << ": " << source.errorString() << Qt::endl;
        return false;
    }
    const QByteArray data = source.readAll();
    QSaveFile target(QDir(folder).filePath(QFileInfo(m_usage.path()).fileName()));
    if (!target.open(QIODevice::WriteOnly) || target.write(data) != data.size() || !target.commit()) {
        QTextStream(stdout) << "Export: " << target.fileName() << ": " << target.errorString() << Qt::endl;
        return false;
    }
    return true;
}

void AppDelegate::menuItem_Quit()
{
    m_log.addLog(QStringLiteral("App quit clicked by user"));
    leaveForGood();
}

void AppDelegate::uninstallApp()
{
    leaveForGood();
}

// The login service is switched off first, so that the program does not come
// back; the exit status tells the service not to restart it either.
void AppDelegate::leaveForGood()
{
    m_ports.loginService->disable();
    m_ports.preferences->sync();
    terminateFromSelf = true;
    terminate(kQuitExitStatus);
}

bool AppDelegate::applicationShouldTerminate()
{
    QTextStream(stdout) << "applicationShouldTerminate" << Qt::endl;
    if (!terminateFromSelf)
        return false;
    terminateFromSelf = false;
    return true;
}

void AppDelegate::applicationWillTerminate()
{
    m_log.addLog(QStringLiteral("Application Will Terminate"));
    QTextStream(stdout) << "applicationWillTerminate" << Qt::endl;
}

// The quit flow, the preferences and a question lie above a lock and need typing, which the
// lock's keyboard grab would swallow: the lock lets go while they are up.
void AppDelegate::shareTheKeyboardWithOurWindows()
{
    m_mainWindow->mayTakeKeyboard = [this] {
        return !m_quittingWindow->isVisible() && !m_preferencesWindow->isVisible() &&
               !(m_question && m_question->isVisible());
    };
    // Their showing and hiding reach eventFilter(), which watches the whole application.
}

// A window manager stacks a window when it maps it, which on a busy desktop comes
// well after Qt's Show: the lock would then land on top of a window raised above
// it at Show. Ours are raised again once the lock is really on the screen.
void AppDelegate::followTheLockOntoTheScreen()
{
    const bool onScreen = m_mainWindow->windowHandle()->isExposed();
    if (onScreen && !m_lockOnScreen)
        keepOurWindowsAboveTheLock();
    m_lockOnScreen = onScreen;
}

// A lock that comes up later would cover the preferences and the quit flow. A
// full-screen window sits in a layer above "always on top" ones, so they become
// its transients, which window managers keep above their parent.
void AppDelegate::keepOurWindowsAboveTheLock()
{
    m_ports.scheduler->post(this, [this] {
        for (QWidget* window : {static_cast<QWidget*>(m_preferencesWindow.get()),
                                static_cast<QWidget*>(m_quittingWindow.get()), m_question.data()}) {
            if (!window || !window->isVisible())
                continue;
            if (m_ports.lockShield && m_mainWindow->isVisible())
                m_ports.lockShield->prepare(window, LockShield::Surface::AboveLock);
            if (QWindow* handle = window->windowHandle())
                handle->setTransientParent(m_mainWindow->isVisible() ? m_mainWindow->windowHandle()
                                                                     : nullptr);
        }
        m_preferencesWindow->bringToFront();
        m_quittingWindow->bringToFront();
        if (m_question) {
            m_question->raise();
            m_question->activateWindow();
        }
    });
}

} // namespace velmora
