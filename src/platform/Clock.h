#pragma once

#include <QDateTime>

namespace velmora {

// The one source of "now". Logic never reads the system clock itself, so that a
// test can run a whole day in milliseconds.
class Clock
{
public:
    virtual ~Clock() = default;
    virtual QDateTime now() const = 0;
};

} // namespace velmora
