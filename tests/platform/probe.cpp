// Prints what the media monitor sees right now:
//   mic=<0|1> camera=<0|1> inhibitors=<comma-separated application names>
#include "PulseMediaMonitor.h"

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    velmora::PulseMediaMonitor monitor;
    const bool mic = monitor.isMicOn();
    const bool camera = monitor.isACameraOn();
    const QStringList inhibitors =
        monitor.displaySleepInhibitors().value_or(QStringList{QStringLiteral("(none answered)")});
    QTextStream(stdout) << "mic=" << int(mic) << " camera=" << int(camera)
                        << " inhibitors=" << inhibitors.join(u',') << Qt::endl;
    return 0;
}
