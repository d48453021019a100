#include "WayOut.h"

#include "AbortScreens.h"
#include "Clock.h"
#include "DaySchedule.h"
#include "DebugLog.h"
#include "DisplayAwake.h"
#include "enterPasswordVc.h"
#include "FeedbackUpload.h"
#include "PasswordStore.h"
#include "PreferenceKeys.h"
#include "Preferences.h"
#include "RoutineHost.h"
#include "RunState.h"
#include "SettingsLoader.h"
#include "shutOffTimeVc.h"
#include "StartSmall.h"
#include "thirdVc.h"
#include "timerViewcontroller.h"
#include "UsageLog.h"
#include "ViewController.h"

#include <QDebug>
#include <QEvent>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QLineEdit>
#include <QPushButton>

namespace velmora {

namespace {
constexpr qint64 kEmergencyPauseSeconds = 4 * 60 * 60;
} // namespace

WayOut::WayOut(RoutineContext ctx, ViewController& main, FeedbackUpload& upload, QString packagedSettingsPath,
               std::function<void()> quitAndRestartApp, QObject* parent)
    : QObject(parent)
    , c(ctx)
    , m_main(main)
    , m_upload(upload)
    , m_packagedSettingsPath(std::move(packagedSettingsPath))
    , m_quitAndRestartApp(std::move(quitAndRestartApp))
{
    QWidget* container = m_main.containerView;
    m_countDown = new abortingCountDownVc(c, container);
    m_confirm = new abortingConfirmVc(c, container);
    m_cantHandle = new abortingCantHandleVc(c, container);
    m_done = new abortDoneVc(c, container);
    m_shutOff = new shutOffTimeVc(c, container);
    for (QWidget* screen : std::initializer_list<QWidget*>{m_countDown, m_confirm, m_cantHandle, m_done})
        screen->hide();
    m_password = new enterPasswordVc({c.preferences, c.clock, c.scheduler, c.log, c.texts}, container);
    m_password->hide();
    container->installEventFilter(this);

    m_countDown->onFinished = [this] { showAbortConfirmationView(); };
    m_countDown->onCancel = [this] { abortCancel(); };
    m_confirm->onEmergencyOver = [this] { emergencyChosen(); };
    m_confirm->onAppBroken = [this](const QString& email, const QString& feedback) {
        appBrokenChosen(email, feedback);
    };
    m_confirm->onStartSmall = [this] { startSmallChosen(); };
    m_confirm->onDontWantRoutine = [this] { showAbortDisableMorningRoutineVc(); };
    m_confirm->onSomethingElse = [this](const QString& feedback) { somethingElseChosen(feedback); };
    m_cantHandle->onMain = [this](const QString& feedback) { cantHandleAnswered(feedback); };
    m_done->onFinished = [this] { disableApp(); };
    m_password->onCorrect = [this] { passwordCorrect(); };
    m_password->onCancel = [this] { passwordCancelled(); };

    m_shutOff->showPasswordView = [this] { showPasswordView(); };
    m_shutOff->onCancelled = [this] {
        c.state.currentState = CURRENTSTATE::_NOTHING_;
        m_main.shutOffMac();
    };
    m_shutOff->onUnlockClicked = [this](const QString& feedback) {
        // Nobody waits for this one.
        m_upload.getAbortJsonToUpload(QString(), feedback, QStringLiteral("Shutdown skipped"), this, [] {});
    };
    m_shutOff->emergencyStartDone = [this] { emergencyStartDone(); };

    m_main.onAbortClicked = [this] { btnAbortClicked(); };
    m_main.passwordViewShown = [this] { return isPasswordViewShown(); };
    m_main.passwordReturnKey = [this] { m_password->btnOkClicked(); };
    m_main.setExternalScreen(ViewController::ExternalScreen::ShutOff, m_shutOff, [this] {
        hidePasswordView();
        m_shutOff->resetView();
    });
    m_mainAlive = &m_main;
}

WayOut::~WayOut()
{
    if (!m_mainAlive)
        return;
    // The lock window outlives us: leave it nothing that points here.
    m_main.onAbortClicked = nullptr;
    m_main.passwordViewShown = nullptr;
    m_main.passwordReturnKey = nullptr;
    m_main.setExternalScreen(ViewController::ExternalScreen::ShutOff, nullptr, {});
    m_main.containerView->removeEventFilter(this);
    for (QWidget* screen : std::initializer_list<QWidget*>{m_countDown, m_confirm, m_cantHandle, m_done,
                                                           m_shutOff, m_password}) {
        if (m_main.currentScreen() == screen)
            m_main.clearContainer();
        delete screen;
    }
}

bool WayOut::eventFilter(QObject* watched, QEvent* event)
{
    // The prompt lies over the whole container, like the quantity screen.
    if (watched == m_main.containerView && event->type() == QEvent::Resize)
        m_password->setGeometry(m_main.containerView->rect());
    return QObject::eventFilter(watched, event);
}

// --- starting ------------------------------------------------------------------------

void WayOut::btnAbortClicked()
{
    RunState& st = c.state;
    c.log.addLog(QStringLiteral("Abort clicked"));
    st.lastCurrentState = st.currentState;
    st.lastCurrentAction = st.currentAction;
    m_main.btnAbort->hide();

    timerViewcontroller& timer = m_main.timerViewcontrollerObj();
    m_pausedUrl.reset();
    if (st.currentAction == ACTION::_RUNNING_ && isItemTimerState(st.currentState) && timer.hasLiveTimer()) {
        // currentTimer stays where it is, so that going back resumes from there.
        timer.pauseTimer();
        c.displayAwake.release();
        if (timer.isWebViewShown()) {
            m_pausedUrl = timer.loadedUrl();
            timer.loadBlankUrl();
        }
    }
    // A break needs no password, even when one is set.
    const bool routine =
        st.currentState == CURRENTSTATE::_MORNING_HABIT_ || st.currentState == CURRENTSTATE::_EVENING_HABIT_;
    if (routine && password::isSet(c.preferences)) {
        showPasswordView();
        return;
    }
    showAbortStartView();
}

void WayOut::showPasswordView()
{
    c.log.addLog(QStringLiteral("Showing enter password view"));
    m_password->viewWillAppear(true);
    m_password->setGeometry(m_main.containerView->rect());
    m_password->show();
    m_password->raise();
    m_password->textFieldPassword->setFocus();
}

void WayOut::hidePasswordView()
{
    m_password->hide();
}

bool WayOut::isPasswordViewShown() const
{
    return !m_password->isHidden();
}

void WayOut::passwordCorrect()
{
    if (c.state.currentState == CURRENTSTATE::_SHUTOFFMAC_)
        m_shutOff->getAccessNowClicked();
    else
        showAbortStartView();
}

void WayOut::passwordCancelled()
{
    // At night the resting screen is simply there again.
    if (c.state.currentState != CURRENTSTATE::_SHUTOFFMAC_)
        abortCancel();
}

// --- the screens ---------------------------------------------------------------------------

void WayOut::placeAbortScreen(QWidget* screen)
{
    hidePasswordView();
    m_main.btnAbort->hide();
    m_main.clearContainer();
    m_main.placeScreen(screen);
    c.state.currentState = CURRENTSTATE::_ABORT_;
}

void WayOut::showAbortStartView()
{
    c.log.addLog(QStringLiteral("Showing abort count-down"));
    placeAbortScreen(m_countDown);
    m_countDown->startTimer();
}

void WayOut::showAbortConfirmationView()
{
    c.log.addLog(QStringLiteral("Showing abort reasons"));
    placeAbortScreen(m_confirm);
    m_confirm->resetData();
}

void WayOut::showAbortStartSmallVc(bool isAnyHabitRemoved)
{
    placeAbortScreen(m_cantHandle);
    m_cantHandle->isViewStartingSmall = true;
    m_cantHandle->resetView(isAnyHabitRemoved);
}

void WayOut::showAbortDisableMorningRoutineVc()
{
    placeAbortScreen(m_cantHandle);
    m_cantHandle->isViewStartingSmall = false;
    m_cantHandle->resetView(false);
}

void WayOut::showAbortDoneView()
{
    placeAbortScreen(m_done);
    m_done->startTimer();
}

// --- going back ------------------------------------------------------------------------------

void WayOut::abortCancel()
{
    RunState& st = c.state;
    c.log.addLog(QStringLiteral("Abort cancelled"));
    m_countDown->countDown.stop();
    hidePasswordView();
    m_main.btnAbort->show();
    m_main.clearContainer();

    timerViewcontroller& timer = m_main.timerViewcontrollerObj();
    const CURRENTSTATE state = st.lastCurrentState;
    const ACTION action = st.lastCurrentAction;
    switch (state) {
    case CURRENTSTATE::_MORNING_HABIT_:
    case CURRENTSTATE::_EVENING_HABIT_: {
        const bool morning = state == CURRENTSTATE::_MORNING_HABIT_;
        if (action == ACTION::_RUNNING_) {
            const QVector<habit>& list = morning ? st.arrAllMorningHabits : st.arrAllEveningHabits;
            if (st.currentHabitIndex < 0 || st.currentHabitIndex >= list.size()) {
                c.log.addLog(QStringLiteral("No habit at index %1 to resume.").arg(st.currentHabitIndex));
                return;
            }
            const habit& h = list[st.currentHabitIndex];
            // The page that was playing, if it still belongs to the habit.
            std::optional<QString> url;
            for (const QString& candidate : h.urlsArray) {
                if (m_pausedUrl && QUrl(timerViewcontroller::embedAddress(candidate)) == *m_pausedUrl)
                    url = candidate;
            }
            m_main.placeScreen(&timer);
            timer.resumeTimerHabit(h.durationSeconds, url, h.name);
            st.currentState = state;
            st.currentAction = ACTION::_RUNNING_;
        } else if (action == ACTION::_OVER_) {
            m_main.placeScreen(&m_main.thirdVcObj());
            st.currentState = state;
            st.currentAction = ACTION::_OVER_;
        } else if (morning) {
            m_main.showAllMorningHabitsAbortCancel();
        } else {
            m_main.showAllEveningHabitsAbortCancel();
        }
        break;
    }
    case CURRENTSTATE::_ACTIVITY_:
        if (action == ACTION::_RUNNING_) {
            m_main.placeScreen(&timer);
            timer.resumeTimerActivity(timer.currentDurationInSeconds, timer.currentActicityTitle,
                                      timer.currentUrl);
            st.currentAction = ACTION::_RUNNING_;
        } else if (action == ACTION::_OVER_) {
            m_main.placeScreen(&m_main.thirdVcObj());
            st.currentAction = ACTION::_OVER_;
        } else {
            m_main.placeScreen(&m_main.thirdVcObj());
            m_main.thirdVcObj().startBreakActivity();
            st.currentAction = ACTION::_STARTING_;
        }
        st.currentState = CURRENTSTATE::_ACTIVITY_;
        break;
    case CURRENTSTATE::_SHUTOFFMAC_:
        m_main.shutOffMac();
        break;
    default:
        // Nothing to go back to (an abort begun during breathing among them):
        // the container stays empty.
        break;
    }
}

// --- the reasons ----------------------------------------------------------------------------------

void WayOut::addAbortRow(const QString& reason, const QString& feedback)
{
    QString logType;
    QString activity;
    switch (c.state.lastCurrentState) {
    case CURRENTSTATE::_MORNING_HABIT_:
        logType = QStringLiteral("morning routine abort");
        activity = QStringLiteral("morning routine");
        break;
    case CURRENTSTATE::_EVENING_HABIT_:
        logType = QStringLiteral("evening routine abort");
        activity = QStringLiteral("evening routine");
        break;
    case CURRENTSTATE::_ACTIVITY_:
        logType = QStringLiteral("break abort");
        activity = QStringLiteral("break");
        break;
    default:
        break;
    }
    c.usage.addEntryInCsv(
        {.logType = logType, .activity = activity, .abortReason = reason, .feedback = feedback});
}

void WayOut::emergencyChosen()
{
    c.preferences.setValue(keys::kUserdefaults4HourReActivateTime,
                           c.clock.now().addSecs(kEmergencyPauseSeconds));
    c.log.addLog(QStringLiteral("App Deactivated for 4 hours - I've got an emergency"));
    addAbortRow(QStringLiteral("I've got an emergency"));
    disableApp();
}

void WayOut::appBrokenChosen(const QString& email, const QString& feedback)
{
    // No usage row for this reason: the webhook hears of it instead.
    m_upload.getAbortJsonToUpload(email, feedback, QStringLiteral("The app is broken"), this,
                                  [this] { showAbortDoneView(); });
}

void WayOut::startSmallChosen()
{
    QJsonParseError error{};
    const QJsonDocument parsed =
        QJsonDocument::fromJson(settingsDocumentText(c.preferences, m_packagedSettingsPath), &error);
    if (error.error != QJsonParseError::NoError || !parsed.isObject())
        qDebug() << "start small: settings document does not parse:" << error.errorString();
    const StartSmallResult result = startSmall(parsed.isObject() ? parsed.object() : QJsonObject());
    // Final: the new document replaces the old before any feedback is given.
    const QByteArray text = QJsonDocument(result.document).toJson(QJsonDocument::Indented);
    c.preferences.setValue(keys::kUserdefaultsSelectedJson, QString::fromUtf8(text));
    c.log.addLog(QStringLiteral("Settings shortened to start small%1")
                     .arg(result.isAnyHabitRemoved ? QStringLiteral(", habits removed") : QString()));
    readSettingsJsonDictionary(c.state, c.preferences, m_packagedSettingsPath, c.log);
    showAbortStartSmallVc(result.isAnyHabitRemoved);
}

void WayOut::somethingElseChosen(const QString& feedback)
{
    // The e-mail field of this box is not read and nothing is uploaded.
    addAbortRow(QStringLiteral("Something else"), feedback);
    showAbortDoneView();
}

void WayOut::cantHandleAnswered(const QString& feedback)
{
    if (!m_cantHandle->isViewStartingSmall) {
        addAbortRow(QStringLiteral("Deactivate routine + breaks"), feedback);
        showAbortDoneView();
        return;
    }
    // The shortened routine runs after the restart; the program stays on.
    if (c.state.lastCurrentState == CURRENTSTATE::_MORNING_HABIT_)
        c.preferences.setValue(keys::kUserdefaultsShowPomodoroView, true);
    else
        c.preferences.remove(keys::kUserdefaultsShowPomodoroView);
    addAbortRow(QStringLiteral("Start shortened routine"), feedback);
    m_quitAndRestartApp();
}

// --- the end -------------------------------------------------------------------------------------

void WayOut::disableApp()
{
    c.log.addLog(QStringLiteral("App Deactivated by user (Aborted)"));
    c.preferences.setValue(keys::kUserdefaultsIsAppEnabled, false);
    if (c.state.lastCurrentState == CURRENTSTATE::_MORNING_HABIT_)
        c.preferences.setValue(keys::kUserdefaultsShowPomodoroView, true);
    else
        c.preferences.remove(keys::kUserdefaultsShowPomodoroView);
    m_quitAndRestartApp();
}

void WayOut::emergencyStartDone()
{
    hidePasswordView();
    m_main.clearContainer();
    c.state.currentState = CURRENTSTATE::_NOTHING_;
    c.host.setMainWindowVisible(false);
    c.host.hideBlankWindowInSecondaryMonitor();
    // Skipped until the coming morning's start; in the day between, nothing.
    if (const auto till = c.schedule.showedTillDate())
        c.preferences.setValue(keys::kUserdefaultsShutdownAborted, *till);
}

} // namespace velmora
