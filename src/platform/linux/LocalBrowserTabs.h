#pragma once

#include "BrowserTabs.h"
#include "NativeFrames.h"

#include <functional>
#include <memory>
#include <optional>
#include <QElapsedTimer>
#include <QList>
#include <QPointer>

class QFileSystemWatcher;
class QLocalServer;
class QLocalSocket;
class QTimer;

namespace velmora {

// One message from a native-messaging host, checked but not yet acted on.
struct HostMessage
{
    enum class Kind
    {
        Host,   // the host says which browser (family) it serves
        Tab,    // a tab's address changed, or it became the active one
        BadTab, // a tab message without a usable tab id or address
        Focus,  // no window of the browser has the focus any more
        Ping,
        Hello,   // the extension's own greeting
        Refused, // the host refused something the program sent
        Unknown,
    };
    Kind kind = Kind::Unknown;
    QString text;    // the browser family (Host), the reason (Refused) or the kind as sent (Unknown)
    qint64 tab = -1; // Tab
    QString address; // Tab, cut to MaxAddressChars
    QString host;    // Tab: the host as the browser parsed it
    bool active = false;
    std::optional<bool> focused;        // Tab, Focus
    qint64 pid = 0;                     // Host: the browser's process
    QString product;                    // Hello: the browser's own name
    std::optional<bool> privateAllowed; // Hello
};
// Addresses longer than this are cut; the host is sent beside them and kept whole.
constexpr qsizetype MaxAddressChars = 8192;
HostMessage readHostMessage(const QJsonObject& message);

// The program's end of the browser bridge: a QLocalServer in
// $XDG_RUNTIME_DIR/velmora/ that the native-messaging hosts connect to, one
// connection per browser (profile). Only the same user may connect. Everything
// that arrives is untrusted: frames that are not JSON objects, over the size
// limit, of an unknown kind, too many at once or left half-sent are refused with
// a debug-log line, and the rest of the program never notices.
class LocalBrowserTabs : public BrowserTabs
{
    Q_OBJECT
public:
    // The extension's id in Chromium-family browsers (from the key in its
    // manifest) and in Firefox.
    static constexpr const char* ChromiumExtensionId = "fbejcoihjmiomcngkmanpfmkfcceegnf";
    static constexpr const char* FirefoxExtensionId = "focus@velmora.app";
    static constexpr const char* HostName = "app.velmora.host";

    explicit LocalBrowserTabs(QObject* parent = nullptr);
    ~LocalBrowserTabs() override;

    // Listens at <runtime folder>/velmora/browser.sock.
    bool listen(const QString& runtimeFolder);
    QString socketPath() const;
    // Writes the host's manifest into every browser folder that exists (Chromium's
    // family under the configuration folder, Firefox's under home), and says where
    // a sandboxed browser cannot use it. Where the browser's system folder holds
    // the manifest (an installed package), the user's copy is left out.
    void writeHostManifests(const QString& home, const QString& configHome, const QString& hostProgram);
    // Writes them again whenever a browser's folder appears (a browser run for the
    // first time), for as long as the program runs.
    void watchBrowserFolders(const QString& home, const QString& configHome, const QString& hostProgram);
    // The root that the system folders are under; "" is "/".
    void setSystemRoot(const QString& root) { m_systemRoot = root; }

    void setLog(std::function<void(const QString&)> log) { m_log = std::move(log); }
    // Limits, changeable so that a test need not send thousands of frames.
    void setLimits(int messagesPerSecond, int hangMs);

    QStringList connectedBrowsers() const override;
    QList<BrowserConnection> connections() const override;
    std::optional<BrowserTab> activeTab(const QString& browser) const override;
    std::optional<BrowserTab> activeTabOf(const QString& connection) const override;
    void requestActiveTab(const QString& connection) override;
    QString focusedBrowser() const override;
    void showBlockPage(const BrowserTab& tab, const QString& query) override;

private:
    struct Connection
    {
        QPointer<QLocalSocket> socket;
        frames::FrameReader reader;
        QString id;
        QString browser; // empty until the host said which
        QString product;
        qint64 pid = 0;
        std::optional<bool> privateAllowed;
        bool focused = false;
        bool everFocused = false;
        BrowserTab active;    // of the focused window; no tab (-1) when it has none we see
        QElapsedTimer window; // the current second of the flood count
        int messagesInWindow = 0;
        bool floodLogged = false;
        QTimer* hang = nullptr;
    };

    void accept();
    bool isSameUser(QLocalSocket* socket) const;
    void readFrom(Connection* connection);
    bool isFlooding(Connection* connection);
    void handle(Connection* connection, const QJsonObject& message);
    void handleTab(Connection* connection, const HostMessage& message);
    void drop(Connection* connection, const QString& reason);
    void forget(QLocalSocket* socket);
    void send(Connection* connection, const QJsonObject& message);
    void setFocused(Connection* connection, bool focused);
    const Connection* connectionFor(const QString& browser) const;
    Connection* connectionById(const QString& id) const;
    void log(const QString& line) const;

    QLocalServer* m_server = nullptr;
    QList<std::shared_ptr<Connection>> m_connections;
    int m_messagesPerSecond = 200;
    int m_hangMs = 5000;
    quint64 m_nextId = 1;
    QFileSystemWatcher* m_folderWatch = nullptr;
    std::function<void(const QString&)> m_log;
    QString m_systemRoot;
};

} // namespace velmora
