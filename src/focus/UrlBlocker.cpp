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

QString UrlBlocker::connectedBrowser(const Application& application) const
{
    if (!d.tabs)
        return {};
    const QString family = BrowserTabs::familyOfApplication(application.name);
    return d.tabs->connectedBrowsers().contains(family) ? family : QString();
}

void UrlBlocker::tellHowToConnectOnce(const Application& application)
{
    const QString family = BrowserTabs::familyOfApplication(application.name);
    if (family.isEmpty() || !connectedBrowser(application).isEmpty() || m_toldThisBlock.contains(family))
        return;
    if (!d.host.isFocusModeOn() || d.host.isAllowedAllUrlsInFocus())
        return;
    m_toldThisBlock << family;
    const QString name = application.displayName.isEmpty() ? application.name : application.displayName;
    d.log.addLog(QStringLiteral("%1 is in front without the extension").arg(name));
    QString text =
        d.texts.text("common", "browserNotConnectedText",
                     QStringLiteral("<BROWSER> can’t be checked in this focus block: add the Velmora "
                                    "extension to it (see “Browsers” in the README)."));
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

QString UrlBlocker::frontBrowser() const
{
    if (!d.tabs)
        return {};
    const Application front = d.workspace.frontmostApplication();
    if (front.isValid())
        return connectedBrowser(front);
    return d.tabs->focusedBrowser();
}

std::optional<BrowserTab> UrlBlocker::tabToJudge(const std::optional<BrowserTab>& reported)
{
    const QString browser = frontBrowser();
    if (browser.isEmpty()) {
        // Every tick stops the focus timer when no browser is in front.
        stopAllowUrlTimer();
        return std::nullopt;
    }
    if (reported)
        return reported->browser == browser ? reported : std::nullopt;
    return d.tabs->activeTab(browser);
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

bool UrlBlocker::matchesAny(const QString& address, const QStringList& list)
{
    const QString domain = getDomainFromUrl(address);
    for (const QString& entry : list) {
        if (urlValidation::isUrlValid(address, entry, domain))
            return true;
    }
    return false;
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
    if (!matchesAny(tab->address, d.state.arrBlockedUrls))
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
    if (matchesAny(tab->address, d.host.allowUrl()))
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
    if (matchesAny(tab->address, allowUrls))
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
