#include "FocusSession.h"

#include "Clock.h"
#include "DebugLog.h"
#include "FocusHost.h"
#include "FocusTypes.h"
#include "PreferenceKeys.h"
#include "Preferences.h"
#include "RecordFormats.h"
#include "RunState.h"
#include "UsageLog.h"

#include <QLocale>

namespace velmora {

namespace {
const QString kFocusBlock = QStringLiteral("focus block");
const QString kIsOn = QStringLiteral("isOn");
} // namespace

FocusSession::FocusSession(FocusContext ctx, SessionScreens& screens, QObject* parent)
    : QObject(parent)
    , c(ctx)
    , m_screens(screens)
{
}

bool FocusSession::isFocusModeOn() const
{
    return focus::isFocusModeOn(c.state.arrFocusType);
}

bool FocusSession::isTimerRunning() const
{
    return timerForFocusMode && c.scheduler.isActive(*timerForFocusMode);
}

QColor FocusSession::colorFromString(const QString& text)
{
    QString digits = text.trimmed();
    while (digits.startsWith(u'#'))
        digits.remove(0, 1);
    if (digits.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
        digits.remove(0, 2);
    // The leading run of hexadecimal digits counts, as a scanner reads it.
    int end = 0;
    while (end < digits.size() && end < 8 &&
           (digits.at(end).isDigit() || QStringLiteral("abcdefABCDEF").contains(digits.at(end))))
        ++end;
    bool ok = false;
    const uint value = digits.left(end).toUInt(&ok, 16);
    if (!ok)
        return QColor(Qt::black);
    return QColor((value >> 16) & 0xFF, (value >> 8) & 0xFF, value & 0xFF);
}

bool FocusSession::showRunningTypeLook()
{
    bool shown = false;
    for (const QVariant& item : std::as_const(c.state.arrFocusType)) {
        const QVariantMap type = item.toMap();
        if (type.value(kIsOn).toBool()) {
            c.host.setFocusLook(colorFromString(type.value(QStringLiteral("color")).toString()));
            shown = true;
        }
    }
    return shown;
}

void FocusSession::start(int index, std::optional<int> minutes, const QString& intention, Origin origin)
{
    if (index < 0 || index >= c.state.arrFocusType.size()) {
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

    for (int i = 0; i < c.state.arrFocusType.size(); ++i) {
        QVariantMap type = c.state.arrFocusType[i].toMap();
        if (i == index)
            type.insert(kIsOn, true);
        else if (origin == Origin::Pomodoro)
            type.insert(kIsOn, false);
        else
            continue;
        c.state.arrFocusType[i] = type;
    }
    if (origin != Origin::Pomodoro)
        c.host.focusPreferencesFollowBlock();
    const QVariantMap type = c.state.arrFocusType.at(index).toMap();
    c.host.setFocusLook(colorFromString(type.value(QStringLiteral("color")).toString()));

    stopTimer();
    isFocusTimeType = FocusModeTimeType::Timed;
    if (minutes)
        setFocusModeTimer(std::nullopt, *minutes);
    else
        focusModeMinutesToPerform = 0;
    isFocusModeStartedFromPomodoroMode = origin == Origin::Pomodoro;
    focusModeStartted();
    writeList();
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
    QString name;
    for (QVariant& item : c.state.arrFocusType) {
        QVariantMap type = item.toMap();
        if (!type.value(kIsOn).toBool())
            continue;
        type.insert(kIsOn, false);
        name = type.value(QStringLiteral("name")).toString();
        item = type;
    }
    // The stored list keeps "isOn" until the next change; a launch clears it anyway.
    c.host.setPlainLook();
    isFocusTimeType = FocusModeTimeType::None;
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
    for (QVariant& item : c.state.arrFocusType) {
        QVariantMap type = item.toMap();
        type.insert(kIsOn, false);
        item = type;
    }
    c.host.setPlainLook();
    isFocusTimeType = FocusModeTimeType::None;
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

void FocusSession::writeList()
{
    c.preferences.setValue(keys::kUserdefaultsArrFocusTypes, c.state.arrFocusType);
}

} // namespace velmora
