#pragma once

#include "Scheduler.h"

#include <functional>
#include <optional>
#include <QString>

class QObject;

namespace velmora {

// The one-second count of the way-out screens. Each tick shows what remains
// as MM:SS; after the tick that shows "00:00" the end runs in a later turn,
// once the tick has unwound.
class CountDown
{
public:
    CountDown(Scheduler& scheduler, QObject* context);
    ~CountDown();
    CountDown(const CountDown&) = delete;
    CountDown& operator=(const CountDown&) = delete;

    void start(int seconds, std::function<void(const QString&)> show, std::function<void()> finished);
    void stop();
    bool isRunning() const;

    int currentTimer = 0;
    int totalDuration = 0;

private:
    void tick();

    Scheduler& m_scheduler;
    QObject* m_context;
    std::optional<TimerId> timer;
    std::optional<TimerId> m_ending;
    std::function<void(const QString&)> m_show;
    std::function<void()> m_finished;
};

} // namespace velmora
