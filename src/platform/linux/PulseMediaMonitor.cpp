#include "PulseMediaMonitor.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QList>

#include <dirent.h>
#include <pulse/pulseaudio.h>
#include <unistd.h>

#include <climits>
#include <cstring>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr int PulseTimeLimitMs = 1000;
// After the server let a question run out of time, it is not asked again for a
// while: the caller asks every second on the main thread.
constexpr qint64 PulsePauseAfterTimeOutMs = 15000;
constexpr int DBusTimeoutMs = 500;
constexpr int DBusBudgetMs = 1500;
// GNOME's inhibitor flag for "the session may not be marked idle".
constexpr uint GnomeInhibitIdle = 8;

struct StreamListing
{
    struct Output
    {
        uint32_t source = PA_INVALID_INDEX;
        bool corked = false;
        QByteArray processId;
        QByteArray resampleMethod;
    };
    QHash<uint32_t, bool> sourceIsMonitor;
    QList<Output> outputs;
    int pending = 0;
    bool failed = false;
};

void onSource(pa_context*, const pa_source_info* info, int eol, void* userdata)
{
    auto* listing = static_cast<StreamListing*>(userdata);
    if (eol != 0) {
        listing->failed |= eol < 0;
        --listing->pending;
        return;
    }
    if (info)
        listing->sourceIsMonitor.insert(info->index, info->monitor_of_sink != PA_INVALID_INDEX);
}

void onSourceOutput(pa_context*, const pa_source_output_info* info, int eol, void* userdata)
{
    auto* listing = static_cast<StreamListing*>(userdata);
    if (eol != 0) {
        listing->failed |= eol < 0;
        --listing->pending;
        return;
    }
    if (!info)
        return;
    StreamListing::Output output;
    output.source = info->source;
    output.corked = info->corked != 0;
    output.processId = QByteArray(pa_proplist_gets(info->proplist, PA_PROP_APPLICATION_PROCESS_ID));
    output.resampleMethod = QByteArray(info->resample_method);
    listing->outputs.append(output);
}

// Processes that keep video devices open on everyone's behalf.
bool isSoundServer(const QByteArray& processDir)
{
    QFile comm(QString::fromLocal8Bit(processDir + "/comm"));
    if (!comm.open(QIODevice::ReadOnly))
        return false;
    const QByteArray name = comm.readLine(64).trimmed();
    // The kernel cuts names to 15 characters: "pipewire-media-session" is
    // "pipewire-media-".
    return name == "pipewire" || name == "wireplumber" || name == "pulseaudio" || name == "pipewire-media-";
}

bool holdsVideoDevice(const QByteArray& processDir)
{
    const QByteArray fdDir = processDir + "/fd";
    DIR* dir = opendir(fdDir.constData());
    if (!dir)
        return false;
    bool found = false;
    while (!found) {
        const dirent* entry = readdir(dir);
        if (!entry)
            break;
        if (entry->d_name[0] == '.')
            continue;
        char target[PATH_MAX];
        const QByteArray link = fdDir + '/' + entry->d_name;
        const ssize_t length = readlink(link.constData(), target, sizeof target);
        if (length <= 0)
            continue;
        found = QByteArrayView(target, length).startsWith("/dev/video");
    }
    closedir(dir);
    return found;
}

bool isProcessId(const char* name)
{
    if (!*name)
        return false;
    for (const char* c = name; *c; ++c) {
        if (*c < '0' || *c > '9')
            return false;
    }
    return true;
}

// A blocking call that never starts a service and answers only a reply of the
// expected shape.
std::optional<QDBusMessage> callService(const QDBusConnection& bus, const QString& service,
                                        const QString& path, const QString& interface, const QString& method,
                                        const QString& replySignature, const QDeadlineTimer& budget)
{
    const qint64 left = budget.remainingTime();
    if (!bus.isConnected() || left == 0)
        return std::nullopt;
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, method);
    call.setAutoStartService(false);
    const QDBusMessage reply = bus.call(call, QDBus::Block, int(std::min<qint64>(left, DBusTimeoutMs)));
    if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != replySignature ||
        reply.arguments().isEmpty())
        return std::nullopt;
    return reply;
}

QDBusArgument structuredArgument(const QDBusMessage& reply)
{
    const QVariant first = reply.arguments().constFirst();
    if (first.metaType() != QMetaType::fromType<QDBusArgument>())
        return {};
    return first.value<QDBusArgument>();
}

bool appendGnomeInhibitors(QStringList& names, const QDeadlineTimer& budget)
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    const QString service = u"org.gnome.SessionManager"_s;
    const std::optional<QDBusMessage> reply = callService(bus, service, u"/org/gnome/SessionManager"_s,
                                                          service, u"GetInhibitors"_s, u"ao"_s, budget);
    if (!reply)
        return false;
    const auto paths = qdbus_cast<QList<QDBusObjectPath>>(reply->arguments().constFirst());
    const QString interface = u"org.gnome.SessionManager.Inhibitor"_s;
    for (const QDBusObjectPath& path : paths) {
        const std::optional<QDBusMessage> flags =
            callService(bus, service, path.path(), interface, u"GetFlags"_s, u"u"_s, budget);
        if (!flags || !(flags->arguments().constFirst().toUInt() & GnomeInhibitIdle))
            continue;
        const std::optional<QDBusMessage> appId =
            callService(bus, service, path.path(), interface, u"GetAppId"_s, u"s"_s, budget);
        if (appId)
            names << appId->arguments().constFirst().toString();
    }
    return true;
}

bool appendKdeInhibitors(QStringList& names, const QDeadlineTimer& budget)
{
    const QString agent = u"org.kde.Solid.PowerManagement.PolicyAgent"_s;
    const std::optional<QDBusMessage> reply =
        callService(QDBusConnection::sessionBus(), agent, u"/org/kde/Solid/PowerManagement/PolicyAgent"_s,
                    agent, u"ListInhibitions"_s, u"a(ss)"_s, budget);
    if (!reply)
        return false;
    const QDBusArgument list = structuredArgument(*reply);
    if (list.currentType() != QDBusArgument::ArrayType)
        return true; // answered, with nothing we can read
    list.beginArray();
    while (!list.atEnd()) {
        QString application;
        QString reason;
        list.beginStructure();
        list >> application >> reason;
        list.endStructure();
        names << application;
    }
    list.endArray();
    return true;
}

bool appendLogindInhibitors(QStringList& names, const QDeadlineTimer& budget)
{
    const std::optional<QDBusMessage> reply =
        callService(QDBusConnection::systemBus(), u"org.freedesktop.login1"_s, u"/org/freedesktop/login1"_s,
                    u"org.freedesktop.login1.Manager"_s, u"ListInhibitors"_s, u"a(ssssuu)"_s, budget);
    if (!reply)
        return false;
    const QDBusArgument list = structuredArgument(*reply);
    if (list.currentType() != QDBusArgument::ArrayType)
        return true; // answered, with nothing we can read
    list.beginArray();
    while (!list.atEnd()) {
        QString what;
        QString who;
        QString why;
        QString mode;
        uint uid = 0;
        uint pid = 0;
        list.beginStructure();
        list >> what >> who >> why >> mode >> uid >> pid;
        list.endStructure();
        // "what" is a colon-separated list such as "sleep:idle".
        if (what.split(u':').contains(u"idle"_s))
            names << who;
    }
    list.endArray();
    return true;
}

} // namespace

PulseMediaMonitor::PulseMediaMonitor(const QString& procRoot)
    : m_procRoot(QFile::encodeName(procRoot))
{
}

PulseMediaMonitor::~PulseMediaMonitor()
{
    disconnectFromServer();
}

bool PulseMediaMonitor::isMicOn()
{
    if (m_sinceServerTimedOut.isValid() && !m_sinceServerTimedOut.hasExpired(PulsePauseAfterTimeOutMs))
        return false;
    m_sinceServerTimedOut.invalidate();
    const QDeadlineTimer deadline(PulseTimeLimitMs);
    // A connection kept from the last call may have been dropped since (the server
    // restarted); such a one is given a second, fresh try.
    for (int attempt = 0; attempt < 2; ++attempt) {
        const bool kept = m_context != nullptr;
        if (!connectToServer(deadline))
            return false;
        if (const std::optional<bool> answer = askForRecordingStream(deadline))
            return *answer;
        disconnectFromServer();
        if (!kept)
            return false;
    }
    return false;
}

bool PulseMediaMonitor::connectToServer(const QDeadlineTimer& deadline)
{
    if (m_context) {
        // Lets the loop see a hang-up that happened between calls.
        pa_mainloop_iterate(m_loop, 0, nullptr);
        if (pa_context_get_state(m_context) == PA_CONTEXT_READY)
            return true;
        disconnectFromServer();
    }
    m_loop = pa_mainloop_new();
    if (!m_loop)
        return false;
    m_context = pa_context_new(pa_mainloop_get_api(m_loop), "Velmora");
    // The server named by PULSE_SERVER or the client configuration; never start one.
    if (!m_context || pa_context_connect(m_context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
        disconnectFromServer();
        return false;
    }
    for (;;) {
        switch (pa_context_get_state(m_context)) {
        case PA_CONTEXT_READY:
            return true;
        case PA_CONTEXT_FAILED:
        case PA_CONTEXT_TERMINATED:
            disconnectFromServer();
            return false;
        default:
            break;
        }
        if (!iterate(deadline)) {
            disconnectFromServer();
            return false;
        }
    }
}

void PulseMediaMonitor::disconnectFromServer()
{
    if (m_context) {
        pa_context_disconnect(m_context);
        pa_context_unref(m_context);
        m_context = nullptr;
    }
    if (m_loop) {
        pa_mainloop_free(m_loop);
        m_loop = nullptr;
    }
}

bool PulseMediaMonitor::iterate(const QDeadlineTimer& deadline)
{
    const qint64 left = deadline.remainingTime();
    if (left == 0) {
        m_sinceServerTimedOut.start();
        return false;
    }
    return pa_mainloop_prepare(m_loop, int(left * 1000)) >= 0 && pa_mainloop_poll(m_loop) >= 0 &&
           pa_mainloop_dispatch(m_loop) >= 0;
}

std::optional<bool> PulseMediaMonitor::askForRecordingStream(const QDeadlineTimer& deadline)
{
    StreamListing listing;
    listing.pending = 2;
    pa_operation* operations[] = {
        pa_context_get_source_info_list(m_context, onSource, &listing),
        pa_context_get_source_output_info_list(m_context, onSourceOutput, &listing),
    };
    bool complete = operations[0] && operations[1];
    while (complete && listing.pending > 0) {
        complete = pa_context_get_state(m_context) == PA_CONTEXT_READY && iterate(deadline);
    }
    for (pa_operation* operation : operations) {
        if (!operation)
            continue;
        // The listing lives on this stack frame: no callback may run after it.
        if (pa_operation_get_state(operation) == PA_OPERATION_RUNNING)
            pa_operation_cancel(operation);
        pa_operation_unref(operation);
    }
    if (!complete || listing.failed)
        return std::nullopt;

    const QByteArray ownProcess = QByteArray::number(QCoreApplication::applicationPid());
    for (const StreamListing::Output& output : std::as_const(listing.outputs)) {
        if (output.corked || output.processId == ownProcess)
            continue;
        // Level meters (a volume control's input bar) record "peaks", not sound.
        if (output.resampleMethod == "peaks")
            continue;
        const auto source = listing.sourceIsMonitor.constFind(output.source);
        if (source != listing.sourceIsMonitor.cend() && !source.value())
            return true;
    }
    return false;
}

bool PulseMediaMonitor::isACameraOn()
{
    // Walking every process's descriptors is the costly part of a tick; a machine
    // with no video device at all cannot have a camera in use.
    if (m_procRoot == "/proc" &&
        QDir(QStringLiteral("/dev")).entryList({QStringLiteral("video*")}, QDir::System).isEmpty())
        return false;
    DIR* proc = opendir(m_procRoot.constData());
    if (!proc)
        return false;
    const QByteArray ownProcess = QByteArray::number(QCoreApplication::applicationPid());
    bool found = false;
    while (!found) {
        const dirent* entry = readdir(proc);
        if (!entry)
            break;
        if (!isProcessId(entry->d_name) || ownProcess == entry->d_name)
            continue;
        const QByteArray processDir = m_procRoot + '/' + entry->d_name;
        found = holdsVideoDevice(processDir) && !isSoundServer(processDir);
    }
    closedir(proc);
    return found;
}

std::optional<QStringList> PulseMediaMonitor::displaySleepInhibitors()
{
    const QDeadlineTimer budget(DBusBudgetMs);
    QStringList names;
    // Each source is asked even when one before it failed; no answer at all is no list.
    bool answered = appendGnomeInhibitors(names, budget);
    answered = appendKdeInhibitors(names, budget) || answered;
    answered = appendLogindInhibitors(names, budget) || answered;
    if (!answered)
        return std::nullopt;
    names.removeAll(QString());
    names.removeDuplicates();
    return names;
}

} // namespace velmora
