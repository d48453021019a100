#include "SingleInstance.h"

#include <QLocalServer>
#include <QLocalSocket>

namespace velmora {

SingleInstance::SingleInstance(QString name, QObject* parent)
    : QObject(parent)
    , m_name(std::move(name))
{
}

bool SingleInstance::claim()
{
    QLocalSocket probe;
    probe.connectToServer(m_name);
    if (probe.waitForConnected(500))
        return false;
    // Nobody answers: whatever socket file is there was left by a crash.
    QLocalServer::removeServer(m_name);
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    return m_server->listen(m_name);
}

} // namespace velmora
