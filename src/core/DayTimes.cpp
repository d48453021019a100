#include "DayTimes.h"

namespace velmora {

std::optional<QDateTime> instantOn(const QDate& day, const Time& time)
{
    const QTime t(time.hour, time.minute, time.second);
    if (!day.isValid() || !t.isValid())
        return std::nullopt;
    QDateTime instant(day, t);
    if (!instant.isValid()) {
        // A time that the clocks skip over (the spring change) counts from the
        // first instant after the gap.
        instant = QDateTime(day, t.addSecs(3600));
        if (!instant.isValid())
            return std::nullopt;
    }
    return instant;
}

bool isSameDayOrLater(const QDateTime& date, const QDate& today)
{
    return date.toLocalTime().date() >= today;
}

} // namespace velmora
