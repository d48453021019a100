#pragma once

#include "RunState.h"
#include "Scheduler.h"

#include <optional>
#include <QWidget>

class QLabel;
class QPushButton;
class QFrame;

namespace velmora {

class Clock;
class DaySchedule;
class DebugLog;
class MediaMonitor;
class Preferences;
class RoutineHost;
class SyncTimestamps;
class TextCatalogue;

// The content of the main lock window: the one place that says which screen of
// a routine stands in the lock and which run state the program is in. Everyone
// else only fires events at it.
class ViewController : public QWidget
{
    Q_OBJECT

public:
    struct Deps
    {
        RunState& state;
        Preferences& preferences;
        const Clock& clock;
        Scheduler& scheduler;
        const DebugLog& log;
        MediaMonitor& media;
        const TextCatalogue& texts;
        const SyncTimestamps& sync;
        DaySchedule& schedule;
        RoutineHost& host;
    };
    ViewController(Deps deps, QWidget* parent = nullptr);

    void showFirstTimeVc();
    void showAllMorningHabits();
    void showAllEveningHabits();
    void showFocusSummaryView();
    void shutOffMac();
    void unlockMachine();

    void setActivityTimer();
    void startBreakActivities();
    bool isBreakTimerPending() const;

    QPushButton* btnAbort = nullptr;
    QLabel* lblMessage = nullptr;
    QWidget* containerView = nullptr;
    QFrame* boxContainer = nullptr;

private:
    void showOverview(CURRENTSTATE state);
    void clearContainer();
    bool cancelBreakForReason();
    void buildBreakLists();

    Deps d;
    std::optional<TimerId> breakTimer;
};

} // namespace velmora
