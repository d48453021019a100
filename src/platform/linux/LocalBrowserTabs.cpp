#include "LocalBrowserTabs.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalServer>
#include <QLocalSocket>
#include <QSaveFile>
#include <QTimer>

#include <cmath>

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velmora {

namespace {

// Anything the program sends is far smaller; a host that stops reading is dropped
// before its backlog grows without bound.
constexpr qint64 MaxUnsentBytes = 4 * frames::MaxFrameBytes;

QString text(const QJsonObject& message, const char* key)
{
    return message.value(QLatin1StringView(key)).toString();
}

struct BrowserFolder
{
    const char* folder; // under the configuration folder, or for Firefox the home folder
    bool firefoxForm;
    const char* systemFolder; // where the package puts the browser's manifest for every user
};

constexpr BrowserFolder BrowserFolders[] = {
    {"chromium", false, "/etc/chromium/native-messaging-hosts"},
    {"google-chrome", false, "/etc/opt/chrome/native-messaging-hosts"},
    {"google-chrome-beta", false, "/etc/opt/chrome/native-messaging-hosts"},
    {"google-chrome-unstable", false, "/etc/opt/chrome/native-messaging-hosts"},
    {"BraveSoftware/Brave-Browser", false, "/etc/opt/brave/native-messaging-hosts"},
    {"microsoft-edge", false, "/etc/opt/edge/native-messaging-hosts"},
    {"microsoft-edge-beta", false, "/etc/opt/edge/native-messaging-hosts"},
    {"vivaldi", false, "/etc/opt/vivaldi/native-messaging-hosts"},
    {".mozilla", true, "/usr/lib/mozilla/native-messaging-hosts"},
};

} // namespace

LocalBrowserTabs::LocalBrowserTabs(QObject* parent)
    : BrowserTabs(parent)
{
}

LocalBrowserTabs::~LocalBrowserTabs()
{
    for (const auto& connection : std::as_const(m_connections)) {
        if (connection->socket)
            connection->socket->disconnect(this);
    }
}

void LocalBrowserTabs::setLimits(int messagesPerSecond, int hangMs)
{
    m_messagesPerSecond = messagesPerSecond;
    m_hangMs = hangMs;
}

QString LocalBrowserTabs::socketPath() const
{
    return m_server ? m_server->fullServerName() : QString();
}

bool LocalBrowserTabs::listen(const QString& runtimeFolder)
{
    const QString folder = runtimeFolder + QStringLiteral("/velmora");
    if (!QDir().mkpath(folder) || ::chmod(QFile::encodeName(folder).constData(), S_IRWXU) != 0) {
        log(QStringLiteral("Browser bridge: cannot make %1 private").arg(folder));
        return false;
    }
    const QString path = folder + QStringLiteral("/browser.sock");
    // A socket left by a program that was killed: nobody can be listening on it,
    // since only one copy of the program runs.
    QLocalServer::removeServer(path);
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server->listen(path)) {
        log(QStringLiteral("Browser bridge: cannot listen at %1: %2").arg(path, m_server->errorString()));
        return false;
    }
    connect(m_server, &QLocalServer::newConnection, this, &LocalBrowserTabs::accept);
    return true;
}

void LocalBrowserTabs::writeHostManifests(const QString& home, const QString& configHome,
                                          const QString& hostProgram)
{
    for (const BrowserFolder& browser : BrowserFolders) {
        const QString root =
            (browser.firefoxForm ? home : configHome) + u'/' + QLatin1StringView(browser.folder);
        if (!QFileInfo(root).isDir())
            continue;
        const QString folder = root + (browser.firefoxForm ? QStringLiteral("/native-messaging-hosts")
                                                           : QStringLiteral("/NativeMessagingHosts"));
        const QString fileName = u'/' + QLatin1StringView(HostName) + QStringLiteral(".json");
        // An installed package's manifest serves every user; a copy of ours in the
        // user's folder would be read first and may name a host that is gone.
        if (QFileInfo::exists(m_systemRoot + QLatin1StringView(browser.systemFolder) + fileName)) {
            if (QFile::exists(folder + fileName) && QFile::remove(folder + fileName))
                log(QStringLiteral("Browser bridge: removed %1, the system's manifest serves")
                        .arg(folder + fileName));
            continue;
        }
        QJsonObject manifest{{QStringLiteral("name"), QLatin1StringView(HostName)},
                             {QStringLiteral("description"), QStringLiteral("Velmora focus blocks")},
                             {QStringLiteral("path"), hostProgram},
                             {QStringLiteral("type"), QStringLiteral("stdio")}};
        if (browser.firefoxForm) {
            manifest.insert(QStringLiteral("allowed_extensions"),
                            QJsonArray{QLatin1StringView(FirefoxExtensionId)});
        } else {
            manifest.insert(
                QStringLiteral("allowed_origins"),
                QJsonArray{
                    QStringLiteral("chrome-extension://%1/").arg(QLatin1StringView(ChromiumExtensionId))});
        }
        QSaveFile file(folder + fileName);
        if (!QDir().mkpath(folder) || !file.open(QIODevice::WriteOnly) ||
            file.write(QJsonDocument(manifest).toJson()) < 0 || !file.commit())
            log(QStringLiteral("Browser bridge: cannot write the host manifest in %1").arg(folder));
    }
    // Sandboxed browsers read neither these folders nor start programs outside
    // their sandbox.
    if (QFileInfo(home + QStringLiteral("/snap/chromium")).isDir() ||
        QFileInfo(home + QStringLiteral("/snap/firefox")).isDir())
        log(QStringLiteral("Browser bridge: a Snap browser cannot start our host; address blocking needs a "
                           "browser installed from the distribution's packages"));
    for (const char* flatpak : {"org.mozilla.firefox", "org.chromium.Chromium", "com.google.Chrome",
                                "com.brave.Browser", "com.microsoft.Edge"}) {
        if (QFileInfo(home + QStringLiteral("/.var/app/") + QLatin1StringView(flatpak)).isDir())
            log(QStringLiteral(
                    "Browser bridge: the Flatpak browser %1 cannot start our host without a portal")
                    .arg(QLatin1StringView(flatpak)));
    }
}

void LocalBrowserTabs::accept()
{
    while (QLocalSocket* socket = m_server->nextPendingConnection()) {
        if (!isSameUser(socket)) {
            log(QStringLiteral("Browser bridge: refused a connection from another user"));
            socket->abort();
            socket->deleteLater();
            continue;
        }
        auto connection = std::make_shared<Connection>();
        connection->socket = socket;
        connection->window.start();
        connection->hang = new QTimer(socket);
        connection->hang->setSingleShot(true);
        Connection* raw = connection.get();
        connect(connection->hang, &QTimer::timeout, this,
                [this, raw] { drop(raw, QStringLiteral("a frame was left half-sent")); });
        connect(socket, &QLocalSocket::readyRead, this, [this, raw] { readFrom(raw); });
        connect(socket, &QLocalSocket::disconnected, this, [this, socket] { forget(socket); });
        m_connections.append(connection);
        readFrom(raw);
    }
}

bool LocalBrowserTabs::isSameUser(QLocalSocket* socket) const
{
    ucred peer{};
    socklen_t size = sizeof peer;
    if (::getsockopt(int(socket->socketDescriptor()), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0)
        return false;
    return peer.uid == ::getuid();
}

void LocalBrowserTabs::readFrom(Connection* connection)
{
    // What a message sets off (a block order to a host that stopped reading) may
    // drop this very connection: keep it alive until the loop below is done.
    std::shared_ptr<Connection> keep;
    for (const auto& known : std::as_const(m_connections)) {
        if (known.get() == connection)
            keep = known;
    }
    QLocalSocket* socket = keep ? connection->socket : nullptr;
    if (!socket)
        return;
    connection->reader.feed(socket->readAll());
    QByteArray frame;
    while (true) {
        const auto status = connection->reader.next(&frame);
        if (status == frames::FrameReader::Status::Oversized) {
            drop(connection, QStringLiteral("a frame over the size limit"));
            return;
        }
        if (status == frames::FrameReader::Status::NeedMore)
            break;
        if (isFlooding(connection))
            continue;
        const std::optional<QJsonObject> message = frames::parse(frame);
        if (!message) {
            log(QStringLiteral("Browser bridge: refused a frame that is not a JSON object"));
            continue;
        }
        handle(connection, *message);
        if (!connection->socket)
            return;
    }
    if (connection->reader.pending() > 0)
        connection->hang->start(m_hangMs);
    else
        connection->hang->stop();
}

bool LocalBrowserTabs::isFlooding(Connection* connection)
{
    if (connection->window.elapsed() >= 1000) {
        connection->window.restart();
        connection->messagesInWindow = 0;
        connection->floodLogged = false;
    }
    if (++connection->messagesInWindow <= m_messagesPerSecond)
        return false;
    if (!connection->floodLogged) {
        connection->floodLogged = true;
        log(QStringLiteral("Browser bridge: %1 sends too many messages; ignoring the rest of this second")
                .arg(connection->browser.isEmpty() ? QStringLiteral("a host") : connection->browser));
    }
    return true;
}

HostMessage readHostMessage(const QJsonObject& message)
{
    using Kind = HostMessage::Kind;
    HostMessage read;
    const QString kind = text(message, "kind");
    const QJsonValue focused = message.value(QStringLiteral("focused"));
    if (message.contains(QStringLiteral("focused")))
        read.focused = focused.toBool();
    if (kind == QStringLiteral("host")) {
        read.kind = Kind::Host;
        read.text = text(message, "browser");
    } else if (kind == QStringLiteral("tab")) {
        const QJsonValue tab = message.value(QStringLiteral("tab"));
        read.address = text(message, "url");
        // Browsers number tabs with small integers; anything else is no tab of theirs.
        const double id = tab.toDouble(-1);
        const bool usableId = tab.isDouble() && id >= 0 && id <= double(1LL << 53) && id == std::floor(id);
        read.kind = usableId && !read.address.isEmpty() ? Kind::Tab : Kind::BadTab;
        read.tab = usableId ? qint64(id) : -1;
        read.active = message.value(QStringLiteral("active")).toBool();
    } else if (kind == QStringLiteral("focus")) {
        read.kind = Kind::Focus;
        read.focused = focused.toBool();
    } else if (kind == QStringLiteral("ping")) {
        read.kind = Kind::Ping;
    } else if (kind == QStringLiteral("hello")) {
        read.kind = Kind::Hello;
    } else if (kind == QStringLiteral("refused")) {
        read.kind = Kind::Refused;
        read.text = text(message, "reason");
    } else {
        read.text = kind;
    }
    return read;
}

void LocalBrowserTabs::handle(Connection* connection, const QJsonObject& json)
{
    using Kind = HostMessage::Kind;
    const HostMessage message = readHostMessage(json);
    if (message.kind == Kind::Host) {
        const QString& family = message.text;
        static const QStringList families = {QStringLiteral("firefox"),       QStringLiteral("chromium"),
                                             QStringLiteral("google-chrome"), QStringLiteral("brave"),
                                             QStringLiteral("edge"),          QStringLiteral("vivaldi")};
        if (!connection->browser.isEmpty() || !families.contains(family)) {
            log(QStringLiteral("Browser bridge: refused a host announcement for \"%1\"")
                    .arg(family.left(40)));
            return;
        }
        connection->browser = family;
        log(QStringLiteral("Browser bridge: %1 connected").arg(family));
        Q_EMIT connectionsChanged();
        return;
    }
    if (connection->browser.isEmpty()) {
        log(QStringLiteral("Browser bridge: refused a message before the host said which browser it serves"));
        return;
    }
    switch (message.kind) {
    case Kind::Tab:
        handleTab(connection, message);
        break;
    case Kind::BadTab:
        log(QStringLiteral("Browser bridge: refused a tab message without a tab or an address"));
        break;
    case Kind::Focus:
        connection->focused = *message.focused;
        break;
    case Kind::Ping:
        if (connection->socket)
            connection->socket->write(
                frames::encode(QJsonObject{{QStringLiteral("kind"), QStringLiteral("pong")}}));
        break;
    case Kind::Hello:
        // The extension's own greeting; the host already told us the browser.
        break;
    case Kind::Host: // answered above
        break;
    case Kind::Refused:
        log(QStringLiteral("Browser bridge: the %1 host refused input: %2")
                .arg(connection->browser, message.text.left(200)));
        break;
    case Kind::Unknown:
        log(QStringLiteral("Browser bridge: refused a message of unknown kind \"%1\"")
                .arg(message.text.left(40)));
        break;
    }
}

void LocalBrowserTabs::handleTab(Connection* connection, const HostMessage& message)
{
    const BrowserTab tab{connection->browser, message.tab, message.address};
    const bool focused = message.focused.value_or(false);
    if (message.active) {
        // The active tab of a focused window wins over that of a window in the back.
        if (focused || !connection->focused)
            connection->active = tab;
    }
    if (message.focused)
        connection->focused = focused;
    Q_EMIT tabChanged(tab);
}

void LocalBrowserTabs::drop(Connection* connection, const QString& reason)
{
    log(QStringLiteral("Browser bridge: closed the connection of %1: %2")
            .arg(connection->browser.isEmpty() ? QStringLiteral("a host") : connection->browser, reason));
    if (QLocalSocket* socket = connection->socket) {
        socket->abort();
        forget(socket);
    }
}

void LocalBrowserTabs::forget(QLocalSocket* socket)
{
    for (qsizetype i = 0; i < m_connections.size(); ++i) {
        if (m_connections.at(i)->socket != socket)
            continue;
        const bool announced = !m_connections.at(i)->browser.isEmpty();
        m_connections.at(i)->hang->stop();
        m_connections.at(i)->hang->disconnect(this);
        m_connections.at(i)->socket = nullptr;
        m_connections.removeAt(i);
        socket->disconnect(this);
        socket->deleteLater();
        if (announced)
            Q_EMIT connectionsChanged();
        return;
    }
}

const LocalBrowserTabs::Connection* LocalBrowserTabs::connectionFor(const QString& browser) const
{
    const Connection* found = nullptr;
    for (const auto& connection : m_connections) {
        if (connection->browser != browser)
            continue;
        if (connection->focused)
            return connection.get();
        found = connection.get();
    }
    return found;
}

QStringList LocalBrowserTabs::connectedBrowsers() const
{
    QStringList browsers;
    for (const auto& connection : m_connections) {
        if (!connection->browser.isEmpty() && !browsers.contains(connection->browser))
            browsers << connection->browser;
    }
    return browsers;
}

std::optional<BrowserTab> LocalBrowserTabs::activeTab(const QString& browser) const
{
    const Connection* connection = connectionFor(browser);
    if (!connection || connection->active.tab < 0)
        return std::nullopt;
    return connection->active;
}

QString LocalBrowserTabs::focusedBrowser() const
{
    for (const auto& connection : m_connections) {
        if (connection->focused)
            return connection->browser;
    }
    return {};
}

void LocalBrowserTabs::showBlockPage(const BrowserTab& tab, const QString& query)
{
    for (const auto& connection : std::as_const(m_connections)) {
        if (connection->browser != tab.browser || !connection->socket)
            continue;
        if (connection->socket->bytesToWrite() > MaxUnsentBytes) {
            drop(connection.get(), QStringLiteral("its host stopped reading"));
            return;
        }
        const QByteArray frame = frames::encode(QJsonObject{{QStringLiteral("kind"), QStringLiteral("block")},
                                                            {QStringLiteral("tab"), double(tab.tab)},
                                                            {QStringLiteral("query"), query}});
        if (frame.isEmpty()) {
            log(QStringLiteral("Browser bridge: the block order is over the size limit"));
            return;
        }
        // Tab ids are per browser process: every connection of that family gets
        // the order, and the one without the tab ignores it.
        connection->socket->write(frame);
    }
}

void LocalBrowserTabs::log(const QString& line) const
{
    if (m_log)
        m_log(line);
}

} // namespace velmora
