#pragma once

#include <QObject>
#include <QString>

class QLocalServer;

namespace velmora {

// One program per user: a second start (from the login service, the autostart
// entry or by hand) finds the first one listening and ends at once.
class SingleInstance : public QObject
{
    Q_OBJECT
public:
    explicit SingleInstance(QString name, QObject* parent = nullptr);
    // Answers false when another instance already runs. A restarted program waits up
    // to WAITMS for the one it replaces to let go of the name; a second start by hand
    // passes 0 and ends at once.
    bool claim(int waitMs = 0);

private:
    QString m_name;
    QLocalServer* m_server = nullptr;
};

} // namespace velmora
