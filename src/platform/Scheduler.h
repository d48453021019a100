#pragma once

#include <functional>
#include <QObject>

namespace velmora {

using TimerId = quint64;

// Every timer of the program. A callback never runs after its context object is
// destroyed, and a cancelled timer never runs again. All callbacks run on the
// main thread; there are no timer threads.
class Scheduler
{
public:
    virtual ~Scheduler() = default;

    virtual TimerId singleShot(qint64 ms, QObject* context, std::function<void()> callback) = 0;
    virtual TimerId repeating(qint64 ms, QObject* context, std::function<void()> callback) = 0;
    virtual void cancel(TimerId id) = 0;
    virtual bool isActive(TimerId id) const = 0;

    // Runs the callback on the next turn of the event loop.
    TimerId post(QObject* context, std::function<void()> callback)
    {
        return singleShot(0, context, std::move(callback));
    }
};

} // namespace velmora
