#include "CrashLog.h"

#include <csignal>
#include <cstring>
#include <execinfo.h>
#include <fcntl.h>
#include <unistd.h>

namespace velmora {

namespace {
// Prepared before any crash: a signal handler may not allocate.
char g_path[4096];

void writeText(int fd, const char* text)
{
    if (::write(fd, text, std::strlen(text)) < 0)
        return;
}

void onFatalSignal(int signal)
{
    const int fd = ::open(g_path, O_WRONLY | O_APPEND | O_CREAT, 0644);
    if (fd >= 0) {
        writeText(fd, "crash: fatal signal ");
        char number[8];
        int n = signal, i = sizeof number - 1;
        number[i] = '\0';
        do {
            number[--i] = char('0' + n % 10);
            n /= 10;
        } while (n > 0 && i > 0);
        writeText(fd, number + i);
        writeText(fd, ", backtrace follows\n");
        void* frames[64];
        ::backtrace_symbols_fd(frames, ::backtrace(frames, 64), fd);
        ::close(fd);
    }
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}
} // namespace

void installCrashLog(const QString& debugLogPath)
{
    const QByteArray path = debugLogPath.toLocal8Bit();
    if (path.isEmpty() || size_t(path.size()) >= sizeof g_path)
        return;
    std::memcpy(g_path, path.constData(), size_t(path.size()) + 1);
    void* warmUp[1];
    ::backtrace(warmUp, 1); // loads the unwinder now, not inside the handler
    for (const int signal : {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL})
        std::signal(signal, onFatalSignal);
}

} // namespace velmora
