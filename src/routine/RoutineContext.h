#pragma once

class QRandomGenerator;

namespace velmora {

class Clock;
class DaySchedule;
class DebugLog;
class DisplayAwake;
class MediaMonitor;
class Notifier;
class Preferences;
class RoutineHost;
class Scheduler;
class SyncTimestamps;
class TextCatalogue;
class UsageLog;
struct RunState;

// Everything the routine screens share. One per application object.
struct RoutineContext
{
    RunState& state;
    Preferences& preferences;
    const Clock& clock;
    Scheduler& scheduler;
    const DebugLog& log;
    const UsageLog& usage;
    const TextCatalogue& texts;
    Notifier& notifier;
    DisplayAwake& displayAwake;
    MediaMonitor& media;
    const SyncTimestamps& sync;
    DaySchedule& schedule;
    RoutineHost& host;
    // Every draw of the routine (a video, an activity, the quiz) comes from here,
    // so that a test can seed it.
    QRandomGenerator& random;
};

} // namespace velmora
