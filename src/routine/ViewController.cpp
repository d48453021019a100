#include "ViewController.h"

#include "Clock.h"
#include "DaySchedule.h"
#include "DebugLog.h"
#include "DisplayAwake.h"
#include "firstViewController.h"
#include "logQuantityVc.h"
#include "MediaMonitor.h"
#include "Notifier.h"
#include "PreferenceKeys.h"
#include "Preferences.h"
#include "RecordFormats.h"
#include "rememberNextHabitVc.h"
#include "RoutineHost.h"
#include "RoutineRows.h"
#include "Style.h"
#include "SyncTimestamps.h"
#include "TextCatalogue.h"
#include "thirdVc.h"
#include "timerViewcontroller.h"
#include "UsageLog.h"

#include <QComboBox>
#include <QDebug>
#include <QEvent>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRandomGenerator>
#include <QResizeEvent>
#include <QStackedLayout>
#include <QVBoxLayout>

namespace velmora {

namespace {
constexpr qint64 kUnlockDelayMs = 3000;
constexpr int kMorningRehearsalSeconds = 30;
constexpr int kEveningRehearsalSeconds = 20;
} // namespace

// The lock fills screens from 800×600 up: below the size its screens were drawn for,
// every size shrinks alike, so that texts wrap within the window instead of leaving it.
void ViewController::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    const qreal scale = style::lockScale(event->size());
    if (qFuzzyCompare(scale, m_scale))
        return;
    m_scale = scale;
    setStyleSheet(style::lockStyleSheet(scale));
    layout()->setContentsMargins(qRound(48 * scale), qRound(24 * scale), qRound(48 * scale),
                                 qRound(32 * scale));
}

ViewController::ViewController(RoutineContext ctx, QWidget* parent)
    : QWidget(parent)
    , c(ctx)
{
    setObjectName(QStringLiteral("ViewController"));
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(style::lockStyleSheet());
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(48, 24, 48, 32);

    btnAbort = style::quietButton(this, "btnAbort");
    btnAbort->setText(tr("Abort"));
    btnAbort->hide();
    connect(btnAbort, &QPushButton::clicked, this, [this] {
        if (onAbortClicked)
            onAbortClicked();
    });
    layout->addWidget(btnAbort, 0, Qt::AlignRight);

    boxContainer = new QFrame(this);
    boxContainer->setObjectName(QStringLiteral("boxContainer"));
    auto* boxLayout = new QVBoxLayout(boxContainer);
    containerView = new QWidget(boxContainer);
    containerView->setObjectName(QStringLiteral("containerView"));
    m_stack = new QStackedLayout(containerView);
    m_empty = new QWidget(containerView);
    m_stack->addWidget(m_empty);
    boxLayout->addWidget(containerView);
    layout->addWidget(boxContainer, 1);

    m_first = new firstViewController(c, *this, containerView);
    m_timer = new timerViewcontroller(c, *this, containerView);
    m_third = new thirdVc(c, *this, containerView);
    for (QWidget* screen :
         {static_cast<QWidget*>(m_first), static_cast<QWidget*>(m_timer), static_cast<QWidget*>(m_third)})
        m_stack->addWidget(screen);
    m_quantity = new logQuantityVc(c, containerView);
    m_quantity->hide();
    containerView->installEventFilter(this);

    lblMessage = style::title(this, "lblMessage");
    lblMessage->hide();
    layout->addWidget(lblMessage, 1);

    c.state.isMainWindowLodded = true;
}

ViewController::~ViewController()
{
    if (breakTimer)
        c.scheduler.cancel(*breakTimer);
}

bool ViewController::eventFilter(QObject* watched, QEvent* event)
{
    // The quantity overlay lies over the whole container.
    if (watched == containerView && event->type() == QEvent::Resize)
        m_quantity->setGeometry(containerView->rect());
    return QWidget::eventFilter(watched, event);
}

// --- the container --------------------------------------------------------------

void ViewController::clearContainer()
{
    m_quantity->hide();
    m_stack->setCurrentWidget(m_empty);
}

void ViewController::showScreen(QWidget* screen)
{
    lblMessage->hide();
    boxContainer->show();
    m_quantity->hide();
    m_stack->setCurrentWidget(screen);
}

void ViewController::placeScreen(QWidget* screen)
{
    if (m_stack->indexOf(screen) < 0)
        m_stack->addWidget(screen);
    showScreen(screen);
}

void ViewController::setExternalScreen(ExternalScreen which, QWidget* screen,
                                       std::function<void()> willAppear)
{
    External& slot = which == ExternalScreen::ShutOff ? m_shutOffScreen : m_focusSummaryScreen;
    slot = External{screen, std::move(willAppear)};
    if (screen && m_stack->indexOf(screen) < 0)
        m_stack->addWidget(screen);
}

void ViewController::showExternal(ExternalScreen which)
{
    const External& slot = which == ExternalScreen::ShutOff ? m_shutOffScreen : m_focusSummaryScreen;
    if (!slot.screen)
        return;
    if (slot.willAppear)
        slot.willAppear();
    showScreen(slot.screen);
}

QWidget* ViewController::currentScreen() const
{
    QWidget* current = m_stack->currentWidget();
    return current == m_empty ? nullptr : current;
}

void ViewController::showLogQuantityView()
{
    m_quantity->setGeometry(containerView->rect());
    m_quantity->show();
    m_quantity->raise();
}

bool ViewController::isPasswordViewShown() const
{
    return passwordViewShown && passwordViewShown();
}

// --- overview ---------------------------------------------------------------------

void ViewController::showOverview(CURRENTSTATE state, int countdown)
{
    c.state.isPromptToRememberHabitShowedInLastHabit = false;
    if (state == CURRENTSTATE::_MORNING_HABIT_)
        c.state.lastShownRandomChoiceDic.clear();
    btnAbort->show();
    clearContainer();
    c.state.currentState = state;
    c.state.currentAction = ACTION::_STARTING_;
    m_first->isFirstTime = false;
    m_first->viewWillAppear();
    showScreen(m_first);
    if (countdown > 0)
        m_first->startTimer(countdown);
    else if (!m_first->isTimerGoingOn)
        m_first->btnStartFirstHabit->show();
    c.host.bringToFront();
}

void ViewController::showFirstTimeVc()
{
    c.log.addLog(QStringLiteral("Showing first time welcome activity."));
    btnAbort->hide();
    clearContainer();
    m_first->isFirstTime = true;
    c.state.currentState = CURRENTSTATE::_BREATHING_;
    c.state.currentAction = ACTION::_STARTING_;
    m_first->viewWillAppear();
    showScreen(m_first);
    c.host.bringToFront();
}

void ViewController::showAllMorningHabits()
{
    c.log.addLog(QStringLiteral("Showing morning habits."));
    showOverview(CURRENTSTATE::_MORNING_HABIT_, kMorningRehearsalSeconds);
}

void ViewController::showAllMorningHabitsAbortCancel()
{
    c.log.addLog(QStringLiteral("Abort Cancel Showing morning habits."));
    showOverview(CURRENTSTATE::_MORNING_HABIT_, 0);
}

void ViewController::showAllEveningHabits()
{
    c.log.addLog(QStringLiteral("Initiate and run Evening Habits."));
    showOverview(CURRENTSTATE::_EVENING_HABIT_, kEveningRehearsalSeconds);
    c.sync.writeEveningRoutineDate();
    if (const auto till = c.schedule.showedTillDate())
        c.preferences.setValue(keys::kUserdefaultsEveningHabitsShowedTillDate, *till);
}

void ViewController::showAllEveningHabitsAbortCancel()
{
    c.log.addLog(QStringLiteral("Abort Cancel:-Initiate and run Evening Habits."));
    showOverview(CURRENTSTATE::_EVENING_HABIT_, 0);
}

// --- habits -------------------------------------------------------------------------

// Starts the habit at currentHabitIndex of the routine of `state`.
void ViewController::startHabitAt(CURRENTSTATE state)
{
    const QVector<habit>& list =
        state == CURRENTSTATE::_MORNING_HABIT_ ? c.state.arrAllMorningHabits : c.state.arrAllEveningHabits;
    if (c.state.currentHabitIndex < 0 || c.state.currentHabitIndex >= list.size()) {
        // Nothing left to run (an empty routine, or an index past its end): give
        // the machine back rather than stand on an empty screen.
        c.log.addLog(QStringLiteral("No habit at index %1 of a routine of %2; lifting the lock.")
                         .arg(c.state.currentHabitIndex)
                         .arg(list.size()));
        habitsFinishedUnlockMachine();
        return;
    }
    const habit& h = list[c.state.currentHabitIndex];
    std::optional<QString> url;
    if (!h.urlsArray.isEmpty())
        url = h.urlsArray.at(int(c.random.bounded(quint32(h.urlsArray.size()))));
    showScreen(m_timer);
    m_timer->startTimerHabit(h.durationSeconds, url, h.name, h);
    c.state.currentState = state;
    c.state.currentAction = ACTION::_RUNNING_;
}

void ViewController::startFirstMorningHabit()
{
    c.log.addLog(QStringLiteral("current startFirstMorningHabit called"));
    btnAbort->show();
    clearContainer();
    c.state.currentHabitIndex = 0;
    startHabitAt(CURRENTSTATE::_MORNING_HABIT_);
}

void ViewController::startFirstEveningHabit()
{
    c.log.addLog(QStringLiteral("current startFirstEveningHabit called"));
    btnAbort->show();
    clearContainer();
    c.state.currentHabitIndex = 0;
    startHabitAt(CURRENTSTATE::_EVENING_HABIT_);
}

void ViewController::changeMorningHabit()
{
    c.log.addLog(QStringLiteral("current changeMorningHabit called"));
    btnAbort->show();
    clearContainer();
    ++c.state.currentHabitIndex;
    startHabitAt(CURRENTSTATE::_MORNING_HABIT_);
}

void ViewController::changeEveningHabit()
{
    c.log.addLog(QStringLiteral("current changeEveningHabit called"));
    btnAbort->show();
    clearContainer();
    ++c.state.currentHabitIndex;
    startHabitAt(CURRENTSTATE::_EVENING_HABIT_);
}

void ViewController::startBreathing()
{
    c.log.addLog(QStringLiteral("current startBreathing called"));
    btnAbort->hide();
    clearContainer();
    showScreen(m_timer);
    m_timer->startBreathing();
    c.state.currentState = CURRENTSTATE::_BREATHING_;
    c.state.currentAction = ACTION::_RUNNING_;
}

// An item that ran with the lock down (it allowed certain programs) brings the
// lock back when it is over.
void ViewController::itemOverCommon()
{
    if (!c.host.isMainWindowVisible()) {
        c.host.setMainWindowVisible(true);
        c.host.showExtraWindows();
    }
    c.state.currentHabitPlaying.reset();
    c.state.currentActivityPlaying.reset();
    c.host.itemAllowListsOver();
    btnAbort->show();
    clearContainer();
}

void ViewController::morningHabitOver()
{
    c.log.addLog(QStringLiteral("current morning Habit Over called"));
    itemOverCommon();
    showScreen(m_third);
    c.state.currentState = CURRENTSTATE::_MORNING_HABIT_;
    c.state.currentAction = ACTION::_OVER_;
    m_third->morningHabitFinished(c.state.currentHabitIndex);
}

void ViewController::eveningHabitOver()
{
    c.log.addLog(QStringLiteral("current evening Habit Over called"));
    itemOverCommon();
    const QVector<habit>& list = c.state.arrAllEveningHabits;
    const int index = c.state.currentHabitIndex;
    if (index < list.size() - 1) {
        showScreen(m_third);
        c.state.currentState = CURRENTSTATE::_EVENING_HABIT_;
        c.state.currentAction = ACTION::_OVER_;
        m_third->eveningHabitFinished(index);
        return;
    }
    // The last evening habit leads straight to the lock, with no progress screen.
    c.log.addLog(QStringLiteral("evening habit Finished"));
    c.notifier.playSound(QStringLiteral("afterMorningRoutine"));
    shutOffMac();
    if (index < 0 || index >= list.size()) {
        c.log.addLog(
            QStringLiteral("Finished evening habit %1 is not in the routine; nothing recorded.").arg(index));
        return;
    }
    const habit& h = list[index];
    if (!h.logQuantity) {
        addItemRow(c, QStringLiteral("evening routine"), h.name, QString::number(h.durationSeconds));
        return;
    }
    showLogQuantityView();
    m_quantity->resetData(h.name, QString::number(h.durationSeconds), h.logQuantityQuestion,
                          CURRENTSTATE::_EVENING_HABIT_);
}

void ViewController::breathingOver()
{
    c.log.addLog(QStringLiteral("current breathing Habit Over called"));
    btnAbort->hide();
    clearContainer();
    showScreen(m_third);
    m_third->breathingFinished();
    c.state.currentState = CURRENTSTATE::_BREATHING_;
    c.state.currentAction = ACTION::_OVER_;
}

void ViewController::showStayFocusedMessage()
{
    clearContainer();
    boxContainer->hide();
    lblMessage->setText(
        c.texts.text("common", "stayFocusedText", QStringLiteral("OK - Stay focused throughout the day!")));
    lblMessage->show();
}

void ViewController::habitsFinishedUnlockMachine()
{
    c.log.addLog(QStringLiteral("morning habit Finished"));
    btnAbort->hide();
    showStayFocusedMessage();
    c.state.currentHabitIndex = -1;
    // A plain delay, not a timer anyone can cancel: the window goes in 3 seconds.
    c.scheduler.singleShot(kUnlockDelayMs, this, [this] { unlockMachine(); });
    // Offered at once, while the stay-focused message is still up.
    if (c.preferences.boolean(keys::kUserdefaultsPomodoroModeEnabled).value_or(false))
        c.host.showAutoPomodoroModeView();
    c.state.currentState = CURRENTSTATE::_NOTHING_;
}

void ViewController::breathingFinishedUnlockMachine()
{
    c.log.addLog(QStringLiteral("breathing Finished"));
    btnAbort->hide();
    showStayFocusedMessage();
    c.scheduler.singleShot(kUnlockDelayMs, this, [this] { unlockMachine(); });
    c.state.currentState = CURRENTSTATE::_NOTHING_;
}

void ViewController::activityFinishedUnlockMachine()
{
    c.log.addLog(QStringLiteral("Break Activities Finished"));
    btnAbort->hide();
    clearContainer();
    c.state.currentActivityIndex = -1;
    unlockMachine();
    c.state.currentState = CURRENTSTATE::_NOTHING_;
}

void ViewController::unlockMachine()
{
    c.log.addLog(QStringLiteral("current unlockMachine called"));
    lblMessage->hide();
    boxContainer->show();
    c.host.setMainWindowVisible(false);
    c.host.hideBlankWindowInSecondaryMonitor();
    setActivityTimer();
    if (c.state.isFirstRun) {
        c.host.setBackgroundThreadTimer();
        c.state.isFirstRun = false;
    }
}

void ViewController::shutOffMac()
{
    c.state.isHabitAlreadyShowed = false;
    if (c.state.currentState == CURRENTSTATE::_SHUTOFFMAC_)
        return;
    c.log.addLog(QStringLiteral("Showing Shut Off screen."));
    btnAbort->hide();
    clearContainer();
    showExternal(ExternalScreen::ShutOff);
    c.state.currentState = CURRENTSTATE::_SHUTOFFMAC_;
    if (breakTimer) {
        c.scheduler.cancel(*breakTimer);
        breakTimer.reset();
    }
    c.host.bringToFront();
}

void ViewController::showFocusSummaryView()
{
    c.log.addLog(QStringLiteral("Showing Focus Summary"));
    btnAbort->hide();
    clearContainer();
    showExternal(ExternalScreen::FocusSummary);
    c.state.currentState = CURRENTSTATE::_FOCUS_SUMMARY_;
    if (const auto till = c.schedule.showedTillDate())
        c.preferences.setValue(keys::kUserdefaultsFocusSummaryShowedTillDate, *till);
}

// --- breaks -----------------------------------------------------------------------------

bool ViewController::isBreakTimerPending() const
{
    return breakTimer && c.scheduler.isActive(*breakTimer);
}

void ViewController::setActivityTimer()
{
    c.log.addLog(QStringLiteral("Break Activity Timer reset Done."));
    if (c.state.arrAllbreakActivities.isEmpty())
        return;
    if (c.state.breakAfterMinutes <= 0) {
        // A zero interval would put a break up again the moment the last one ended.
        c.log.addLog(QStringLiteral("breakAfterMinutes is not above 0; no break is scheduled."));
        return;
    }
    qDebug() << "breakAfterMinutesxxxx";
    if (breakTimer)
        c.scheduler.cancel(*breakTimer);
    breakTimer = c.scheduler.singleShot(qint64(c.state.breakAfterMinutes) * 60 * 1000, this,
                                        [this] { startBreakActivities(); });
}

// The first reason that holds calls the break off. A call postpones it by a whole
// interval; the other reasons end the chain until the next unlock.
bool ViewController::cancelBreakForReason()
{
    struct Reason
    {
        std::function<bool()> holds;
        const char* line;
        bool resetTimer;
        bool callLook;
    };
    const CURRENTSTATE s = c.state.currentState;
    const Reason reasons[] = {
        {[this] { return c.media.isMicOn(); }, "Mic is in use, Break Activities cancelled.", true, true},
        {[this] { return c.media.isACameraOn(); }, "Camera is in use, Break Activities cancelled.", true,
         true},
        {[this] { return c.host.isPreventUserIdleDisplaySleepOn(); },
         "PreventUserIdleDisplaySleep is On: Break Activities cancelled.", true, false},
        {[s] { return s == CURRENTSTATE::_ABORT_; }, "App is disabled, Break Activities cancelled.", false,
         false},
        {[s] { return s == CURRENTSTATE::_SHUTOFFMAC_; },
         "App is in shutoff state, Break Activities cancelled.", false, false},
        {[s] { return s == CURRENTSTATE::_MORNING_HABIT_; },
         "Morning habit showing, Break Activities cancelled.", false, false},
        {[this] { return c.host.isShutOffTimeGoing(); }, "not working hours, Break Activities cancelled.",
         false, false},
    };
    for (const Reason& reason : reasons) {
        if (!reason.holds())
            continue;
        if (reason.resetTimer)
            setActivityTimer();
        c.log.addLog(QString::fromUtf8(reason.line));
        if (reason.callLook)
            c.host.setCallLook();
        return true;
    }
    return false;
}

void ViewController::buildBreakLists()
{
    RunState& st = c.state;
    st.isAnyMandatoryActivityIncluded = false;
    st.isMandatoryActivityGoing = false;
    st.arrActivitiesIncludeInEveryBreak.clear();
    st.arrActivitiesExcludeInEveryBreak.clear();
    for (const breakActivity& activity : std::as_const(st.arrAllbreakActivities)) {
        if (st.isOfficeModeEnabled && !activity.isOfficeFriendly)
            continue;
        if (activity.IncludeInEveryBreak) {
            st.isAnyMandatoryActivityIncluded = true;
            st.arrActivitiesIncludeInEveryBreak.append(activity);
        } else {
            st.arrActivitiesExcludeInEveryBreak.append(activity);
        }
    }
    if (st.isAnyMandatoryActivityIncluded) {
        st.isMandatoryActivityGoing = true;
        st.currentActivityIndex = 0;
    } else {
        const auto size = quint32(st.arrActivitiesExcludeInEveryBreak.size());
        st.currentActivityIndex = size ? int(c.random.bounded(size)) : 0;
    }
}

void ViewController::startBreakActivities()
{
    c.log.addLog(QStringLiteral("Initiating Break Activities"));
    if (cancelBreakForReason())
        return;
    breakTimer.reset();
    if (c.state.arrAllbreakActivities.isEmpty())
        return;
    btnAbort->show();
    buildBreakLists();
    if (c.state.arrActivitiesIncludeInEveryBreak.isEmpty() &&
        c.state.arrActivitiesExcludeInEveryBreak.isEmpty()) {
        // Office mode with no office-friendly activity: nothing to run, so no lock.
        c.log.addLog(QStringLiteral("No activity fits this break (office mode); the break is skipped."));
        setActivityTimer();
        return;
    }
    clearContainer();
    showScreen(m_third);
    m_third->startBreakActivity();
    c.host.setMainWindowVisible(true);
    c.host.showExtraWindows();
    c.host.bringToFront();
    c.state.currentState = CURRENTSTATE::_ACTIVITY_;
    c.state.currentAction = ACTION::_STARTING_;
}

void ViewController::startActivity(const breakActivity& activity)
{
    auto pickUrl = [this](const QStringList& urls) -> std::optional<QString> {
        if (urls.isEmpty())
            return std::nullopt;
        return urls.at(int(c.random.bounded(quint32(urls.size()))));
    };
    if (!activity.isRandomChoice) {
        m_timer->startTimerActivity(activity.durationSeconds, activity.name, pickUrl(activity.urlsArray),
                                    activity.logQuantityQuestion, activity, activity.logQuantity);
    } else {
        // The alternative the screen before announced; a fresh draw only if none was.
        std::optional<activityChoice> choice = m_third->currentActivityChoice;
        if (!choice && !activity.choices.isEmpty())
            choice = activity.choices.at(int(c.random.bounded(quint32(activity.choices.size()))));
        if (!choice) {
            c.log.addLog(QStringLiteral("Activity %1 has no alternative to run.").arg(activity.name));
            return;
        }
        m_timer->startTimerActivity(activity.durationSeconds, choice->name, pickUrl(choice->urlsArray),
                                    choice->logQuantityQuestion, activity, choice->logQuantity);
    }
    c.state.currentState = CURRENTSTATE::_ACTIVITY_;
    c.state.currentAction = ACTION::_RUNNING_;
}

void ViewController::startCurrentActivity()
{
    c.log.addLog(QStringLiteral("current startCurrentActivity called"));
    btnAbort->show();
    clearContainer();
    showScreen(m_timer);
    const auto& list = c.state.isMandatoryActivityGoing ? c.state.arrActivitiesIncludeInEveryBreak
                                                        : c.state.arrActivitiesExcludeInEveryBreak;
    if (c.state.currentActivityIndex < 0 || c.state.currentActivityIndex >= list.size()) {
        c.log.addLog(
            QStringLiteral("No activity at index %1; the break ends.").arg(c.state.currentActivityIndex));
        activityFinishedUnlockMachine();
        return;
    }
    startActivity(list[c.state.currentActivityIndex]);
}

void ViewController::changeActivity()
{
    c.log.addLog(QStringLiteral("current changeActivity called"));
    btnAbort->show();
    clearContainer();
    showScreen(m_timer);
    RunState& st = c.state;
    std::optional<breakActivity> activity;
    if (st.isAnyMandatoryActivityIncluded && st.isMandatoryActivityGoing) {
        const int previous = st.currentActivityIndex;
        ++st.currentActivityIndex;
        if (st.currentActivityIndex < st.arrActivitiesIncludeInEveryBreak.size()) {
            activity = st.arrActivitiesIncludeInEveryBreak[st.currentActivityIndex];
        } else {
            st.isMandatoryActivityGoing = false;
            st.currentActivityIndex = previous;
        }
    } else if (!st.isAnyMandatoryActivityIncluded) {
        ++st.currentActivityIndex;
    }
    if (!activity) {
        if (st.currentActivityIndex < 0 ||
            st.currentActivityIndex >= st.arrActivitiesExcludeInEveryBreak.size()) {
            c.log.addLog(
                QStringLiteral("No activity at index %1; the break ends.").arg(st.currentActivityIndex));
            activityFinishedUnlockMachine();
            return;
        }
        activity = st.arrActivitiesExcludeInEveryBreak[st.currentActivityIndex];
    }
    startActivity(*activity);
}

void ViewController::activityOver()
{
    c.log.addLog(QStringLiteral("current activityOver called"));
    itemOverCommon();
    showScreen(m_third);
    c.state.currentState = CURRENTSTATE::_ACTIVITY_;
    c.state.currentAction = ACTION::_OVER_;
    m_third->activityFinished(c.state.currentActivityIndex);
}

// --- keyboard -------------------------------------------------------------------------------

void ViewController::handleReturnKey()
{
    const CURRENTSTATE s = c.state.currentState;
    const ACTION a = c.state.currentAction;
    const bool routine = s == CURRENTSTATE::_MORNING_HABIT_ || s == CURRENTSTATE::_EVENING_HABIT_ ||
                         s == CURRENTSTATE::_BREATHING_;
    const bool quantityReady = !m_quantity->isHidden() && !m_quantity->textFieldCount->text().isEmpty();
    QWidget* screen = currentScreen();

    if (isPasswordViewShown()) {
        if (passwordReturnKey)
            passwordReturnKey();
    } else if (routine && a == ACTION::_STARTING_ && screen == m_first && !m_first->isTimerGoingOn) {
        m_first->btnStartFirstHabitClicked();
    } else if (s == CURRENTSTATE::_ACTIVITY_ && a == ACTION::_STARTING_ && screen == m_third) {
        m_third->btnMainClicked();
    } else if ((routine || s == CURRENTSTATE::_ACTIVITY_) && a == ACTION::_OVER_ && screen == m_third) {
        if (!m_quantity->isHidden()) {
            if (quantityReady)
                m_quantity->btnOkClicked();
        } else if (!m_third->boxBg->isHidden()) {
            m_third->btnMainClicked();
        } else if (m_third->isQuizShown() &&
                   !m_third->getRememberNextHabitVcObj().btnStartNextHabit->isHidden()) {
            m_third->getRememberNextHabitVcObj().btnStartNextHabitClicked();
        }
    } else if (s == CURRENTSTATE::_SHUTOFFMAC_ && quantityReady && !c.state.arrAllEveningHabits.isEmpty()) {
        m_quantity->btnOkClicked();
    }
}

} // namespace velmora
