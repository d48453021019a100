#pragma once

#include <QString>

namespace velmora {

// On a fatal signal, appends the signal and a backtrace to the debug log, then
// lets the process die as it would have. Nothing is sent anywhere.
void installCrashLog(const QString& debugLogPath);

} // namespace velmora
