#pragma once

#include <QString>
#include <QStringList>

namespace velmora {

class Launcher
{
public:
    virtual ~Launcher() = default;
    // Arranges for the program to be started anew about one second after this
    // process has ended. The caller then quits.
    virtual void restartSoon() = 0;
    // Runs a command and does not wait for it.
    virtual void run(const QString& program, const QStringList& arguments) = 0;
};

} // namespace velmora
