// The application blocker and the address checks it starts, on a fake desktop
// and fake browsers, in virtual time.
#include "AppBlocker.h"
#include "DebugLog.h"
#include "FakeBrowserTabs.h"
#include "FakePorts.h"
#include "FocusBlockHost.h"
#include "FocusTypeList.h"
#include "RunState.h"
#include "TextCatalogue.h"
#include "UrlBlocker.h"

#include <QtTest>

using namespace velmora;
using namespace velmora::test;

namespace {

Application app(const QString& name, const QString& shown)
{
    return {name, shown, QStringLiteral("/usr/share/applications/%1.desktop").arg(name), {}};
}

// The block as the focus session answers it, without its end time.
struct TypeListBlock : FocusBlockHost
{
    FocusTypeList& t;
    explicit TypeListBlock(FocusTypeList& types)
        : t(types)
    {
    }
    bool isFocusModeOn() const override { return t.isFocusModeOn(); }
    QStringList onFocusTypeNames() const override { return {t.name(t.indexOfTypeOn())}; }
    QStringList allowAppsPath() const override { return t.allowAppsPath(); }
    bool isAllowedAllAppsInFocus() const override { return t.isAllowedAllAppsInFocus(); }
    QStringList allowUrl() const override { return t.allowUrl(); }
    bool isAllowedAllUrlsInFocus() const override { return t.isAllowedAllUrlsInFocus(); }
    std::optional<QDateTime> focusModeEndTime() const override { return std::nullopt; }
};

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

    // Fresh fakes for every test.
    struct World
    {
        FakePorts p;
        FakeBrowserTabs tabs;
        RunState state;
        TextCatalogue texts;
        DebugLog log{p.clock, {}};
        FocusTypeList types{state.arrFocusType, p.preferences, log};
        TypeListBlock block{types};
        UrlBlocker urls{{state, p.scheduler, p.workspace, &tabs, p.notifier, texts, log, block}};
        AppBlocker blocker{{state, p.scheduler, p.workspace, p.notifier, texts, log, block, urls, "Velmora"}};
    };
    std::unique_ptr<World> w;
    const Application alpha = app(QStringLiteral("alpha"), QStringLiteral("Alpha"));
    const Application beta = app(QStringLiteral("beta"), QStringLiteral("Beta"));
    const Application chromium = app(QStringLiteral("chromium"), QStringLiteral("Chromium"));
    const Application chrome = app(QStringLiteral("google-chrome"), QStringLiteral("Google Chrome"));

    void enter(Situation situation, const QStringList& itemApps = {}, const QStringList& itemUrls = {})
    {
        // The type that is on allows Alpha and Chromium, and docs.test.
        if (situation == Focus || situation == FocusAllApps)
            w->state.arrFocusType = {
                QVariantMap{{"name", "Deep"},
                            {"isOn", true},
                            {"isAllowedAllApps", situation == FocusAllApps},
                            {"appsArray", QStringList{"/usr/share/applications/alpha.desktop",
                                                      "/usr/share/applications/chromium.desktop"}},
                            {"urlsArray", QStringList{"docs.test"}}}};
        w->types.fillAllowAppArray();
        w->types.fillAllowUrlArray();
        w->state.currentAction = ACTION::_RUNNING_;
        if (situation == Activity) {
            w->state.currentState = CURRENTSTATE::_ACTIVITY_;
            w->state.currentActivityPlaying = breakActivity{};
            w->state.currentActivityPlaying->allowApps = itemApps;
            w->state.currentActivityPlaying->allowUrls = itemUrls;
        } else if (situation == MorningHabit) {
            w->state.currentState = CURRENTSTATE::_MORNING_HABIT_;
            w->state.currentHabitPlaying = habit{{}, 0, {}, false, {}, true, itemUrls, itemApps};
        }
    }

private Q_SLOTS:
    void init()
    {
        w = std::make_unique<World>();
        w->state.arrBlockedUrls = {QStringLiteral("news.test")};
        w->p.workspace.installed = {alpha, beta, chromium, chrome};
        w->tabs.connected = {QStringLiteral("chromium")};
        w->tabs.active.insert(QStringLiteral("chromium"),
                              {QStringLiteral("chromium"), 1, QStringLiteral("http://news.test/")});
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
        QTest::newRow("the screen locker is hidden, never reported")
            << int(Focus) << none << "light-locker" << true << none << noBlock;
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
        Application frontApp = w->p.workspace.applicationFor(front);
        if (!frontApp.isValid() && !front.isEmpty())
            frontApp = {front, front, {}, {}};
        w->p.workspace.activate(frontApp);
        QCOMPARE(w->p.workspace.hidden.contains(front), hidden);
        QCOMPARE(w->p.notifier.notifications, notified);
        QCOMPARE(w->tabs.blocked.isEmpty() ? QString() : w->tabs.blocked.last().second, blockQuery);
    }

    void reportedOncePerBlockAndAgainInTheNext()
    {
        enter(Focus);
        w->blocker.blockStarted();
        w->p.workspace.activate(beta);
        w->p.scheduler.advance(3000); // comes back to the front at every tick
        QCOMPARE(w->p.workspace.hidden.count(QStringLiteral("beta")), 4);
        QCOMPARE(w->p.notifier.notifications.size(), 1);
        w->blocker.blockEnded();
        w->p.scheduler.advance(3000);
        QCOMPARE(w->p.workspace.hidden.count(QStringLiteral("beta")), 4);
        w->blocker.blockStarted();
        QCOMPARE(w->p.notifier.notifications.size(), 2);
    }

    void itemLaunchesItsApplicationsAndFirstAddress()
    {
        enter(Activity, {QStringLiteral("Alpha"), QStringLiteral("Google Chrome"), QStringLiteral("Safari")},
              {QStringLiteral("docs.test/start"), QStringLiteral("https://second.test")});
        w->blocker.startTimerActivitiesAllowedApp();
        QCOMPARE(w->p.workspace.launched, (QStringList{"alpha", "google-chrome", "alpha"}));
        QCOMPARE(w->p.workspace.opened, QStringList{"http://docs.test/start"});
        w->p.workspace.front = beta;
        w->p.scheduler.advance(1000);
        QCOMPARE(w->p.workspace.hidden, QStringList{"beta"});
        w->state.currentActivityPlaying.reset(); // the item is over: the check ends by itself
        w->p.scheduler.advance(1000);
        QVERIFY(!w->blocker.isCheckingItem());
        w->p.scheduler.advance(3000);
        QCOMPARE(w->p.workspace.hidden.size(), 1);
    }

    void navigationJudgedAtOnce()
    {
        enter(Idle);
        w->tabs.active.clear();
        w->p.workspace.activate(chromium);
        QVERIFY(w->tabs.blocked.isEmpty());
        w->tabs.navigate(QStringLiteral("chromium"), QStringLiteral("https://www.news.test/today"));
        QCOMPARE(w->tabs.blocked.size(), 1);
        // The block page and the browser's own pages are left alone.
        w->tabs.navigate(QStringLiteral("chromium"),
                         QStringLiteral("chrome-extension://id/vlmr-focus.html?old_url=news.test"));
        w->tabs.navigate(QStringLiteral("chromium"), QStringLiteral("chrome://settings/news.test"));
        QCOMPARE(w->tabs.blocked.size(), 1);
        // Leaving the browser stops its check.
        w->p.workspace.activate(beta);
        w->tabs.navigate(QStringLiteral("chromium"), QStringLiteral("https://news.test/"));
        QCOMPARE(w->tabs.blocked.size(), 1);
    }

    void unreadableFrontMeansTheFocusedBrowser()
    {
        w->tabs.focused = QStringLiteral("chromium"); // a Wayland session: no front application
        w->tabs.navigate(QStringLiteral("chromium"), QStringLiteral("https://news.test/"));
        QCOMPARE(w->tabs.blocked.size(), 1);
    }
};

QTEST_MAIN(TestAppBlocker)
#include "tst_appblocker.moc"
