#include "CountDown.h"

#include "DurationTexts.h"

namespace velmora {

CountDown::CountDown(Scheduler& scheduler, QObject* context)
    : m_scheduler(scheduler)
    , m_context(context)
{
}

CountDown::~CountDown()
{
    stop();
}

void CountDown::start(int seconds, std::function<void(const QString&)> show, std::function<void()> finished)
{
    stop();
    m_show = std::move(show);
    m_finished = std::move(finished);
    currentTimer = 0;
    totalDuration = seconds;
    if (m_show)
        m_show(clockText(totalDuration - currentTimer));
    timer = m_scheduler.repeating(1000, m_context, [this] { tick(); });
}

void CountDown::stop()
{
    if (timer)
        m_scheduler.cancel(*timer);
    timer.reset();
    if (m_ending)
        m_scheduler.cancel(*m_ending);
    m_ending.reset();
}

bool CountDown::isRunning() const
{
    return (timer && m_scheduler.isActive(*timer)) || (m_ending && m_scheduler.isActive(*m_ending));
}

void CountDown::tick()
{
    ++currentTimer;
    if (m_show)
        m_show(clockText(totalDuration - currentTimer));
    if (currentTimer < totalDuration)
        return;
    m_scheduler.cancel(*timer);
    timer.reset();
    m_ending = m_scheduler.post(m_context, [this] {
        m_ending.reset();
        if (m_finished)
            m_finished();
    });
}

} // namespace velmora
