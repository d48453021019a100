#include "SingleInstance.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QThread>

namespace velmora {

SingleInstance::SingleInstance(QString name, QObject* parent)
    : QObject(parent)
    , m_name(std::move(name))
{
}

bool SingleInstance::claim(int waitMs)
{
    QElapsedTimer waited;
    waited.start();
    while (true) {
        QLocalSocket probe;
        probe.connectToServer(m_name);
        if (!probe.waitForConnected(500))
            break;
        probe.abort();
        if (waited.elapsed() >= waitMs)
            return false;
        // Events run meanwhile, so that an owner in this very process can go away too.
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        QThread::msleep(50);
    }
    // Nobody answers: whatever socket file is there was left by a crash.
    QLocalServer::removeServer(m_name);
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    return m_server->listen(m_name);
}

} // namespace velmora
