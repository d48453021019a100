#pragma once

#include <QString>

namespace velmora {

// Keeps the display on while an item's timer runs.
class DisplayAwake
{
public:
    virtual ~DisplayAwake() = default;
    // Taking it twice holds one assertion; releasing without holding is harmless.
    virtual void take(const QString& reason) = 0;
    virtual void release() = 0;
    virtual bool isHeld() const = 0;
};

} // namespace velmora
