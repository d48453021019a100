#pragma once

#include "Clock.h"

namespace velmora {

class SystemClock : public Clock
{
public:
    QDateTime now() const override;
};

} // namespace velmora
