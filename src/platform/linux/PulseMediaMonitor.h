#pragma once

#include "MediaMonitor.h"

#include <optional>
#include <QByteArray>
#include <QElapsedTimer>

class QDeadlineTimer;
struct pa_context;
struct pa_mainloop;

namespace velmora {

// The microphone through the PulseAudio protocol (PulseAudio itself or PipeWire's
// pulse server), cameras through the process table, inhibitors over D-Bus.
// Every question is answered synchronously within about a second; whatever cannot
// be asked answers "no".
class PulseMediaMonitor : public MediaMonitor
{
public:
    // procRoot is where the process table is read from.
    explicit PulseMediaMonitor(const QString& procRoot = QStringLiteral("/proc"));
    ~PulseMediaMonitor() override;
    PulseMediaMonitor(const PulseMediaMonitor&) = delete;
    PulseMediaMonitor& operator=(const PulseMediaMonitor&) = delete;

    bool isMicOn() override;
    bool isACameraOn() override;
    std::optional<QStringList> displaySleepInhibitors() override;

private:
    bool connectToServer(const QDeadlineTimer& deadline);
    void disconnectFromServer();
    bool iterate(const QDeadlineTimer& deadline);
    // Empty when the connection failed on the way.
    std::optional<bool> askForRecordingStream(const QDeadlineTimer& deadline);

    QByteArray m_procRoot;
    pa_mainloop* m_loop = nullptr;
    pa_context* m_context = nullptr;
    // Started when the server let a call run into its time limit.
    QElapsedTimer m_sinceServerTimedOut;
};

} // namespace velmora
