// velmora-browser-host: the native-messaging host of the Velmora extension.
//
// The browser starts one per connection of the extension and talks to it over
// standard input and output. The host relays every frame between the browser and
// the running program's socket in $XDG_RUNTIME_DIR/velmora/, after telling the
// program which browser it serves. Standard output carries frames and nothing
// else; what goes wrong is written to standard error, which the browser keeps in
// its log, and told to the program. It ends when either side closes.
#include "NativeFrames.h"

#include <QByteArray>
#include <QFileInfo>
#include <QJsonObject>
#include <QRegularExpression>
#include <QString>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <pwd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace velmora;

namespace {

void complain(const QString& text)
{
    std::fprintf(stderr, "velmora-browser-host: %s\n", text.toLocal8Bit().constData());
}

QString socketPath()
{
    QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    if (runtime.isEmpty()) {
        const passwd* user = getpwuid(getuid());
        runtime = QByteArray("/tmp/runtime-") + (user ? user->pw_name : "unknown");
    }
    return QString::fromLocal8Bit(runtime) + QStringLiteral("/velmora/browser.sock");
}

// The browser that started us is our parent; its program tells which one it is.
QString browserFamily(const QString& executable)
{
    const QString path = executable.toLower();
    static const std::pair<const char*, const char*> markers[] = {
        {"firefox", "firefox"}, {"brave", "brave"},       {"msedge", "edge"},          {"edge", "edge"},
        {"vivaldi", "vivaldi"}, {"chromium", "chromium"}, {"chrome", "google-chrome"},
    };
    for (const auto& [marker, family] : markers) {
        if (path.contains(QLatin1StringView(marker)))
            return QLatin1StringView(family);
    }
    // Any other browser (LibreWolf, Opera, a build of its own) by its program's name.
    QString name = QFileInfo(path).fileName();
    name.remove(QRegularExpression(QStringLiteral("[^a-z0-9._-]")));
    return name.left(40);
}

bool writeAll(int fd, const QByteArray& bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t n =
            fd == STDOUT_FILENO
                ? ::write(fd, bytes.constData() + done, size_t(bytes.size() - done))
                : ::send(fd, bytes.constData() + done, size_t(bytes.size() - done), MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += n;
    }
    return true;
}

int connectToProgram(const QString& path)
{
    const QByteArray name = path.toLocal8Bit();
    sockaddr_un address{};
    if (name.size() >= qsizetype(sizeof address.sun_path))
        return -1;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, name.constData(), size_t(name.size()));
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return -1;
    if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

// Tells the program about a refused frame, so that its debug log has it too.
void reportRefusal(int program, const QString& reason)
{
    complain(reason);
    writeAll(program, frames::encode(QJsonObject{{QStringLiteral("kind"), QStringLiteral("refused")},
                                                 {QStringLiteral("reason"), reason}}));
}

enum class Flow
{
    Go,
    Stop
};

// Relays every whole frame the reader holds to `target`, as long as it is a JSON
// object; a frame over the reader's limit is skipped and reported.
Flow relay(frames::FrameReader& reader, int program, int target, const QString& oversized,
           const QString& notJson)
{
    QByteArray frame;
    while (true) {
        switch (reader.next(&frame)) {
        case frames::FrameReader::Status::NeedMore:
            return Flow::Go;
        case frames::FrameReader::Status::Oversized:
            // Skipped; the browser's later frames are relayed as usual.
            reportRefusal(program, oversized);
            break;
        case frames::FrameReader::Status::Frame:
            if (!frames::parse(frame)) {
                reportRefusal(program, notJson);
                break;
            }
            if (!writeAll(target, frames::encode(frame)))
                return Flow::Stop;
            break;
        }
    }
}

// Browser → program: whole JSON objects only.
Flow relayFromBrowser(frames::FrameReader& reader, int program)
{
    return relay(reader, program, program,
                 QStringLiteral("a frame from the browser is over the size limit; skipped"),
                 QStringLiteral("a frame from the browser is not a JSON object"));
}

// Program → browser: at most 1 MB a frame, as browsers require.
Flow relayFromProgram(frames::FrameReader& reader, int program)
{
    return relay(reader, program, STDOUT_FILENO,
                 QStringLiteral("a frame for the browser is over 1 MB; skipped"),
                 QStringLiteral("a frame for the browser is not a JSON object"));
}

} // namespace

int main(int argc, char** argv)
{
    std::signal(SIGPIPE, SIG_IGN);
    // The browser's process, by which the program knows its windows.
    const pid_t browser = getppid();
    const QString parent = QFileInfo(QStringLiteral("/proc/%1/exe").arg(browser)).canonicalFilePath();
    // Chromium-family browsers pass the calling extension's origin, Firefox the
    // manifest's path and the extension's id.
    QString family = browserFamily(parent);
    if (family.isEmpty())
        family = argc > 1 && QByteArray(argv[1]).startsWith("chrome-extension://")
                     ? QStringLiteral("chromium")
                     : QStringLiteral("firefox");

    const QString path = socketPath();
    const int program = connectToProgram(path);
    if (program < 0) {
        complain(QStringLiteral("Velmora is not running (no socket at %1)").arg(path));
        return 1;
    }
    const QJsonObject hello{{QStringLiteral("kind"), QStringLiteral("host")},
                            {QStringLiteral("browser"), family},
                            {QStringLiteral("executable"), parent},
                            {QStringLiteral("pid"), double(browser)}};
    if (!writeAll(program, frames::encode(hello)))
        return 1;

    frames::FrameReader fromBrowser;
    frames::FrameReader fromProgram;
    pollfd fds[2] = {{STDIN_FILENO, POLLIN, 0}, {program, POLLIN, 0}};
    char buffer[64 * 1024];
    while (true) {
        if (::poll(fds, 2, -1) < 0) {
            if (errno == EINTR)
                continue;
            return 1;
        }
        for (int i = 0; i < 2; ++i) {
            if (!(fds[i].revents & (POLLIN | POLLHUP | POLLERR)))
                continue;
            const ssize_t n = ::read(fds[i].fd, buffer, sizeof buffer);
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                return 0; // the browser or the program went away
            if (i == 0) {
                fromBrowser.feed(QByteArrayView(buffer, n));
                if (relayFromBrowser(fromBrowser, program) == Flow::Stop)
                    return 1;
            } else {
                fromProgram.feed(QByteArrayView(buffer, n));
                if (relayFromProgram(fromProgram, program) == Flow::Stop)
                    return 1;
            }
        }
    }
}
