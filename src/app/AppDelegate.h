#pragma once

#include "DaySchedule.h"
#include "DebugLog.h"
#include "FocusHost.h"
#include "GateHost.h"
#include "Ports.h"
#include "RoutineHost.h"
#include "RunState.h"
#include "SyncTimestamps.h"
#include "TextCatalogue.h"
#include "UsageLog.h"

#include <functional>
#include <memory>
#include <QObject>
#include <QPointer>
#include <QRandomGenerator>
#include <QUrl>

class QFileDialog;
class QKeyEvent;
#include <optional>

namespace velmora {

class AppBlocker;
class CustomWindow;
class UrlBlocker;
class FeedbackUpload;
class FocusEngine;
class FocusTypeList;
class WayOut;
class focusSummaryVc;
class HotKey;
class HotKeysController;
class LockWindows;
class StatusItem;
class menuViewController;
class preferencesWindowController;
class quittingWindow;
class ViewController;

// Where the program keeps and finds its files.
struct AppPaths
{
    QString dataFolder; // usage log, debug log, block page, logo
    QString packagedSettings = QStringLiteral(":/settings.json");
    QString packagedCatalogue = QStringLiteral(":/config.json");
    QString packagedSchema = QStringLiteral(":/settings-schema.json");
    QUrl configServer; // empty: the packaged catalogue's, if any
};

// Takes every outside event (launch, screens, the tray, the timers) and owns the
// objects that live for the whole process.
class AppDelegate : public QObject, private GateHost, private RoutineHost, private FocusHost
{
    Q_OBJECT

public:
    AppDelegate(Ports ports, AppPaths paths, QObject* parent = nullptr);
    ~AppDelegate() override;

    void applicationWillFinishLaunching();
    void initialWork();
    void checkWindowState();
    void setBackgroundThreadTimer() override;
    void backgroundThread();

    void abortAllProcess() override;
    void checkFourHourActivateTime();
    void menuItem_Reactivate();
    void quitAndRestartApp();
    void resetAllData();
    void showExtraWindows() override;
    void hideBlankWindowInSecondaryMonitor() override;

    // The tray panel and what its rows lead to.
    void togglePopover();
    void menuItem_Preferences();
    void menuItem_ExportStatistics();
    // Copies the usage log into the folder, replacing an earlier copy; a failure
    // leaves every file as it was.
    bool exportStatistics(const QString& folder);
    // The end of the quit flow, and the way out for whoever must really quit.
    void menuItem_Quit();
    // The same, without the quit's log line, at the end of an uninstall.
    void uninstallApp();
    // A quit request that the program did not make itself is refused.
    bool applicationShouldTerminate();
    void applicationWillTerminate();

    RunState& state() { return m_state; }
    FocusTypeList& focusTypes() { return *m_focusTypes; }
    DaySchedule& schedule() { return *m_schedule; }
    ViewController& viewController() { return *mainViewControllerObj; }
    CustomWindow& mainWindow() { return *m_mainWindow; }
    LockWindows& lockWindows() { return *m_lock; }
    StatusItem& statusItem() { return *statusbutton; }
    menuViewController& menuViewControllerObj() { return *m_menu; }
    preferencesWindowController& preferencesWindowControllerObj() { return *m_preferencesWindow; }
    quittingWindow& quittingWcObj() { return *m_quittingWindow; }
    FeedbackUpload& feedbackUpload() { return *m_feedback; }
    WayOut& wayOut() { return *m_wayOut; }
    focusSummaryVc& focusSummary() { return *m_focusSummary; }
    FocusEngine& focusEngine() { return *m_focus; }
    const TextCatalogue& texts() const { return m_texts; }
    const DebugLog& debugLog() const { return m_log; }
    const UsageLog& usageLog() const { return m_usage; }
    QRandomGenerator& random() { return m_random; }
    // The application and address blockers; none without a workspace.
    AppBlocker* appBlocker() { return m_appBlocker.get(); }
    UrlBlocker* urlBlocker() { return m_urlBlocker.get(); }
    bool isTickRunning() const;
    bool isReactivationWatchRunning() const;

    bool terminateFromSelf = false;
    // How the process ends; tests replace it.
    std::function<void(int exitStatus)> terminate;
    // The yes/no question of a full reset; tests replace it.
    std::function<bool(const QString& message)> confirm;
    // The folder chooser of the export; tests replace it. Empty: cancelled.
    std::function<QString(const QString& prompt)> chooseExportFolder;
    // The export's folder chooser: PROMPT is its accept button, not its title.
    static std::unique_ptr<QFileDialog> exportFolderDialog(const QString& prompt);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // GateHost
    void loadMainWindow() override;
    void showMainWindow() override;
    bool isMainWindowVisible() const override;
    void setActivityTimer() override;
    void showAllMorningHabits() override;
    void showAllEveningHabits() override;
    void showFocusSummaryView() override;
    void showShutOffScreen() override;
    void setCallLook() override;
    void checkIsMeetingsGoingOn() override;
    bool isFocusModeOn() const override;
    void focusModeFinishedFromShutOff() override;
    // RoutineHost
    void setMainWindowVisible(bool visible) override;
    void bringToFront() override;
    bool isShutOffTimeGoing() const override;
    bool isPreventUserIdleDisplaySleepOn() override;
    void startTimerActivitiesAllowedApp() override;
    void itemAllowListsOver() override;
    void showAutoPomodoroModeView() override;
    // FocusHost
    void setFocusLook(const QColor& color) override;
    void setPlainLook() override;
    bool isCallLookShown() const override;
    void focusPreferencesFollowBlock() override;
    void showFocusPreferences() override;
    void armBlockers() override;
    void disarmBlockers() override;

    void seedBoolPreference(const QString& key, bool fallback, bool* mirror);
    void prepareDataFolder();
    void refreshFromPackage(const QString& resource, const QString& fileName);
    void clearPasswordIfDue();
    void installResetHotKey();
    void tellOnceWhenThereIsNoTray();
    void tellOnceWhenTheLockCannotHold();
    void installFocusSummary();
    void installFocusEngine();
    void showPomodoroIfOwed();
    void shareTheKeyboardWithOurWindows();
    void configurationArrived(std::optional<QJsonObject> catalogue);
    bool reactivateIfDue();
    bool isReleaseChord(const QKeyEvent* event) const;
    QUrl configServer() const;
    static AppPaths withConfigServer(AppPaths paths);
    void installSettingsEditor();
    void leaveForGood();
    void keepOurWindowsAboveTheLock();
    void followTheLockOntoTheScreen();
    void installBlockers();

    Ports m_ports;
    AppPaths m_paths;
    RunState m_state;
    QRandomGenerator m_random{QRandomGenerator::securelySeeded()};
    TextCatalogue m_texts;
    DebugLog m_log;
    UsageLog m_usage;
    SyncTimestamps m_sync;
    std::unique_ptr<DaySchedule> m_schedule;
    FocusTypeList* m_focusTypes = nullptr;

    ViewController* mainViewControllerObj = nullptr;
    std::unique_ptr<CustomWindow> m_mainWindow;
    std::unique_ptr<LockWindows> m_lock;
    StatusItem* statusbutton = nullptr;
    std::unique_ptr<HotKeysController> m_hotKeys;
    std::unique_ptr<HotKey> hotKeyClearUserdefaults;
    std::unique_ptr<FeedbackUpload> m_feedback;
    std::unique_ptr<WayOut> m_wayOut;
    focusSummaryVc* m_focusSummary = nullptr;
    std::unique_ptr<FocusEngine> m_focus;
    std::unique_ptr<menuViewController> m_menu;
    std::unique_ptr<preferencesWindowController> m_preferencesWindow;
    std::unique_ptr<quittingWindow> m_quittingWindow;
    QPointer<QWidget> m_question; // a question asked while it is open
    bool m_lockOnScreen = false;  // mapped by the desktop, not only shown by Qt
    std::unique_ptr<UrlBlocker> m_urlBlocker;
    std::unique_ptr<AppBlocker> m_appBlocker;

    std::optional<TimerId> timerBackgroundThread;
    std::optional<TimerId> timerCheckReactivateTime;
    std::optional<TimerId> timerCheckClearPasswordTime;
    QString blockWebUrlString;
};

} // namespace velmora
