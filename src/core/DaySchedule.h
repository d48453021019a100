#pragma once

#include "SettingsRecords.h"

#include <optional>
#include <QDateTime>
#include <utility>

namespace velmora {

class Clock;
class DebugLog;
class GateHost;
class MediaMonitor;
class Notifier;
class Preferences;
class SyncTimestamps;
class TextCatalogue;
struct RunState;

// The two gates of the day and the tick that opens them. At the start time the
// morning routine must pass once; at the shut-off time the focus summary, the
// evening routine and the lock must pass, in that order, once. Each gate holds
// against restarts, sleep, a second machine, calls and days that end after
// midnight.
class DaySchedule
{
public:
    struct Deps
    {
        RunState& state;
        Preferences& preferences;
        const Clock& clock;
        const DebugLog& log;
        MediaMonitor& media;
        Notifier& notifier;
        const TextCatalogue& texts;
        const SyncTimestamps& sync;
        GateHost& host;
    };
    explicit DaySchedule(Deps deps);

    // Every five seconds.
    void tick();

    void checkLastHabitShowDate(const QDateTime& lastHabitShowDate);
    bool isShutOffTimeGoing() const;
    void startHabitsCall();
    void shutOffMac();

    // A known meeting program keeps the display awake.
    bool isPreventUserIdleDisplaySleepOn();

    std::optional<QDateTime> todayStartInstant() const;
    std::optional<QDateTime> todayShutOffInstant() const;
    // Until when an evening stage shown now counts as shown: tomorrow's start
    // after the shut-off, today's start before it, nothing in the day between.
    std::optional<QDateTime> showedTillDate() const;

private:
    bool wasEveningShownToday() const;
    bool showStageIfDue(const QString& tillKey, void (GateHost::*show)(), const char* skippedLine);
    bool cancelMorningForCall();
    void showMainWindowIfHidden();
    // Writes LINE once for each pair of start and shut-off times the calendar rejects,
    // rather than at every tick of the day.
    void logBadTimesOnce(const QString& line) const;

    Deps d;
    mutable std::optional<std::pair<Time, Time>> m_badTimesLogged;
};

} // namespace velmora
