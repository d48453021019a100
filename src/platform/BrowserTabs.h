#pragma once

#include <optional>
#include <QObject>
#include <QString>
#include <QStringList>

namespace velmora {

// One tab of a browser whose extension is connected. `browser` is the browser's
// family: "firefox", "chromium", "google-chrome", "brave", "edge", "vivaldi", or
// the program's own name for another one ("librewolf", "opera"). `host` is the
// host as the browser itself parsed the address (empty when it has none), and
// `connection` the extension's connection that reported the tab: tab numbers are
// only unique within one browser process.
struct BrowserTab
{
    QString browser;
    qint64 tab = -1;
    QString address;
    QString host;
    QString connection;

    bool operator==(const BrowserTab&) const = default;
};

// One running browser (process) with our extension connected.
struct BrowserConnection
{
    QString id;
    QString browser;          // the family, as in BrowserTab
    QString product;          // as the extension names its browser ("Brave", "Firefox Developer Edition")
    qint64 pid = 0;           // the browser's process; 0 when unknown
    bool focused = false;     // one of the windows the extension can see has the keyboard focus
    bool everFocused = false; // it has said so at least once since it connected
    std::optional<bool> privateAllowed; // the user let the extension into private windows
};

// The browsers that run our extension: what their tabs show, and sending a tab to
// the block page. Only browsers with a connected extension are seen at all.
class BrowserTabs : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~BrowserTabs() override = default;

    // The families whose extension is connected now.
    virtual QStringList connectedBrowsers() const = 0;
    // Every connected browser process.
    virtual QList<BrowserConnection> connections() const { return {}; }
    // The active tab of the browser's focused window (or of its last focused one).
    virtual std::optional<BrowserTab> activeTab(const QString& browser) const = 0;
    // The family one of whose windows has the keyboard focus, as its extension
    // reports it; empty when none. Serves where the front application cannot be
    // read (Wayland).
    virtual QString focusedBrowser() const = 0;
    // The active tab of the connection's focused window, as last reported; nothing
    // while the focus is in a window the extension cannot see.
    virtual std::optional<BrowserTab> activeTabOf(const QString& connection) const
    {
        Q_UNUSED(connection);
        return std::nullopt;
    }
    // Asks the connection for the active tab of its focused window; the answer comes
    // as tabChanged, or as connectionsChanged when no window of it has the focus.
    virtual void requestActiveTab(const QString& connection) { Q_UNUSED(connection); }
    // Sends the tab to the extension's own copy of the block page, with the query
    // ("?old_url=…&block_type=…") as given: only the tab's own connection gets the
    // order.
    virtual void showBlockPage(const BrowserTab& tab, const QString& query) = 0;

    // The family of a desktop application name ("firefox-esr" → "firefox"); empty
    // for anything that is not a browser we have an extension for.
    static QString familyOfApplication(const QString& applicationName);

Q_SIGNALS:
    // A tab starts loading an address, commits one, changes it in the page's own
    // history, or becomes the active tab.
    void tabChanged(const velmora::BrowserTab& tab);
    void connectionsChanged();
};

inline QString BrowserTabs::familyOfApplication(const QString& applicationName)
{
    static const QList<std::pair<QString, QStringList>> families = {
        {QStringLiteral("firefox"),
         {QStringLiteral("firefox"), QStringLiteral("firefox-esr"), QStringLiteral("org.mozilla.firefox")}},
        {QStringLiteral("chromium"),
         {QStringLiteral("chromium"), QStringLiteral("chromium-browser"),
          QStringLiteral("org.chromium.chromium")}},
        {QStringLiteral("google-chrome"),
         {QStringLiteral("google-chrome"), QStringLiteral("google-chrome-stable"),
          QStringLiteral("google-chrome-beta"), QStringLiteral("google-chrome-unstable"),
          QStringLiteral("com.google.chrome")}},
        {QStringLiteral("brave"), {QStringLiteral("brave-browser"), QStringLiteral("com.brave.browser")}},
        {QStringLiteral("edge"),
         {QStringLiteral("microsoft-edge"), QStringLiteral("microsoft-edge-stable"),
          QStringLiteral("microsoft-edge-beta"), QStringLiteral("com.microsoft.edge")}},
        {QStringLiteral("vivaldi"),
         {QStringLiteral("vivaldi"), QStringLiteral("vivaldi-stable"),
          QStringLiteral("com.vivaldi.vivaldi")}},
    };
    for (const auto& [family, names] : families) {
        if (names.contains(applicationName))
            return family;
    }
    return {};
}

} // namespace velmora
