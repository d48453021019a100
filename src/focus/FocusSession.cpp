#include "FocusSession.h"

#include "Clock.h"
#include "DayTimes.h"
#include "DebugLog.h"
#include "FocusHost.h"
#include "FocusTypeList.h"
#include "RecordFormats.h"
#include "RunState.h"
#include "UsageLog.h"

#include <QLocale>

namespace velmora {

namespace {
const QString kFocusBlock = QStringLiteral("focus block");
} // namespace

FocusSession::FocusSession(FocusContext ctx, SessionScreens& screens, QObject* parent)
    : QObject(parent)
    , c(ctx)
    , m_screens(screens)
{
}

bool FocusSession::isFocusModeOn() const
{
    return c.types.isFocusModeOn();
}

QStringList FocusSession::onFocusTypeNames() const
{
    QStringList names;
    for (int row = 0; row < c.types.count(); ++row) {
        if (c.types.isOn(row))
            names << c.types.name(row);
    }
    return names;
}

QStringList FocusSession::allowAppsPath() const
{
    return c.types.allowAppsPath();
}

bool FocusSession::isAllowedAllAppsInFocus() const
{
    return c.types.isAllowedAllAppsInFocus();
}

QStringList FocusSession::allowUrl() const
{
    return c.types.allowUrl();
}

bool FocusSession::isAllowedAllUrlsInFocus() const
{
    return c.types.isAllowedAllUrlsInFocus();
}

// A timed block ends at its chosen end; a meeting block has none. A block that
// runs until the shut-off (or whose time type was never set) ends at today's
// shut-off, to the minute.
std::optional<QDateTime> FocusSession::focusModeEndTime() const
{
    if (isFocusTimeType == FocusModeTimeType::Timed)
        return endFocusModeTime;
    if (!c.state.shutOffTime)
        return std::nullopt;
    return instantOn(c.clock.now().date(), Time{c.state.shutOffTime->hour, c.state.shutOffTime->minute, 0});
}

void FocusSession::fillAllowLists()
{
    c.types.fillAllowUrlArray();
    c.types.fillAllowAppArray();
}

bool FocusSession::isTimerRunning() const
{
    return timerForFocusMode && c.scheduler.isActive(*timerForFocusMode);
}

bool FocusSession::showRunningTypeLook()
{
    const int on = c.types.indexOfTypeOn();
    if (on >= 0)
        c.host.setFocusLook(c.types.color(on));
    return on >= 0;
}

void FocusSession::start(int index, std::optional<int> minutes, const QString& intention, Origin origin)
{
    if (!c.types.isValidRow(index)) {
        c.log.addLog(QStringLiteral("No focus type at index %1; the block was not started").arg(index));
        return;
    }
    if (const auto open = m_screens.openQuestions()) {
        writeUnansweredRow(*open);
        m_screens.closeQuestions();
    }
    const QDateTime now = c.clock.now();
    endFocusModeTime.reset();
    if (minutes)
        endFocusModeTime = now.addSecs(qint64(*minutes) * 60);
    startFocusModeTime = now;

    // Only one type is ever on; the list is written with it.
    c.types.setOn(index, true);
    if (origin != Origin::Pomodoro)
        c.host.focusPreferencesFollowBlock();
    c.host.setFocusLook(c.types.color(index));

    stopTimer();
    isFocusTimeType = FocusModeTimeType::Timed;
    if (minutes)
        setFocusModeTimer(std::nullopt, *minutes);
    else
        focusModeMinutesToPerform = 0;
    isFocusModeStartedFromPomodoroMode = origin == Origin::Pomodoro;
    focusModeStartted();
    whatToAchieveInFocusBlock = intention;
    if (origin == Origin::Pomodoro)
        c.host.focusPreferencesFollowBlock();
    if (origin != Origin::Pomodoro)
        m_screens.closeStartWindow();
    if (origin == Origin::Meeting)
        m_screens.closePomodoro();
}

void FocusSession::setFocusModeTimer(std::optional<int> hour, std::optional<int> minute)
{
    focusModeMinutesToPerform = minute.value_or(0);
    stopTimer();
    qint64 seconds = 3600;
    if (hour)
        seconds = qint64(*hour) * 3600;
    else if (minute)
        seconds = qint64(*minute) * 60;
    timerForFocusMode = c.scheduler.singleShot(seconds * 1000, this, [this] {
        timerForFocusMode.reset();
        focusModeTimerFinished();
    });
}

void FocusSession::focusModeStartted()
{
    isAutoMeetingsModeStarted = false;
    const QString until = endFocusModeTime
                              ? QLocale::c().toString(endFocusModeTime->time(), QStringLiteral("hh:mm AP"))
                              : QString();
    c.log.addLog(QStringLiteral("focus mode Started until - ") + until);
    fillAllowLists();
    c.host.armBlockers();
    m_screens.closePomodoro();
}

void FocusSession::focusModeTimerFinished()
{
    focusModeFinished(false);
    c.host.focusPreferencesFollowBlock();
}

void FocusSession::setActualDuration()
{
    focusModeActualDurationPerformed =
        startFocusModeTime ? int(startFocusModeTime->secsTo(c.clock.now())) : 0;
}

void FocusSession::stopTimer()
{
    if (timerForFocusMode)
        c.scheduler.cancel(*timerForFocusMode);
    timerForFocusMode.reset();
}

void FocusSession::focusModeFinished(bool fromShutOff)
{
    c.log.addLog(QStringLiteral("focus mode finished"));
    endFocusModeTime.reset();
    stopTimer();
    setActualDuration();
    const int on = c.types.indexOfTypeOn();
    const QString name = on >= 0 ? c.types.name(on) : QString();
    c.types.setAllOff();
    c.host.setPlainLook();
    isFocusTimeType = FocusModeTimeType::None;
    fillAllowLists();
    c.host.disarmBlockers();

    if (isAutoMeetingsModeStarted) {
        c.usage.addEntryInCsv(
            {.logType = kFocusBlock,
             .activity = name,
             .durationInSeconds = QString::number(focusModeActualDurationPerformed),
             .startTime = startTimeText(),
             .workAchieved = QStringLiteral("Meeting using {%1}").arg(appUsedInAutoMeetingFocusMode)});
        return;
    }
    if (!fromShutOff)
        m_screens.showQuestions(name);
    else
        c.usage.addEntryInCsv({.logType = kFocusBlock,
                               .activity = name,
                               .durationInSeconds = QString::number(focusModeActualDurationPerformed),
                               .startTime = startTimeText()});
    isAutoMeetingsModeStarted = false;
    appUsedInAutoMeetingFocusMode.clear();
}

void FocusSession::focusModeAborted()
{
    c.log.addLog(QStringLiteral("focus mode Aborted"));
    endFocusModeTime.reset();
    stopTimer();
    setActualDuration();
    c.types.setAllOff();
    c.host.setPlainLook();
    isFocusTimeType = FocusModeTimeType::None;
    fillAllowLists();
    c.host.disarmBlockers();
    isAutoMeetingsModeStarted = false;
    appUsedInAutoMeetingFocusMode.clear();
}

QString FocusSession::startTimeText() const
{
    return formatRecordDate(startFocusModeTime.value_or(c.clock.now()));
}

void FocusSession::writeUnansweredRow(const QString& focusName)
{
    c.usage.addEntryInCsv(
        {.logType = kFocusBlock,
         .activity = focusName,
         .durationInSeconds = QString::number(focusModeActualDurationPerformed),
         .startTime = startTimeText(),
         .workAchieved = QStringLiteral("%1 of %2").arg(focusModeMinutesToPerform).arg(focusName)});
}

void FocusSession::writeAnsweredRow(const QString& focusName, const QString& achieved,
                                    const QString& distractions)
{
    c.usage.addEntryInCsv({.logType = kFocusBlock,
                           .activity = focusName,
                           .durationInSeconds = QString::number(focusModeActualDurationPerformed),
                           .startTime = startTimeText(),
                           .workAchieved = achieved,
                           .distractionsEncountered = distractions});
}

void FocusSession::writeAbortRow(const QString& focusName, const QString& reason, const QString& workAchieved)
{
    c.usage.addEntryInCsv({.logType = QStringLiteral("focus mode abort"),
                           .activity = QStringLiteral("focus block - ") + focusName,
                           .durationInSeconds = QString::number(focusModeActualDurationPerformed),
                           .startTime = startTimeText(),
                           .workAchieved = workAchieved,
                           .abortReason = reason});
}

} // namespace velmora
