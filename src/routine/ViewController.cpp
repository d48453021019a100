#include "ViewController.h"

#include "Clock.h"
#include "DaySchedule.h"
#include "DebugLog.h"
#include "MediaMonitor.h"
#include "PreferenceKeys.h"
#include "Preferences.h"
#include "RoutineHost.h"
#include "SyncTimestamps.h"
#include "TextCatalogue.h"

#include <QDebug>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QRandomGenerator>
#include <QVBoxLayout>

namespace velmora {

ViewController::ViewController(Deps deps, QWidget* parent) : QWidget(parent), d(deps)
{
    setObjectName(QStringLiteral("ViewController"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(48, 32, 48, 32);

    btnAbort = new QPushButton(tr("Abort"), this);
    btnAbort->setObjectName(QStringLiteral("btnAbort"));
    btnAbort->setFlat(true);
    btnAbort->hide();
    layout->addWidget(btnAbort, 0, Qt::AlignRight);

    boxContainer = new QFrame(this);
    boxContainer->setObjectName(QStringLiteral("boxContainer"));
    auto* boxLayout = new QVBoxLayout(boxContainer);
    containerView = new QWidget(boxContainer);
    containerView->setObjectName(QStringLiteral("containerView"));
    auto* containerLayout = new QVBoxLayout(containerView);
    containerLayout->setContentsMargins(0, 0, 0, 0);
    boxLayout->addWidget(containerView);
    layout->addWidget(boxContainer, 1);

    lblMessage = new QLabel(
        d.texts.text("common", "stayFocusedText", QStringLiteral("OK - Stay focused throughout the day!")),
        this);
    lblMessage->setObjectName(QStringLiteral("lblMessage"));
    lblMessage->setAlignment(Qt::AlignCenter);
    lblMessage->setWordWrap(true);
    QFont big = lblMessage->font();
    big.setPointSize(28);
    lblMessage->setFont(big);
    lblMessage->hide();
    layout->addWidget(lblMessage);

    d.state.isMainWindowLodded = true;
}

void ViewController::clearContainer()
{
    const auto children = containerView->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget* child : children) {
        containerView->layout()->removeWidget(child);
        child->hide();
        child->setParent(nullptr);
    }
}

void ViewController::showOverview(CURRENTSTATE state)
{
    d.state.isPromptToRememberHabitShowedInLastHabit = false;
    if (state == CURRENTSTATE::_MORNING_HABIT_)
        d.state.lastShownRandomChoiceDic.clear();
    btnAbort->show();
    clearContainer();
    d.state.currentState = state;
    d.state.currentAction = ACTION::_STARTING_;
    d.host.bringToFront();
}

void ViewController::showFirstTimeVc()
{
    d.log.addLog(QStringLiteral("Showing first time welcome activity."));
    btnAbort->hide();
    clearContainer();
    d.state.currentState = CURRENTSTATE::_BREATHING_;
    d.state.currentAction = ACTION::_STARTING_;
    d.host.bringToFront();
}

void ViewController::showAllMorningHabits()
{
    d.log.addLog(QStringLiteral("Showing morning habits."));
    showOverview(CURRENTSTATE::_MORNING_HABIT_);
}

void ViewController::showAllEveningHabits()
{
    d.log.addLog(QStringLiteral("Initiate and run Evening Habits."));
    showOverview(CURRENTSTATE::_EVENING_HABIT_);
    d.sync.writeEveningRoutineDate();
    if (const auto till = d.schedule.showedTillDate())
        d.preferences.setValue(keys::kUserdefaultsEveningHabitsShowedTillDate, *till);
}

void ViewController::showFocusSummaryView()
{
    d.log.addLog(QStringLiteral("Showing Focus Summary"));
    btnAbort->hide();
    clearContainer();
    d.state.currentState = CURRENTSTATE::_FOCUS_SUMMARY_;
    if (const auto till = d.schedule.showedTillDate())
        d.preferences.setValue(keys::kUserdefaultsFocusSummaryShowedTillDate, *till);
}

void ViewController::shutOffMac()
{
    d.state.isHabitAlreadyShowed = false;
    if (d.state.currentState == CURRENTSTATE::_SHUTOFFMAC_)
        return;
    d.log.addLog(QStringLiteral("Showing Shut Off screen."));
    btnAbort->hide();
    clearContainer();
    d.state.currentState = CURRENTSTATE::_SHUTOFFMAC_;
    if (breakTimer) {
        d.scheduler.cancel(*breakTimer);
        breakTimer.reset();
    }
    d.host.bringToFront();
}

void ViewController::unlockMachine()
{
    d.log.addLog(QStringLiteral("current unlockMachine called"));
    lblMessage->hide();
    d.host.setMainWindowVisible(false);
    d.host.hideBlankWindowInSecondaryMonitor();
    setActivityTimer();
    if (d.state.isFirstRun) {
        d.host.setBackgroundThreadTimer();
        d.state.isFirstRun = false;
    }
}

bool ViewController::isBreakTimerPending() const
{
    return breakTimer && d.scheduler.isActive(*breakTimer);
}

void ViewController::setActivityTimer()
{
    d.log.addLog(QStringLiteral("Break Activity Timer reset Done."));
    if (d.state.arrAllbreakActivities.isEmpty())
        return;
    if (d.state.breakAfterMinutes <= 0) {
        // A zero interval would put a break up again the moment the last one ended.
        d.log.addLog(QStringLiteral("breakAfterMinutes is not above 0; no break is scheduled."));
        return;
    }
    qDebug() << "breakAfterMinutesxxxx";
    if (breakTimer)
        d.scheduler.cancel(*breakTimer);
    breakTimer = d.scheduler.singleShot(qint64(d.state.breakAfterMinutes) * 60 * 1000, this,
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
    const CURRENTSTATE s = d.state.currentState;
    const Reason reasons[] = {
        {[this] { return d.media.isMicOn(); }, "Mic is in use, Break Activities cancelled.", true, true},
        {[this] { return d.media.isACameraOn(); }, "Camera is in use, Break Activities cancelled.", true,
         true},
        {[this] { return d.host.isPreventUserIdleDisplaySleepOn(); },
         "PreventUserIdleDisplaySleep is On: Break Activities cancelled.", true, false},
        {[s] { return s == CURRENTSTATE::_ABORT_; }, "App is disabled, Break Activities cancelled.", false,
         false},
        {[s] { return s == CURRENTSTATE::_SHUTOFFMAC_; },
         "App is in shutoff state, Break Activities cancelled.", false, false},
        {[s] { return s == CURRENTSTATE::_MORNING_HABIT_; },
         "Morning habit showing, Break Activities cancelled.", false, false},
        {[this] { return d.host.isShutOffTimeGoing(); }, "not working hours, Break Activities cancelled.",
         false, false},
    };
    for (const Reason& reason : reasons) {
        if (!reason.holds())
            continue;
        if (reason.resetTimer)
            setActivityTimer();
        d.log.addLog(QString::fromUtf8(reason.line));
        if (reason.callLook)
            d.host.setCallLook();
        return true;
    }
    return false;
}

void ViewController::buildBreakLists()
{
    RunState& st = d.state;
    st.isAnyMandatoryActivityIncluded = false;
    st.isMandatoryActivityGoing = false;
    st.arrActivitiesIncludeInEveryBreak.clear();
    st.arrActivitiesExcludeInEveryBreak.clear();
    for (const breakActivity& activity : st.arrAllbreakActivities) {
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
        st.currentActivityIndex = size ? int(QRandomGenerator::global()->bounded(size)) : 0;
    }
}

void ViewController::startBreakActivities()
{
    d.log.addLog(QStringLiteral("Initiating Break Activities"));
    if (cancelBreakForReason())
        return;
    breakTimer.reset();
    if (d.state.arrAllbreakActivities.isEmpty())
        return;
    btnAbort->show();
    buildBreakLists();
    if (d.state.arrActivitiesIncludeInEveryBreak.isEmpty() &&
        d.state.arrActivitiesExcludeInEveryBreak.isEmpty()) {
        // Office mode with no office-friendly activity: nothing to run, so no lock.
        d.log.addLog(QStringLiteral("No activity fits this break (office mode); the break is skipped."));
        setActivityTimer();
        return;
    }
    clearContainer();
    d.host.setMainWindowVisible(true);
    d.host.showExtraWindows();
    d.host.bringToFront();
    d.state.currentState = CURRENTSTATE::_ACTIVITY_;
    d.state.currentAction = ACTION::_STARTING_;
}

} // namespace velmora
