#include "QuitOnSignals.h"

#include <QDebug>
#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace velmora {

namespace {
constexpr int kSignals[] = {SIGTERM, SIGINT, SIGHUP};
// A signal handler may only write to a descriptor; the event loop reads the other end.
int g_pipe[2] = {-1, -1};

void onSignal(int signal)
{
    const unsigned char number = static_cast<unsigned char>(signal);
    if (::write(g_pipe[0], &number, 1) < 0)
        return; // a full pipe already holds a signal to act on
}
} // namespace

QuitOnSignals::QuitOnSignals(std::function<void(int)> received)
    : m_received(std::move(received))
{
    if (g_pipe[0] >= 0 || ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, g_pipe) != 0) {
        qWarning() << "QuitOnSignals: no signal pipe; TERM ends the program at once";
        return;
    }
    m_notifier = new QSocketNotifier(g_pipe[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &QuitOnSignals::readSignal);
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int signal : kSignals)
        ::sigaction(signal, &action, nullptr);
}

QuitOnSignals::~QuitOnSignals()
{
    if (!m_notifier)
        return;
    for (const int signal : kSignals)
        std::signal(signal, SIG_DFL);
    ::close(g_pipe[0]);
    ::close(g_pipe[1]);
    g_pipe[0] = g_pipe[1] = -1;
}

void QuitOnSignals::readSignal()
{
    unsigned char number = 0;
    while (::read(g_pipe[1], &number, 1) == 1)
        m_received(number);
}

} // namespace velmora
