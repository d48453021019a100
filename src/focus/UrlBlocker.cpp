#include "UrlBlocker.h"

#include "DebugLog.h"
#include "FocusBlockHost.h"
#include "Notifier.h"
#include "RunState.h"
#include "TextCatalogue.h"
#include "urlValidation.h"
#include "Workspace.h"

#include <QUrl>

namespace velmora {

namespace {

constexpr qint64 kTickMs = 1000;
// How long the extension has to report that one of its windows took the focus,
// and how long a browser process without any connection has for its extension to
// connect (a browser just started) before its windows count as unseen.
constexpr qint64 kVerdictMs = 400;
constexpr qint64 kFirstConnectMs = 10000;

// The characters that percent encoding leaves alone for a host and for a query.
const QByteArray kHostAllowed = QByteArrayLiteral("!$&'()*+,-.:;=[]_~");
const QByteArray kQueryAllowed = QByteArrayLiteral("!$&'()*+,-./:;=?@_~");

QString encoded(const QString& text, const QByteArray& allowed)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text, allowed));
}

} // namespace

const QStringList UrlBlocker::defaultAllowedUrl = {
    QStringLiteral("vlmr-focus.html"), QStringLiteral("velmora.app"), QStringLiteral("devtools://"),
    QStringLiteral("chrome-extension://"), QStringLiteral("view-source:")};

UrlBlocker::UrlBlocker(Deps deps, QObject* parent)
    : QObject(parent)
    , d(deps)
{
    if (!d.tabs)
        return;
    connect(d.tabs, &BrowserTabs::tabChanged, this, &UrlBlocker::judgeReported);
    connect(d.tabs, &BrowserTabs::connectionsChanged, this, &UrlBlocker::browsersChanged);
}

std::optional<BrowserConnection> UrlBlocker::connectionOf(const Application& application) const
{
    if (!d.tabs)
        return std::nullopt;
    const QList<BrowserConnection> connections = d.tabs->connections();
    // By process where both sides know it: a fork or a second profile is its own
    // browser, whatever its name.
    if (application.pid > 0) {
        for (const BrowserConnection& connection : connections) {
            if (connection.pid == application.pid)
                return connection;
        }
    }
    const QString family = BrowserTabs::familyOfApplication(application.name);
    if (family.isEmpty())
        return std::nullopt;
    std::optional<BrowserConnection> found;
    for (const BrowserConnection& connection : connections) {
        // A connection whose process we know belongs to another window's process.
        if (connection.browser != family || (application.pid > 0 && connection.pid > 0))
            continue;
        if (!found || connection.focused)
            found = connection;
    }
    return found;
}

bool UrlBlocker::isBrowser(const Application& application) const
{
    return d.tabs &&
           (application.webBrowser || !BrowserTabs::familyOfApplication(application.name).isEmpty() ||
            connectionOf(application));
}

QString UrlBlocker::connectedBrowser(const Application& application) const
{
    const std::optional<BrowserConnection> connection = connectionOf(application);
    return connection ? connection->browser : QString();
}

bool UrlBlocker::restrictsAddresses() const
{
    if (timerAllowUrlForActivity && (d.state.currentActivityPlaying || d.state.currentHabitPlaying))
        return true;
    if (d.host.isFocusModeOn())
        return timerAllowUrl && !d.host.isAllowedAllUrlsInFocus();
    return timerBlockUrl && !d.state.arrBlockedUrls.isEmpty();
}

void UrlBlocker::suspectUnjudgeable(const Application& front,
                                    const std::optional<BrowserConnection>& connection)
{
    if (!restrictsAddresses())
        return;
    // The extension reports a window's focus a moment after the window system
    // does: give it that moment before calling the window unseen. A browser process
    // that never connected, or never yet reported a focused window (just started,
    // its focus still settling), gets once the time its extension needs to start.
    const QString process = processKey(front);
    const bool starting = !connection || !connection->everFocused;
    const bool firstWait = starting && !m_waitedForExtension.contains(process);
    if (const auto pending = m_verdicts.constFind(process);
        pending != m_verdicts.cend() && d.scheduler.isActive(pending->id)) {
        // A browser that has since shown its extension working gets no more time.
        if (starting || !pending->waitingForStart)
            return;
        d.scheduler.cancel(pending->id);
    }
    if (firstWait)
        m_waitedForExtension << process;
    // The browser's own word on its focus, should an event have gone missing.
    if (connection)
        d.tabs->requestActiveTab(connection->id);
    const TimerId id =
        d.scheduler.singleShot(firstWait ? kFirstConnectMs : kVerdictMs, this, [this, process] {
            m_verdicts.remove(process);
            hideIfUnjudgeable(process);
        });
    m_verdicts.insert(process, {id, firstWait});
}

QString UrlBlocker::processKey(const Application& application)
{
    return application.pid > 0 ? QString::number(application.pid) : application.name;
}

void UrlBlocker::hideIfUnjudgeable(const QString& process)
{
    const Application front = d.workspace.frontmostApplication();
    if (!front.isValid() || processKey(front) != process || front.dialog || !isBrowser(front) ||
        !restrictsAddresses())
        return;
    const std::optional<BrowserConnection> connection = connectionOf(front);
    if (connection && connection->focused)
        return;
    const QString name = front.displayName.isEmpty() ? front.name : front.displayName;
    d.log.addLog(
        QStringLiteral("%1 hidden: its front window (process %2) is one the extension cannot see (%3)")
            .arg(name)
            .arg(front.pid)
            .arg(connection ? QStringLiteral("a private window") : QStringLiteral("no extension connected")));
    d.workspace.hide(front);
    if (m_toldThisBlock.contains(name))
        return;
    m_toldThisBlock << name;
    QString text = d.texts.text(
        "common", "browserWindowUnseenText",
        QStringLiteral("<BROWSER> was hidden: Velmora can’t see which address this window shows. Add the "
                       "Velmora extension to this browser and profile, and allow it in private windows "
                       "(Chromium: Extensions › Velmora › Details › “Allow in Incognito”; Firefox: Add-ons › "
                       "Velmora › “Run in Private Windows”)."));
    d.notifier.notify(text.replace(QStringLiteral("<BROWSER>"), name));
}

void UrlBlocker::stop(std::optional<TimerId>& timer)
{
    if (timer)
        d.scheduler.cancel(*timer);
    timer.reset();
}

void UrlBlocker::startBlockUrlTimer()
{
    stop(timerBlockUrl);
    timerBlockUrl = d.scheduler.repeating(kTickMs, this, [this] { blockUrlsInBackground(); });
    blockUrlsInBackground();
}

void UrlBlocker::stopBlockUrlTimer()
{
    stop(timerBlockUrl);
}

void UrlBlocker::startAllowUrlTimer()
{
    stop(timerAllowUrl);
    if (isAllowUrlTimerValid()) {
        d.log.addLog(QStringLiteral("timerAllowUrl is not invalid"));
        stop(timerAllowUrl);
    }
    timerAllowUrl = d.scheduler.repeating(kTickMs, this, [this] { checkInBackground(); });
    checkInBackground();
}

void UrlBlocker::stopAllowUrlTimer()
{
    stop(timerAllowUrl);
}

bool UrlBlocker::isAllowUrlTimerValid() const
{
    return timerAllowUrl && d.scheduler.isActive(*timerAllowUrl);
}

void UrlBlocker::startAllowUrlForActivityTimer()
{
    stop(timerAllowUrlForActivity);
    timerAllowUrlForActivity =
        d.scheduler.repeating(kTickMs, this, [this] { checkInBackgroundForActivity(); });
    checkInBackgroundForActivity();
}

void UrlBlocker::stopAllowUrlForActivityTimer()
{
    stop(timerAllowUrlForActivity);
}

std::optional<BrowserTab> UrlBlocker::tabToJudge(const std::optional<BrowserTab>& reported)
{
    if (!d.tabs)
        return std::nullopt;
    const Application front = d.workspace.frontmostApplication();
    if (!front.isValid()) {
        // Where the front application cannot be read (Wayland), the browser that
        // reports one of its windows focused is the one in front.
        const QString browser = d.tabs->focusedBrowser();
        if (browser.isEmpty()) {
            stopAllowUrlTimer();
            return std::nullopt;
        }
        if (reported)
            return reported->browser == browser ? reported : std::nullopt;
        // The tick asks that browser what it shows now, as below.
        for (const BrowserConnection& connection : d.tabs->connections()) {
            if (connection.browser == browser && connection.focused) {
                d.tabs->requestActiveTab(connection.id);
                return std::nullopt;
            }
        }
        return d.tabs->activeTab(browser);
    }
    if (!isBrowser(front)) {
        // Every tick stops the focus timer when no browser is in front.
        stopAllowUrlTimer();
        return std::nullopt;
    }
    const std::optional<BrowserConnection> connection = connectionOf(front);
    if (!connection || !connection->focused) {
        // A private window, a profile without the extension, a browser without it:
        // its addresses cannot be judged. The browser's own dialogs are its own.
        if (!front.dialog)
            suspectUnjudgeable(front, connection);
        return std::nullopt;
    }
    if (reported) {
        const bool ours = reported->connection.isEmpty() ? reported->browser == connection->browser
                                                         : reported->connection == connection->id;
        return ours ? reported : std::nullopt;
    }
    // The tick asks the browser what it shows now; the answer is judged as it comes.
    d.tabs->requestActiveTab(connection->id);
    return std::nullopt;
}

bool UrlBlocker::isOwnBlockPage(const QString& address) const
{
    if (!blockWebUrlString.isEmpty() && address.contains(blockWebUrlString))
        return true;
    // The copy of the block page that browsers are sent to is the extension's.
    return (address.startsWith(QStringLiteral("chrome-extension://")) ||
            address.startsWith(QStringLiteral("moz-extension://"))) &&
           address.contains(QStringLiteral("/vlmr-focus.html"));
}

bool UrlBlocker::isBrowserOwnPage(const BrowserTab& tab)
{
    // Each browser has only its own exception.
    if (tab.browser == QStringLiteral("firefox"))
        return tab.address.contains(QStringLiteral("about:"));
    return tab.address.contains(QStringLiteral("chrome:"));
}

bool UrlBlocker::containsAny(const QString& address, const QStringList& fragments)
{
    for (const QString& fragment : fragments) {
        if (address.contains(fragment))
            return true;
    }
    return false;
}

bool UrlBlocker::matchesAny(const BrowserTab& tab, const QStringList& list)
{
    return matchesAnyEntry(tab.address, tab.host, list);
}

void UrlBlocker::redirect(const BrowserTab& tab, const QString& query)
{
    d.tabs->showBlockPage(tab, query);
}

void UrlBlocker::blockUrlsInBackground(const std::optional<BrowserTab>& reported)
{
    if (d.host.isFocusModeOn()) {
        stopBlockUrlTimer();
        return;
    }
    const std::optional<BrowserTab> tab = tabToJudge(reported);
    if (!tab || isBrowserOwnPage(*tab) || isOwnBlockPage(tab->address))
        return;
    if (!matchesAny(*tab, d.state.arrBlockedUrls))
        return;
    redirect(*tab, QStringLiteral("?old_url=") + encoded(tab->address, kHostAllowed) +
                       QStringLiteral("&block_type=always-blocked"));
}

QString UrlBlocker::focusModeEndTimeText(const QDateTime& end)
{
    int weekYear = 0;
    end.date().weekNumber(&weekYear);
    const int hour12 = end.time().hour() % 12 == 0 ? 12 : end.time().hour() % 12;
    return QStringLiteral("%1-%2T%3:%4")
        .arg(weekYear, 4, 10, QLatin1Char('0'))
        .arg(end.toString(QStringLiteral("MM-dd")))
        .arg(hour12, 2, 10, QLatin1Char('0'))
        .arg(end.toString(QStringLiteral("mm:ss")));
}

void UrlBlocker::checkInBackground(const std::optional<BrowserTab>& reported)
{
    if (!d.host.isFocusModeOn()) {
        stopAllowUrlTimer();
        return;
    }
    if (d.host.isAllowedAllUrlsInFocus())
        return;
    const std::optional<QDateTime> end = d.host.focusModeEndTime();
    const QString endParameter =
        QStringLiteral("&focus_mode_end_time=") + (end ? focusModeEndTimeText(*end) : QString());
    const QStringList names = d.host.onFocusTypeNames();
    const QString focusName = names.isEmpty() ? QString() : names.last();

    const std::optional<BrowserTab> tab = tabToJudge(reported);
    if (!tab || containsAny(tab->address, defaultAllowedUrl) || isBrowserOwnPage(*tab))
        return;
    if (matchesAny(*tab, d.host.allowUrl()))
        return;
    redirect(*tab, QStringLiteral("?old_url=") + encoded(tab->address, kHostAllowed) +
                       encoded(endParameter, kQueryAllowed) + QStringLiteral("&focus_mode=") +
                       encoded(focusName, kQueryAllowed));
}

void UrlBlocker::checkInBackgroundForActivity(const std::optional<BrowserTab>& reported)
{
    if (!d.state.currentActivityPlaying && !d.state.currentHabitPlaying) {
        stopAllowUrlForActivityTimer();
        return;
    }
    const std::optional<BrowserTab> tab = tabToJudge(reported);
    if (!tab || containsAny(tab->address, defaultAllowedUrl) || isBrowserOwnPage(*tab))
        return;
    QStringList allowUrls;
    QString blockType;
    switch (d.state.currentState) {
    case CURRENTSTATE::_ACTIVITY_:
        if (d.state.currentActivityPlaying)
            allowUrls = d.state.currentActivityPlaying->allowUrls;
        blockType = QStringLiteral("break-activity");
        break;
    case CURRENTSTATE::_EVENING_HABIT_:
    case CURRENTSTATE::_MORNING_HABIT_:
        if (d.state.currentHabitPlaying)
            allowUrls = d.state.currentHabitPlaying->allowUrls;
        blockType = d.state.currentState == CURRENTSTATE::_EVENING_HABIT_ ? QStringLiteral("evening-habit")
                                                                          : QStringLiteral("morning-habit");
        break;
    default:
        break;
    }
    if (matchesAny(*tab, allowUrls))
        return;
    // The address is left out in this mode: the block page cannot lead back to it.
    redirect(*tab, QStringLiteral("?old_url=&block_type=") + blockType);
}

void UrlBlocker::judgeReported(const BrowserTab& tab)
{
    if (timerBlockUrl || timerAllowUrl || timerAllowUrlForActivity) {
        if (timerBlockUrl)
            blockUrlsInBackground(tab);
        if (timerAllowUrl)
            checkInBackground(tab);
        if (timerAllowUrlForActivity)
            checkInBackgroundForActivity(tab);
        return;
    }
    // Where the front application cannot be read (a Wayland session) no timer is
    // ever started: the browser whose window has the focus is the one in front, and
    // its navigations are judged by the mode of the moment.
    if (d.workspace.frontmostApplication().isValid() || d.tabs->focusedBrowser() != tab.browser)
        return;
    if (d.state.currentActivityPlaying || d.state.currentHabitPlaying)
        checkInBackgroundForActivity(tab);
    else if (!d.host.isFocusModeOn())
        blockUrlsInBackground(tab);
    else if (isAllowedInFocus(tab.browser))
        checkInBackground(tab);
}

bool UrlBlocker::isAllowedInFocus(const QString& browser) const
{
    if (d.host.isAllowedAllAppsInFocus())
        return true;
    for (const QString& path : d.host.allowAppsPath()) {
        const Application entry = d.workspace.applicationFor(path);
        if (BrowserTabs::familyOfApplication(entry.name) == browser)
            return true;
    }
    return false;
}

} // namespace velmora
