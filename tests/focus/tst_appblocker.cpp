// The application blocker and the address checks it starts, on a fake desktop
// and fake browsers, in virtual time.
#include "AppBlocker.h"
#include "DebugLog.h"
#include "FakeBrowserTabs.h"
#include "FakePorts.h"
#include "FocusBlockHost.h"
#include "RunState.h"
#include "TextCatalogue.h"
#include "UrlBlocker.h"

#include <QtTest>

using namespace velmora;
using namespace velmora::test;

namespace {

struct FakeBlock : FocusBlockHost
{
    bool on = false;
    bool allApps = false;
    bool allUrls = false;
    QStringList apps;
    QStringList urls;
    bool isFocusModeOn() const override { return on; }
    QStringList onFocusTypeNames() const override
    {
        return on ? QStringList{QStringLiteral("Deep")} : QStringList();
    }
    QStringList allowAppsPath() const override { return apps; }
    bool isAllowedAllAppsInFocus() const override { return allApps; }
    QStringList allowUrl() const override { return urls; }
    bool isAllowedAllUrlsInFocus() const override { return allUrls; }
    std::optional<QDateTime> focusModeEndTime() const override { return std::nullopt; }
};

Application app(const QString& name, const QString& shown)
{
    return {name, shown, QStringLiteral("/usr/share/applications/%1.desktop").arg(name), {}};
}

enum Situation
{
    Idle,
    Focus,
    FocusAllApps,
    Activity,
    MorningHabit
};

} // namespace

class TestAppBlocker : public QObject
{
    Q_OBJECT

    FakePorts p;
    FakeBrowserTabs tabs;
    RunState state;
    TextCatalogue texts;
    DebugLog log{p.clock, {}};
    FakeBlock block;
    std::unique_ptr<UrlBlocker> urls;
    std::unique_ptr<AppBlocker> blocker;
    const Application alpha = app(QStringLiteral("alpha"), QStringLiteral("Alpha"));
    const Application beta = app(QStringLiteral("beta"), QStringLiteral("Beta"));
    const Application chromium = app(QStringLiteral("chromium"), QStringLiteral("Chromium"));
    const Application chrome = app(QStringLiteral("google-chrome"), QStringLiteral("Google Chrome"));

    void enter(Situation situation, const QStringList& itemApps = {}, const QStringList& itemUrls = {})
    {
        block.on = situation == Focus || situation == FocusAllApps;
        block.allApps = situation == FocusAllApps;
        if (situation == Activity || situation == MorningHabit) {
            state.currentState =
                situation == Activity ? CURRENTSTATE::_ACTIVITY_ : CURRENTSTATE::_MORNING_HABIT_;
            state.currentAction = ACTION::_RUNNING_;
            habit item;
            item.allowApps = itemApps;
            item.allowUrls = itemUrls;
            item.openSpecificApps = !itemApps.isEmpty();
            if (situation == Activity) {
                breakActivity activity;
                activity.allowApps = itemApps;
                activity.allowUrls = itemUrls;
                state.currentActivityPlaying = activity;
            } else {
                state.currentHabitPlaying = item;
            }
        }
    }

private Q_SLOTS:
    void init()
    {
        state = RunState();
        block = FakeBlock();
        block.apps = {QStringLiteral("/usr/share/applications/alpha.desktop"),
                      QStringLiteral("/usr/share/applications/chromium.desktop")};
        block.urls = {QStringLiteral("docs.test")};
        state.arrBlockedUrls = {QStringLiteral("news.test")};
        p.workspace.installed = {alpha, beta, chromium, chrome};
        p.workspace.front = {};
        p.workspace.hidden.clear();
        p.workspace.launched.clear();
        p.workspace.opened.clear();
        p.notifier.notifications.clear();
        tabs.connected = {QStringLiteral("chromium")};
        tabs.active.clear();
        tabs.active.insert(QStringLiteral("chromium"),
                           {QStringLiteral("chromium"), 1, QStringLiteral("http://news.test/")});
        tabs.blocked.clear();
        urls = std::make_unique<UrlBlocker>(
            UrlBlocker::Deps{state, p.scheduler, p.workspace, &tabs, p.notifier, texts, log, block});
        blocker =
            std::make_unique<AppBlocker>(AppBlocker::Deps{state, p.scheduler, p.workspace, p.notifier, texts,
                                                          log, block, *urls, QStringLiteral("Velmora")});
    }

    void frontApplicationChanged_data()
    {
        QTest::addColumn<int>("situation");
        QTest::addColumn<QStringList>("itemApps");
        QTest::addColumn<QString>("front");
        QTest::addColumn<bool>("hidden");
        QTest::addColumn<QStringList>("notified");
        QTest::addColumn<QString>("blockQuery");

        const QStringList none;
        const QString noBlock;
        QTest::newRow("own window or desktop: never judged")
            << int(Focus) << none << "" << false << none << noBlock;
        QTest::newRow("finder stays allowed") << int(Focus) << none << "finder" << false << none << noBlock;
        QTest::newRow("our own name") << int(Focus) << none << "velmora" << false << none << noBlock;
        QTest::newRow("block refuses what the type does not list")
            << int(Focus) << none << "beta" << true
            << QStringList{"Beta isn't allowed in the Deep focus mode."} << noBlock;
        QTest::newRow("block allows a listed desktop entry")
            << int(Focus) << none << "alpha" << false << none << noBlock;
        QTest::newRow("block: allowed browser's address is checked at once")
            << int(Focus) << none << "chromium" << false << none
            << "?old_url=http:%2F%2Fnews.test%2F&focus_mode_end_time=&focus_mode=Deep";
        QTest::newRow("all applications allowed still starts the address check")
            << int(FocusAllApps) << none << "chromium" << false << none
            << "?old_url=http:%2F%2Fnews.test%2F&focus_mode_end_time=&focus_mode=Deep";
        QTest::newRow("browser without extension in a block: told how, once")
            << int(FocusAllApps) << none << "google-chrome" << false
            << QStringList{"Google Chrome can’t be checked in this focus block: add the Velmora extension to "
                           "it "
                           "(see “Browsers” in the README)."}
            << noBlock;
        QTest::newRow("no block: always-blocked list for a browser")
            << int(Idle) << none << "chromium" << false << none
            << "?old_url=http:%2F%2Fnews.test%2F&block_type=always-blocked";
        QTest::newRow("no block: nothing hidden") << int(Idle) << none << "beta" << false << none << noBlock;
        QTest::newRow("activity hides what it does not list, silently")
            << int(Activity) << QStringList{"Alpha"} << "beta" << true << none << noBlock;
        QTest::newRow("activity allows by shown name")
            << int(Activity) << QStringList{"Alpha"} << "alpha" << false << none << noBlock;
        QTest::newRow("item entries keep their extension")
            << int(Activity) << QStringList{"alpha.desktop"} << "alpha" << true << none << noBlock;
        QTest::newRow("habit's browser gets the item's address check")
            << int(MorningHabit) << QStringList{"chromium"} << "chromium" << false << none
            << "?old_url=&block_type=morning-habit";
    }
    void frontApplicationChanged()
    {
        QFETCH(int, situation);
        QFETCH(QStringList, itemApps);
        QFETCH(QString, front);
        QFETCH(bool, hidden);
        QFETCH(QStringList, notified);
        QFETCH(QString, blockQuery);
        enter(Situation(situation), itemApps);
        Application frontApp = p.workspace.applicationFor(front);
        if (!frontApp.isValid() && !front.isEmpty())
            frontApp = {front, front, {}, {}};
        p.workspace.activate(frontApp);
        QCOMPARE(p.workspace.hidden.contains(front), hidden);
        QCOMPARE(p.notifier.notifications, notified);
        QCOMPARE(tabs.blocked.isEmpty() ? QString() : tabs.blocked.last().second, blockQuery);
    }

    void reportedOncePerBlockAndAgainInTheNext()
    {
        enter(Focus);
        blocker->focusModeStartted();
        p.workspace.activate(beta);
        p.scheduler.advance(3000); // comes back to the front at every tick
        QCOMPARE(p.workspace.hidden.count(QStringLiteral("beta")), 4);
        QCOMPARE(p.notifier.notifications.size(), 1);
        blocker->focusModeEnded();
        p.scheduler.advance(3000);
        QCOMPARE(p.workspace.hidden.count(QStringLiteral("beta")), 4);
        blocker->focusModeStartted();
        QCOMPARE(p.notifier.notifications.size(), 2);
    }

    void screenLockerNeverReported()
    {
        enter(Focus);
        p.workspace.activate({QStringLiteral("light-locker"), QStringLiteral("Light-Locker"), {}, {}});
        blocker->showFocusAppBlockNotification(QStringLiteral("loginwindow"));
        QVERIFY(p.notifier.notifications.isEmpty());
    }

    void itemLaunchesItsApplicationsAndFirstAddress()
    {
        enter(Activity, {QStringLiteral("Alpha"), QStringLiteral("Google Chrome"), QStringLiteral("Safari")},
              {QStringLiteral("docs.test/start"), QStringLiteral("https://second.test")});
        blocker->startTimerActivitiesAllowedApp();
        QCOMPARE(p.workspace.launched, (QStringList{"alpha", "google-chrome", "alpha"}));
        QCOMPARE(p.workspace.opened, QStringList{"http://docs.test/start"});
        p.workspace.front = beta;
        p.scheduler.advance(1000);
        QCOMPARE(p.workspace.hidden, QStringList{"beta"});
        blocker->itemAllowListsOver();
        QVERIFY(!blocker->isCheckingItem());
        p.scheduler.advance(3000);
        QCOMPARE(p.workspace.hidden.size(), 1);
    }

    void itemCheckEndsWithTheItem()
    {
        enter(Activity, {QStringLiteral("Alpha")});
        blocker->startTimerActivitiesAllowedApp();
        state.currentActivityPlaying.reset();
        p.scheduler.advance(1000);
        QVERIFY(!blocker->isCheckingItem());
    }

    void navigationJudgedAtOnce()
    {
        enter(Idle);
        tabs.active.clear();
        p.workspace.activate(chromium);
        QVERIFY(tabs.blocked.isEmpty());
        tabs.navigate(QStringLiteral("chromium"), QStringLiteral("https://www.news.test/today"));
        QCOMPARE(tabs.blocked.size(), 1);
        // The block page and the browser's own pages are left alone.
        tabs.navigate(QStringLiteral("chromium"),
                      QStringLiteral("chrome-extension://id/vlmr-focus.html?old_url=news.test"));
        tabs.navigate(QStringLiteral("chromium"), QStringLiteral("chrome://settings/news.test"));
        QCOMPARE(tabs.blocked.size(), 1);
        // Leaving the browser stops its check.
        p.workspace.activate(beta);
        tabs.navigate(QStringLiteral("chromium"), QStringLiteral("https://news.test/"));
        QCOMPARE(tabs.blocked.size(), 1);
    }
};

QTEST_MAIN(TestAppBlocker)
#include "tst_appblocker.moc"
