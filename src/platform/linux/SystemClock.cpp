#include "SystemClock.h"

namespace velmora {

QDateTime SystemClock::now() const
{
    return QDateTime::currentDateTime();
}

} // namespace velmora
