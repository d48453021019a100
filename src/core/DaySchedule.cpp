#include "DaySchedule.h"

#include "Clock.h"
#include "DayTimes.h"
#include "DebugLog.h"
#include "GateHost.h"
#include "MediaMonitor.h"
#include "Notifier.h"
#include "PreferenceKeys.h"
#include "Preferences.h"
#include "RunState.h"
#include "SyncTimestamps.h"
#include "TextCatalogue.h"

#include <QDebug>
#include <QFileInfo>

namespace velmora {

DaySchedule::DaySchedule(Deps deps)
    : d(deps)
{
}

std::optional<QDateTime> DaySchedule::todayStartInstant() const
{
    if (!d.state.startTime)
        return std::nullopt;
    return instantOn(d.clock.now().date(), *d.state.startTime);
}

std::optional<QDateTime> DaySchedule::todayShutOffInstant() const
{
    if (!d.state.shutOffTime)
        return std::nullopt;
    return instantOn(d.clock.now().date(), *d.state.shutOffTime);
}

void DaySchedule::checkLastHabitShowDate(const QDateTime& lastHabitShowDate)
{
    d.state.isHabitAlreadyShowed = isSameDayOrLater(lastHabitShowDate, d.clock.now().date());
}

bool DaySchedule::isShutOffTimeGoing() const
{
    const auto start = todayStartInstant();
    const auto end = todayShutOffInstant();
    if (!start || !end) {
        logBadTimesOnce(QStringLiteral("Start or shut-off time is not a time of day; no shut-off decided."));
        return false;
    }
    const QDateTime now = d.clock.now();
    if (*start > *end)
        return now < *start && now > *end;
    return now < *start || now > *end;
}

std::optional<QDateTime> DaySchedule::showedTillDate() const
{
    const auto start = todayStartInstant();
    const auto end = todayShutOffInstant();
    if (!start || !end)
        return std::nullopt;
    const QDateTime now = d.clock.now();
    if (now > *end)
        return instantOn(now.date().addDays(1), *d.state.startTime);
    if (now < *start)
        return start;
    return std::nullopt;
}

bool DaySchedule::isPreventUserIdleDisplaySleepOn()
{
    d.log.addLog(QStringLiteral("is Prevent UserIdle Display SleepOn Called"));
    const std::optional<QStringList> answer = d.media.displaySleepInhibitors();
    d.log.addLog(QStringLiteral("is Prevent UserIdle Display SleepOn return ") +
                 (answer ? answer->join(u", ") : QStringLiteral("nil")));
    if (!answer) {
        d.log.addLog(QStringLiteral("is Prevent UserIdle Display SleepOn return false because dic is nil"));
        return false;
    }
    const QStringList& inhibitors = *answer;
    static const QStringList meetingPrograms{QStringLiteral("zoom"), QStringLiteral("zoom.us"),
                                             QStringLiteral("teams"), QStringLiteral("teams-for-linux")};
    const QString self = d.texts.appName.toLower();
    for (const QString& inhibitor : inhibitors) {
        d.log.addLog(
            QStringLiteral("is Prevent UserIdle Display SleepOn success :- arr = dic?[key] as? NSArray"));
        // Inhibitors name themselves by program path, desktop id or plain name.
        QString name = QFileInfo(inhibitor).fileName().toLower();
        if (name.endsWith(QStringLiteral(".desktop")))
            name.chop(8);
        if (name != self && meetingPrograms.contains(name)) {
            d.log.addLog(QStringLiteral("is Prevent UserIdle Display SleepOn return true"));
            return true;
        }
    }
    d.log.addLog(QStringLiteral("is Prevent UserIdle Display SleepOn return false"));
    return false;
}

bool DaySchedule::cancelMorningForCall()
{
    const char* line = nullptr;
    bool callLook = true;
    if (d.media.isMicOn()) {
        line = "Mic is in use, Morning Habits cancelled.";
    } else if (d.media.isACameraOn()) {
        line = "Camera is is use, Morning Habits cancelled.";
    } else if (isPreventUserIdleDisplaySleepOn()) {
        line = "PreventUserIdleDisplaySleep is On: Morning Habits cancelled.";
        callLook = false;
    } else {
        return false;
    }
    d.host.loadMainWindow();
    d.host.setActivityTimer();
    d.log.addLog(QString::fromUtf8(line));
    if (callLook)
        d.host.setCallLook();
    return true;
}

void DaySchedule::startHabitsCall()
{
    d.log.addLog(QStringLiteral("Initiating morning habits."));
    d.preferences.remove(keys::kUserdefaultsShutdownAborted);
    if (cancelMorningForCall())
        return;
    if (const auto otherMachine = d.sync.getMorningRoutineDate())
        checkLastHabitShowDate(*otherMachine);
    if (d.state.isHabitAlreadyShowed)
        return;
    if (d.state.arrAllMorningHabits.isEmpty())
        return;
    d.state.isHabitAlreadyShowed = true;
    d.host.showMainWindow();
    d.host.showAllMorningHabits();
    d.preferences.setValue(keys::kUserdefaultsLastHabitShowDate, d.clock.now());
    d.sync.writeMorningRoutineDate();
    d.host.showExtraWindows();
}

bool DaySchedule::wasEveningShownToday() const
{
    const auto date = d.sync.getEveningRoutineDate();
    return date && isSameDayOrLater(*date, d.clock.now().date());
}

void DaySchedule::showMainWindowIfHidden()
{
    if (!d.host.isMainWindowVisible())
        d.host.showMainWindow();
}

// Shows an evening stage unless its marker says it was shown for this night.
// Answers true when the stage went up, which ends this pass of the chain.
bool DaySchedule::showStageIfDue(const QString& tillKey, void (GateHost::*show)(), const char* skippedLine)
{
    const auto till = d.preferences.date(tillKey);
    if (till && !(d.clock.now() > *till)) {
        d.log.addLog(QString::fromUtf8(skippedLine));
        return false;
    }
    if (till)
        d.preferences.remove(tillKey);
    showMainWindowIfHidden();
    d.host.showExtraWindows();
    (d.host.*show)();
    return true;
}

void DaySchedule::shutOffMac()
{
    d.state.isHabitAlreadyShowed = false;
    d.log.addLog(QStringLiteral("Initiating shut off process."));
    if (d.state.currentState == CURRENTSTATE::_FOCUS_SUMMARY_) {
        d.log.addLog(QStringLiteral("current state is :- focus summary"));
        return;
    }
    if (d.state.currentState == CURRENTSTATE::_ABORT_) {
        const auto till = d.preferences.date(keys::kUserdefaultsEveningHabitsShowedTillDate);
        if (till && !(d.clock.now() > *till))
            return;
    }
    if (d.state.currentState == CURRENTSTATE::_EVENING_HABIT_) {
        d.log.addLog(QStringLiteral("current state is :- evening habits"));
        return;
    }
    d.host.abortAllProcess();
    if (d.host.isFocusModeOn())
        d.host.focusModeFinishedFromShutOff();

    const bool eveningDoneToday = wasEveningShownToday();
    if (showStageIfDue(keys::kUserdefaultsFocusSummaryShowedTillDate, &GateHost::showFocusSummaryView,
                       "Focus Summary already shown for today - skipping."))
        return;
    if (!eveningDoneToday && !d.state.arrAllEveningHabits.isEmpty() &&
        showStageIfDue(keys::kUserdefaultsEveningHabitsShowedTillDate, &GateHost::showAllEveningHabits,
                       "Evening habits already shown for today - skipping."))
        return;
    showMainWindowIfHidden();
    d.host.showShutOffScreen();
    d.host.showExtraWindows();
}

void DaySchedule::logBadTimesOnce(const QString& line) const
{
    const std::pair times{d.state.startTime.value_or(Time{}), d.state.shutOffTime.value_or(Time{})};
    if (m_badTimesLogged == times)
        return;
    m_badTimesLogged = times;
    d.log.addLog(line);
}

void DaySchedule::tick()
{
    if (d.state.isAppEnable)
        d.host.checkIsMeetingsGoingOn();
    if (!d.state.startTime || !d.state.shutOffTime)
        return;
    const auto start = todayStartInstant();
    const auto shutOff = todayShutOffInstant();
    if (!start || !shutOff) {
        logBadTimesOnce(QStringLiteral("Start or shut-off time is not a time of day; the schedule is idle."));
        return;
    }
    m_badTimesLogged.reset();

    const QDateTime now = d.clock.now();
    const QDateTime warning = shutOff->addSecs(-300);
    if (now < warning && now > warning.addSecs(-5)) {
        d.notifier.notify(
            d.texts.text("common", "shutdownNotificationTitle",
                         QStringLiteral("It's time to wrap up for the day. Your shutdown time is "
                                        "in 5 minutes.")));
    }

    if (isShutOffTimeGoing()) {
        const auto aborted = d.preferences.date(keys::kUserdefaultsShutdownAborted);
        if (aborted) {
            if (now > *aborted)
                d.preferences.remove(keys::kUserdefaultsShutdownAborted);
        } else if (d.state.currentState != CURRENTSTATE::_SHUTOFFMAC_) {
            shutOffMac();
        }
        return;
    }
    if (!d.state.isAppEnable)
        return;
    if (d.state.isHabitAlreadyShowed) {
        if (const auto last = d.preferences.date(keys::kUserdefaultsLastHabitShowDate))
            checkLastHabitShowDate(*last);
        return;
    }
    if (now < *start) {
        qDebug() << "First Date is smaller then second date. all ok ";
        return;
    }
    d.host.abortAllProcess();
    startHabitsCall();
}

} // namespace velmora
