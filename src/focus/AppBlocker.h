#pragma once

#include "Scheduler.h"
#include "Workspace.h"

#include <optional>
#include <QObject>
#include <QStringList>

namespace velmora {

class DebugLog;
class FocusBlockHost;
class Notifier;
class TextCatalogue;
class UrlBlocker;
struct RunState;

// Keeps only permitted applications in front. Nothing is closed: a refused
// application is hidden, and whatever comes to the front next is judged in its
// turn. Two lists judge: the type that is on during a focus block, and the
// allowed applications of the habit or break activity whose timer runs. The
// decision is taken at every change of the front application and by a repeating
// one-second check; the blocker also starts the address checks of the browser in
// front.
class AppBlocker : public QObject
{
    Q_OBJECT
public:
    struct Deps
    {
        RunState& state;
        Scheduler& scheduler;
        Workspace& workspace;
        Notifier& notifier;
        const TextCatalogue& texts;
        const DebugLog& log;
        FocusBlockHost& host;
        UrlBlocker& urls;
        QString selfAppName;
    };

    explicit AppBlocker(Deps deps, QObject* parent = nullptr);

    // A block starts: names are reported again, the repeating check runs, and the
    // front application is judged at once.
    void blockStarted();
    // The block ends: the repeating check and the block's address check stop.
    void blockEnded();

    // The event handler of the workspace; also called at the start of a block.
    void frontApplicationChanged();
    // The repeating check of a focus block.
    void checkAllowedApp();
    // A habit or break activity with allowed applications starts its timer: they
    // are launched, the first allowed address opens, and everything else is kept
    // away until the item ends.
    void startTimerActivitiesAllowedApp();
    // The repeating check of such an item.
    void checkActivityAllowedApp();
    // The item is over: both of its checks stop.
    void itemAllowListsOver();
    void showFocusAppBlockNotification(const QString& appName);

    bool isCheckingFocusBlock() const;
    bool isCheckingItem() const;

private:
    bool isAlwaysAllowed(const QString& name) const;
    bool isInAllowAppsPath(const QString& name);
    bool isInItemList(const Application& application, const QStringList& allowApps);
    // The activity and habit branches of the event handler.
    void judgeForItem(const Application& front, const QStringList* allowApps);
    void judgeForFocus(const Application& front);
    void refuseInFocus(const Application& front);
    // The item list to judge by, as the state says; nothing when no item plays.
    std::optional<QStringList> playingItemList() const;
    void launchAllowedApps(const QStringList& allowApps);
    void stop(std::optional<TimerId>& timer);
    static QString spelledName(const Application& application);

    Deps d;
    QStringList arrNotificationShownForApps;
    std::optional<TimerId> timerCheckAllowedApps;
    std::optional<TimerId> timerAllowAppForActivity;
};

} // namespace velmora
