#include "AppBlocker.h"

#include "DebugLog.h"
#include "FocusBlockHost.h"
#include "Notifier.h"
#include "RunState.h"
#include "TextCatalogue.h"
#include "UrlBlocker.h"

#include <QFileInfo>

namespace velmora {

namespace {

constexpr qint64 kTickMs = 1000;

// The session's screen locker takes the front at every unlock; like the login
// window elsewhere it is hidden like any other program but never reported.
bool isScreenLocker(const QString& name)
{
    static const QStringList lockers = {QStringLiteral("loginwindow"),
                                        QStringLiteral("xscreensaver"),
                                        QStringLiteral("light-locker"),
                                        QStringLiteral("gnome-screensaver"),
                                        QStringLiteral("cinnamon-screensaver"),
                                        QStringLiteral("mate-screensaver"),
                                        QStringLiteral("xfce4-screensaver"),
                                        QStringLiteral("kscreenlocker_greet"),
                                        QStringLiteral("i3lock"),
                                        QStringLiteral("xsecurelock"),
                                        QStringLiteral("slock"),
                                        QStringLiteral("xlock")};
    return lockers.contains(name.toLower());
}

bool isItemRunning(const RunState& state, CURRENTSTATE item)
{
    return state.currentState == item && state.currentAction == ACTION::_RUNNING_;
}

} // namespace

AppBlocker::AppBlocker(Deps deps, QObject* parent)
    : QObject(parent)
    , d(std::move(deps))
{
    connect(&d.workspace, &Workspace::frontApplicationChanged, this, &AppBlocker::frontApplicationChanged);
    connect(&d.urls, &UrlBlocker::browsersChanged, this, &AppBlocker::frontApplicationChanged);
}

void AppBlocker::stop(std::optional<TimerId>& timer)
{
    if (timer)
        d.scheduler.cancel(*timer);
    timer.reset();
}

QString AppBlocker::spelledName(const Application& application)
{
    return application.displayName.isEmpty() ? application.name : application.displayName;
}

bool AppBlocker::isAlwaysAllowed(const QString& name) const
{
    return name == QStringLiteral("finder") || name == d.selfAppName.toLower();
}

bool AppBlocker::isInAllowAppsPath(const QString& name)
{
    for (const QString& path : d.host.allowAppsPath()) {
        // The entry's own name: its desktop-file id, or the file name without
        // ".desktop" when the entry is not installed.
        const Application entry = d.workspace.applicationFor(path);
        const QString entryName = entry.isValid() ? entry.name : QFileInfo(path).completeBaseName().toLower();
        if (entryName == name)
            return true;
    }
    return false;
}

bool AppBlocker::isInItemList(const Application& application, const QStringList& allowApps)
{
    for (const QString& entry : allowApps) {
        // Whole names only; an entry may also be the name shown in menus
        // ("Google Chrome" for google-chrome). "firefox.desktop" names nothing.
        if (entry.toLower() == application.name || d.workspace.applicationFor(entry).name == application.name)
            return true;
    }
    return false;
}

void AppBlocker::blockStarted()
{
    arrNotificationShownForApps.clear();
    d.urls.blockStarted();
    stop(timerCheckAllowedApps);
    timerCheckAllowedApps = d.scheduler.repeating(kTickMs, this, [this] { checkAllowedApp(); });
    frontApplicationChanged();
}

void AppBlocker::blockEnded()
{
    stop(timerCheckAllowedApps);
    d.urls.stopAllowUrlTimer();
    // A browser left in front through the end of a block would otherwise load
    // always-blocked pages until the user switched applications.
    frontApplicationChanged();
}

void AppBlocker::frontApplicationChanged()
{
    d.urls.stopBlockUrlTimer();
    d.urls.stopAllowUrlForActivityTimer();
    const RunState& s = d.state;
    if (isItemRunning(s, CURRENTSTATE::_ACTIVITY_) && s.currentActivityPlaying) {
        const Application front = d.workspace.frontmostApplication();
        if (front.isValid())
            judgeForItem(front, s.currentActivityPlaying ? &s.currentActivityPlaying->allowApps : nullptr);
        return;
    }
    if (s.currentAction == ACTION::_RUNNING_ &&
        (s.currentState == CURRENTSTATE::_MORNING_HABIT_ ||
         s.currentState == CURRENTSTATE::_EVENING_HABIT_) &&
        s.currentHabitPlaying) {
        const Application front = d.workspace.frontmostApplication();
        if (front.isValid())
            judgeForItem(front, s.currentHabitPlaying ? &s.currentHabitPlaying->allowApps : nullptr);
        return;
    }
    const Application front = d.workspace.frontmostApplication();
    if (!front.isValid())
        return;
    if (!d.host.isFocusModeOn()) {
        if (d.urls.isBrowser(front))
            d.urls.startBlockUrlTimer();
        return;
    }
    judgeForFocus(front);
}

void AppBlocker::judgeForItem(const Application& front, const QStringList* allowApps)
{
    if (!allowApps)
        return;
    if (!isAlwaysAllowed(front.name) && !isInItemList(front, *allowApps)) {
        d.workspace.hide(front); // no message for an item
        return;
    }
    if (d.urls.isBrowser(front))
        d.urls.startAllowUrlForActivityTimer();
}

void AppBlocker::judgeForFocus(const Application& front)
{
    const bool allowed =
        d.host.isAllowedAllAppsInFocus() || isAlwaysAllowed(front.name) || isInAllowAppsPath(front.name);
    if (!allowed) {
        refuseInFocus(front);
        return;
    }
    // A browser, seen by its extension or not: the address check judges it, or
    // hides a window it cannot see. Anything else: a running address check stops
    // itself at its next tick.
    if (d.urls.isBrowser(front))
        d.urls.startAllowUrlTimer();
}

void AppBlocker::refuseInFocus(const Application& front)
{
    d.workspace.hide(front);
    showFocusAppBlockNotification(spelledName(front));
    d.urls.stopAllowUrlTimer();
}

void AppBlocker::checkAllowedApp()
{
    if (d.host.isAllowedAllAppsInFocus())
        return;
    const Application front = d.workspace.frontmostApplication();
    if (!front.isValid() || isAlwaysAllowed(front.name) || isInAllowAppsPath(front.name))
        return;
    refuseInFocus(front);
}

std::optional<QStringList> AppBlocker::playingItemList() const
{
    const RunState& s = d.state;
    if (isItemRunning(s, CURRENTSTATE::_ACTIVITY_) && s.currentActivityPlaying)
        return s.currentActivityPlaying->allowApps;
    if (s.currentAction == ACTION::_RUNNING_ &&
        (s.currentState == CURRENTSTATE::_MORNING_HABIT_ ||
         s.currentState == CURRENTSTATE::_EVENING_HABIT_) &&
        s.currentHabitPlaying)
        return s.currentHabitPlaying->allowApps;
    return std::nullopt;
}

void AppBlocker::startTimerActivitiesAllowedApp()
{
    stop(timerAllowAppForActivity);
    timerAllowAppForActivity = d.scheduler.repeating(kTickMs, this, [this] { checkActivityAllowedApp(); });

    QStringList allowApps;
    QStringList allowUrls;
    switch (d.state.currentState) {
    case CURRENTSTATE::_MORNING_HABIT_:
    case CURRENTSTATE::_EVENING_HABIT_:
        if (!d.state.currentHabitPlaying)
            return;
        allowApps = d.state.currentHabitPlaying->allowApps;
        allowUrls = d.state.currentHabitPlaying->allowUrls;
        break;
    case CURRENTSTATE::_ACTIVITY_:
        if (!d.state.currentActivityPlaying)
            return;
        allowApps = d.state.currentActivityPlaying->allowApps;
        allowUrls = d.state.currentActivityPlaying->allowUrls;
        break;
    default:
        return;
    }
    launchAllowedApps(allowApps);
    if (!allowUrls.isEmpty()) {
        QString address = allowUrls.first();
        const QString lower = address.toLower();
        if (!lower.contains(QStringLiteral("http://")) && !lower.contains(QStringLiteral("https://")))
            address.prepend(QStringLiteral("http://"));
        d.workspace.openUrl(address);
    }
}

void AppBlocker::launchAllowedApps(const QStringList& allowApps)
{
    if (allowApps.isEmpty())
        return;
    // Each in order, then the first once more so that it ends up in front.
    QStringList order = allowApps;
    order << allowApps.first();
    for (const QString& name : std::as_const(order)) {
        const Application application = d.workspace.applicationFor(name);
        if (!application.isValid()) {
            d.log.addLog(QStringLiteral("No installed application is called %1").arg(name));
            continue;
        }
        d.workspace.launch(application);
    }
}

void AppBlocker::checkActivityAllowedApp()
{
    const std::optional<QStringList> list = playingItemList();
    if (!list) {
        stop(timerAllowAppForActivity); // the item is over
        return;
    }
    const Application front = d.workspace.frontmostApplication();
    if (!front.isValid() || isAlwaysAllowed(front.name) || isInItemList(front, *list))
        return;
    d.workspace.hide(front);
    d.urls.stopAllowUrlForActivityTimer();
}

void AppBlocker::itemAllowListsOver()
{
    d.urls.stopAllowUrlForActivityTimer();
    stop(timerAllowAppForActivity);
}

void AppBlocker::showFocusAppBlockNotification(const QString& appName)
{
    if (arrNotificationShownForApps.contains(appName))
        return;
    if (isScreenLocker(appName))
        return;
    arrNotificationShownForApps << appName;
    QString title = d.texts.text("common", "appBlockNotificationTitle",
                                 QStringLiteral("<APP_NAME> isn't allowed in the <FOCUS_NAME> focus mode."));
    const QStringList names = d.host.onFocusTypeNames();
    title.replace(QStringLiteral("<APP_NAME>"), appName);
    title.replace(QStringLiteral("<FOCUS_NAME>"), names.isEmpty() ? QString() : names.first());
    d.notifier.notify(title);
}

bool AppBlocker::isCheckingFocusBlock() const
{
    return timerCheckAllowedApps && d.scheduler.isActive(*timerCheckAllowedApps);
}

bool AppBlocker::isCheckingItem() const
{
    return timerAllowAppForActivity && d.scheduler.isActive(*timerAllowAppForActivity);
}

} // namespace velmora
