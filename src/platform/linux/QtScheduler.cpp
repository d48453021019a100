#include "QtScheduler.h"

#include <algorithm>
#include <limits>
#include <QTimer>

namespace velmora {

QtScheduler::QtScheduler(QObject* parent)
    : QObject(parent)
{
}

QtScheduler::~QtScheduler()
{
    for (Entry& entry : m_entries)
        discard(entry);
}

TimerId QtScheduler::singleShot(qint64 ms, QObject* context, std::function<void()> callback)
{
    return start(ms, false, context, std::move(callback));
}

TimerId QtScheduler::repeating(qint64 ms, QObject* context, std::function<void()> callback)
{
    return start(ms, true, context, std::move(callback));
}

TimerId QtScheduler::start(qint64 ms, bool repeat, QObject* context, std::function<void()> callback)
{
    const TimerId id = m_nextId++;
    Entry entry;
    entry.timer = new QTimer(this);
    // Coarse timers may be 5 % late: three minutes on an hour. Everything here is
    // shown to the user as a countdown or a time of day, so all timers are precise.
    entry.timer->setTimerType(Qt::PreciseTimer);
    entry.timer->setSingleShot(!repeat);
    entry.timer->setInterval(int(std::clamp<qint64>(ms, 0, std::numeric_limits<int>::max())));
    entry.context = context;
    entry.hasContext = context != nullptr;
    entry.callback = std::move(callback);
    if (context)
        entry.contextGone = connect(context, &QObject::destroyed, this, [this, id] { cancel(id); });
    connect(entry.timer, &QTimer::timeout, this, [this, id] { fire(id); });
    entry.timer->start();
    m_entries.insert(id, std::move(entry));
    return id;
}

void QtScheduler::fire(TimerId id)
{
    const auto it = m_entries.find(id);
    if (it == m_entries.end())
        return;
    if (it->hasContext && !it->context) {
        discard(*it);
        m_entries.erase(it);
        return;
    }
    // The callback may cancel this timer, start others or re-enter the scheduler,
    // so it runs from a copy after the bookkeeping is done.
    std::function<void()> callback;
    if (it->timer->isSingleShot()) {
        callback = std::move(it->callback);
        discard(*it);
        m_entries.erase(it);
    } else {
        callback = it->callback;
    }
    if (callback)
        callback();
}

void QtScheduler::cancel(TimerId id)
{
    const auto it = m_entries.find(id);
    if (it == m_entries.end())
        return;
    discard(*it);
    m_entries.erase(it);
}

bool QtScheduler::isActive(TimerId id) const
{
    return m_entries.contains(id);
}

void QtScheduler::discard(Entry& entry)
{
    disconnect(entry.contextGone);
    entry.timer->stop();
    // Deleting later: this may run inside the timer's own timeout signal.
    entry.timer->deleteLater();
    entry.timer = nullptr;
}

} // namespace velmora
