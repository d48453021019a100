#pragma once

#include "FocusBlockHost.h"
#include "Scheduler.h"

#include <optional>
#include <QColor>
#include <QDateTime>
#include <QObject>
#include <QString>

namespace velmora {

class Clock;
class DebugLog;
class FocusHost;
class FocusTypeList;
class Preferences;
class TextCatalogue;
class UsageLog;
struct RunState;

// What a block needs from the focus windows.
class SessionScreens
{
public:
    virtual ~SessionScreens() = default;
    // The type name of the finished block whose questions are still open.
    virtual std::optional<QString> openQuestions() const = 0;
    virtual void closeQuestions() = 0;
    virtual void showQuestions(const QString& focusName) = 0;
    virtual void closePomodoro() = 0;
    virtual void closeStartWindow() = 0;
};

struct FocusContext
{
    RunState& state;
    FocusTypeList& types;
    Preferences& preferences;
    const Clock& clock;
    Scheduler& scheduler;
    const DebugLog& log;
    const UsageLog& usage;
    const TextCatalogue& texts;
    FocusHost& host;
};

// How long a block runs: the time type of the running block.
enum class FocusModeTimeType : quint8
{
    Timed = 0,
    UntilShutOff = 1, // read where the block's end is shown; nothing starts one
    None = 2,
};

// One focus block at a time: its start, its timer and its three ends (the time
// runs out, the user aborts, the shut-off cuts it). The running type is the one
// whose "isOn" is true in the type list; this class keeps the rest of the
// block's state, and tells the blockers what the block allows and when it ends.
class FocusSession : public QObject, public FocusBlockHost
{
    Q_OBJECT
public:
    enum class Origin
    {
        Dialog,
        Pomodoro,
        Meeting
    };

    FocusSession(FocusContext ctx, SessionScreens& screens, QObject* parent = nullptr);

    // The common start of a block of the type at `index`. A meeting block has no
    // minutes and no end time.
    void start(int index, std::optional<int> minutes, const QString& intention, Origin origin);

    void setFocusModeTimer(std::optional<int> hour, std::optional<int> minute);
    void focusModeTimerFinished();
    void focusModeFinished(bool fromShutOff);
    void focusModeAborted();

    // The row of a block whose questions were left open when the next started.
    void writeUnansweredRow(const QString& focusName);
    // The row written by the questions' button.
    void writeAnsweredRow(const QString& focusName, const QString& achieved, const QString& distractions);
    // The row of an abort, with the reason's fixed text.
    void writeAbortRow(const QString& focusName, const QString& reason, const QString& workAchieved);

    // FocusBlockHost
    bool isFocusModeOn() const override;
    QStringList onFocusTypeNames() const override;
    QStringList allowAppsPath() const override;
    bool isAllowedAllAppsInFocus() const override;
    QStringList allowUrl() const override;
    bool isAllowedAllUrlsInFocus() const override;
    std::optional<QDateTime> focusModeEndTime() const override;

    // The tray icon shows the type that is on, if any.
    bool showRunningTypeLook();

    FocusModeTimeType isFocusTimeType = FocusModeTimeType::None;
    std::optional<QDateTime> endFocusModeTime;
    std::optional<QDateTime> startFocusModeTime;
    int focusModeMinutesToPerform = 0;
    int focusModeActualDurationPerformed = 0;
    QString whatToAchieveInFocusBlock;
    bool isFocusModeStartedFromPomodoroMode = false;
    bool isAutoMeetingsModeStarted = false;
    // The desktop entry's file name of the meeting program found, "zoom.desktop".
    QString appUsedInAutoMeetingFocusMode;

    bool isTimerRunning() const;

private:
    void focusModeStartted();
    // The type that is on is copied into the blockers' lists, or none is.
    void fillAllowLists();
    void setActualDuration();
    void stopTimer();
    QString startTimeText() const;

    FocusContext c;
    SessionScreens& m_screens;
    std::optional<TimerId> timerForFocusMode;
};

} // namespace velmora
