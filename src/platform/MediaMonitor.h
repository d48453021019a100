#pragma once

#include <optional>
#include <QString>
#include <QStringList>

namespace velmora {

// What the machine's microphone, cameras and power inhibitors are doing.
class MediaMonitor
{
public:
    virtual ~MediaMonitor() = default;

    // A recording stream of another program is open on a real (non-monitor) source.
    virtual bool isMicOn() = 0;
    // Another program holds a video capture device open.
    virtual bool isACameraOn() = 0;
    // Application names of everything that now keeps the display from sleeping;
    // nothing when no power manager answered.
    virtual std::optional<QStringList> displaySleepInhibitors() = 0;
};

} // namespace velmora
