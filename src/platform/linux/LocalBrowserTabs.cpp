#include "LocalBrowserTabs.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalServer>
#include <QLocalSocket>
#include <QRegularExpression>
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
        const QString path = folder + fileName;
        const QByteArray json = QJsonDocument(manifest).toJson();
        if (QFile current(path); current.open(QIODevice::ReadOnly) && current.readAll() == json)
            continue;
        QSaveFile file(path);
        if (!QDir().mkpath(folder) || !file.open(QIODevice::WriteOnly) || file.write(json) < 0 ||
            !file.commit())
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

void LocalBrowserTabs::watchBrowserFolders(const QString& home, const QString& configHome,
                                           const QString& hostProgram)
{
    delete m_folderWatch;
    m_folderWatch = new QFileSystemWatcher(this);
    // The folders a browser's folder is made in: the home and configuration
    // folders, and the vendor folders between (BraveSoftware).
    const auto rewatch = [this, home, configHome] {
        QStringList folders{home, configHome};
        for (const BrowserFolder& browser : BrowserFolders) {
            const QString parent = QFileInfo((browser.firefoxForm ? home : configHome) + u'/' +
                                             QLatin1StringView(browser.folder))
                                       .absolutePath();
            if (!folders.contains(parent))
                folders << parent;
        }
        QStringList existing;
        for (const QString& folder : std::as_const(folders)) {
            if (QFileInfo(folder).isDir() && !m_folderWatch->directories().contains(folder))
                existing << folder;
        }
        if (!existing.isEmpty())
            m_folderWatch->addPaths(existing);
    };
    rewatch();
    connect(m_folderWatch, &QFileSystemWatcher::directoryChanged, this,
            [this, home, configHome, hostProgram, rewatch] {
                rewatch();
                writeHostManifests(home, configHome, hostProgram);
            });
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
        connection->id = QStringLiteral("c%1").arg(m_nextId++);
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
            // Skipped as it arrives; the frames after it are read as usual.
            log(QStringLiteral("Browser bridge: refused a frame over the size limit"));
            continue;
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
        const double pid = message.value(QStringLiteral("pid")).toDouble(0);
        read.pid = pid > 0 && pid < 4194305 && pid == std::floor(pid) ? qint64(pid) : 0;
    } else if (kind == QStringLiteral("tab")) {
        const QJsonValue tab = message.value(QStringLiteral("tab"));
        read.address = text(message, "url").left(MaxAddressChars);
        // A host name is at most 253 characters; anything else is no host of a browser's.
        read.host = text(message, "host").toLower();
        if (read.host.size() > 253)
            read.host.clear();
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
        read.product = text(message, "product").left(60);
        if (const QJsonValue allowed = message.value(QStringLiteral("privateAllowed")); allowed.isBool())
            read.privateAllowed = allowed.toBool();
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
        // Any browser may carry the extension; its host names it by its program.
        static const QRegularExpression familyName(QStringLiteral("^[a-z0-9][a-z0-9._-]{0,39}$"));
        if (!connection->browser.isEmpty() || !familyName.match(family).hasMatch()) {
            log(QStringLiteral("Browser bridge: refused a host announcement for \"%1\"")
                    .arg(family.left(40)));
            return;
        }
        connection->browser = family;
        connection->pid = message.pid;
        log(QStringLiteral("Browser bridge: %1 connected (process %2)").arg(family).arg(message.pid));
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
        // The focus is in no window of this browser that the extension sees, or in
        // one without a tab (developer tools).
        connection->active = BrowserTab{};
        setFocused(connection, *message.focused);
        break;
    case Kind::Ping:
        send(connection, QJsonObject{{QStringLiteral("kind"), QStringLiteral("pong")}});
        break;
    case Kind::Hello:
        connection->product = message.product;
        if (message.privateAllowed != connection->privateAllowed) {
            connection->privateAllowed = message.privateAllowed;
            log(QStringLiteral("Browser bridge: %1 %2 in private windows")
                    .arg(message.product.isEmpty() ? connection->browser : message.product,
                         message.privateAllowed.value_or(false) ? QStringLiteral("may run")
                                                                : QStringLiteral("may not run")));
            Q_EMIT connectionsChanged();
        }
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
    const BrowserTab tab{connection->browser, message.tab, message.address, message.host, connection->id};
    const bool focused = message.focused.value_or(false);
    // Only the active tab of the focused window is the one in front.
    if (message.active && focused)
        connection->active = tab;
    else if (connection->active.tab == tab.tab && !message.active)
        connection->active = BrowserTab{};
    if (message.focused)
        setFocused(connection, focused);
    Q_EMIT tabChanged(tab);
}

void LocalBrowserTabs::setFocused(Connection* connection, bool focused)
{
    if (connection->focused == focused)
        return;
    connection->focused = focused;
    connection->everFocused = connection->everFocused || focused;
    if (!focused)
        connection->active = BrowserTab{};
    Q_EMIT connectionsChanged();
}

void LocalBrowserTabs::send(Connection* connection, const QJsonObject& message)
{
    if (!connection->socket)
        return;
    if (connection->socket->bytesToWrite() > MaxUnsentBytes) {
        drop(connection, QStringLiteral("its host stopped reading"));
        return;
    }
    const QByteArray frame = frames::encode(message);
    if (frame.isEmpty()) {
        log(QStringLiteral("Browser bridge: an order is over the size limit"));
        return;
    }
    connection->socket->write(frame);
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

LocalBrowserTabs::Connection* LocalBrowserTabs::connectionById(const QString& id) const
{
    for (const auto& connection : m_connections) {
        if (connection->id == id && !connection->browser.isEmpty())
            return connection.get();
    }
    return nullptr;
}

QList<BrowserConnection> LocalBrowserTabs::connections() const
{
    QList<BrowserConnection> list;
    for (const auto& c : m_connections) {
        if (!c->browser.isEmpty())
            list << BrowserConnection{c->id,      c->browser,     c->product,       c->pid,
                                      c->focused, c->everFocused, c->privateAllowed};
    }
    return list;
}

std::optional<BrowserTab> LocalBrowserTabs::activeTabOf(const QString& id) const
{
    const Connection* connection = connectionById(id);
    if (!connection || !connection->focused || connection->active.tab < 0)
        return std::nullopt;
    return connection->active;
}

void LocalBrowserTabs::requestActiveTab(const QString& id)
{
    if (Connection* connection = connectionById(id))
        send(connection, QJsonObject{{QStringLiteral("kind"), QStringLiteral("query")}});
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
    const QJsonObject order{{QStringLiteral("kind"), QStringLiteral("block")},
                            {QStringLiteral("tab"), double(tab.tab)},
                            {QStringLiteral("query"), query}};
    // Tab numbers are per browser process: the order goes to the connection that
    // reported the tab, and to no other of its family.
    if (Connection* connection = connectionById(tab.connection)) {
        send(connection, order);
        return;
    }
    if (!tab.connection.isEmpty())
        return; // that browser went away meanwhile
    if (Connection* connection = const_cast<Connection*>(connectionFor(tab.browser)))
        send(connection, order);
}

void LocalBrowserTabs::log(const QString& line) const
{
    if (m_log)
        m_log(line);
}

} // namespace velmora
