#pragma once

#include <QObject>

#include <functional>

class QSocketNotifier;

namespace velmora {

// TERM, INT and HUP end the event loop instead of the process, so that a stop by
// the session or the service manager leaves as the program's own quit does: the
// preferences written out, every window let go. Without this, a value set in the
// last moments before a logout was lost. One per process.
class QuitOnSignals : public QObject
{
public:
    // `received` is called in the event loop with the signal's number.
    explicit QuitOnSignals(std::function<void(int signal)> received);
    ~QuitOnSignals() override;

private:
    void readSignal();

    std::function<void(int)> m_received;
    QSocketNotifier* m_notifier = nullptr;
};

} // namespace velmora
