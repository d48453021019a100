#pragma once

#include "BrowserTabs.h"
#include "Scheduler.h"

#include <optional>
#include <QHash>
#include <QObject>
#include <QStringList>

namespace velmora {

class DebugLog;
class FocusBlockHost;
class Notifier;
class TextCatalogue;
class Workspace;
struct Application;
struct RunState;

// Sends the front browser's tab to the block page when its address is refused.
// Three modes, each with its own one-second timer and list: the always-blocked
// list when no block runs, the type's allowed addresses in a block, and the
// item's allowed addresses while a habit or break activity runs. The timers are
// started and stopped by the application blocker, which knows whether a browser
// is in front; every navigation the extension reports is judged at once by the
// modes whose timer runs.
class UrlBlocker : public QObject
{
    Q_OBJECT
public:
    struct Deps
    {
        RunState& state;
        Scheduler& scheduler;
        Workspace& workspace;
        BrowserTabs* tabs; // none: no browser is ever looked at
        Notifier& notifier;
        const TextCatalogue& texts;
        const DebugLog& log;
        FocusBlockHost& host;
    };

    explicit UrlBlocker(Deps deps, QObject* parent = nullptr);

    // The block page in the data folder, as a file address.
    void setBlockWebUrlString(const QString& address) { blockWebUrlString = address; }

    // Whether the application is a web browser: by its desktop entry, by the
    // families we know, or because its process runs our extension.
    bool isBrowser(const Application& application) const;
    // The extension's connection of the application's process (or, where the
    // process is unknown, of its family); nothing for an unconnected browser.
    std::optional<BrowserConnection> connectionOf(const Application& application) const;
    // The family of the application's connection; empty when it has none.
    QString connectedBrowser(const Application& application) const;
    // A new block: the browser notice may be shown again.
    void blockStarted() { m_toldThisBlock.clear(); }

    void startBlockUrlTimer();
    void stopBlockUrlTimer();
    void startAllowUrlTimer();
    void stopAllowUrlTimer();
    bool isAllowUrlTimerValid() const;
    void startAllowUrlForActivityTimer();
    void stopAllowUrlForActivityTimer();

    // The three ticks. Without a tab they read the front browser's active tab;
    // with one (a navigation just reported) they judge that tab.
    void blockUrlsInBackground(const std::optional<BrowserTab>& reported = std::nullopt);
    void checkInBackground(const std::optional<BrowserTab>& reported = std::nullopt);
    void checkInBackgroundForActivity(const std::optional<BrowserTab>& reported = std::nullopt);

    // "YYYY-MM-dd'T'hh:mm:ss": a week-based year and a 12-hour clock without a
    // mark, as the block page has always received it.
    static QString focusModeEndTimeText(const QDateTime& end);

    // Address fragments never refused in a block or an item.
    static const QStringList defaultAllowedUrl;

Q_SIGNALS:
    // A browser's extension connected or went away: the browser in front may have
    // become one we can see.
    void browsersChanged();

private:
    // The reported tab when it belongs to the browser window in front; without
    // one, the browser is asked for its active tab and nothing is returned. When no
    // browser is in front, timerAllowUrl stops, as every tick does; when the front
    // browser window is one the extension cannot see, it is hidden shortly after.
    std::optional<BrowserTab> tabToJudge(const std::optional<BrowserTab>& reported);
    // Whether a mode whose timer runs refuses some address now.
    bool restrictsAddresses() const;
    void suspectUnjudgeable(const Application& front, const std::optional<BrowserConnection>& connection);
    // Hides the front browser window if it still belongs to the process and is still
    // one the extension cannot see.
    void hideIfUnjudgeable(const QString& process);
    static QString processKey(const Application& application);
    bool isOwnBlockPage(const QString& address) const;
    static bool isBrowserOwnPage(const BrowserTab& tab);
    static bool containsAny(const QString& address, const QStringList& fragments);
    static bool matchesAny(const BrowserTab& tab, const QStringList& list);
    void redirect(const BrowserTab& tab, const QString& query);
    void judgeReported(const BrowserTab& tab);
    // Whether the type that is on lets the browser's application in front.
    bool isAllowedInFocus(const QString& browser) const;
    void stop(std::optional<TimerId>& timer);

    Deps d;
    QString blockWebUrlString;
    std::optional<TimerId> timerBlockUrl;
    std::optional<TimerId> timerAllowUrl;
    std::optional<TimerId> timerAllowUrlForActivity;
    struct Verdict
    {
        TimerId id = 0;
        bool waitingForStart = false; // the long wait of a browser just started
    };
    QHash<QString, Verdict> m_verdicts; // by process: a window of it is on probation
    QStringList m_waitedForExtension;   // browser processes given their time to connect
    QStringList m_toldThisBlock;
};

} // namespace velmora
