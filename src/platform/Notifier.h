#pragma once

#include <QString>

namespace velmora {

class Notifier
{
public:
    virtual ~Notifier() = default;
    // A desktop notification with the default sound.
    virtual void notify(const QString& title, const QString& body = {}) = 0;
    // A named event sound of the program's own ("afterMorningRoutine", "everyActivity").
    virtual void playSound(const QString& name) = 0;
};

} // namespace velmora
