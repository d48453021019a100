// The application blocker and the address checks it starts, on a fake desktop
// and fake browsers, in virtual time; and which list entry matches which address,
// quirks included.
#include "AppBlocker.h"
#include "DebugLog.h"
#include "FakeBrowserTabs.h"
#include "FakePorts.h"
#include "FocusBlockHost.h"
#include "FocusTypeList.h"
#include "RunState.h"
#include "TextCatalogue.h"
#include "UrlBlocker.h"
#include "urlValidation.h"

#include <QtTest>

using namespace velmora;
using namespace velmora::test;
using namespace Qt::StringLiterals;

namespace {

Application app(const QString& name, const QString& shown)
{
    return {name, shown, u"/usr/share/applications/%1.desktop"_s.arg(name), {}};
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
    const Application alpha = app(u"alpha"_s, u"Alpha"_s);
    const Application beta = app(u"beta"_s, u"Beta"_s);
    const Application chromium = app(u"chromium"_s, u"Chromium"_s);
    const Application chrome = app(u"google-chrome"_s, u"Google Chrome"_s);

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
        w->state.arrBlockedUrls = {u"news.test"_s};
        w->p.workspace.installed = {alpha, beta, chromium, chrome};
        w->tabs.connected = {u"chromium"_s};
        w->tabs.active.insert(u"chromium"_s, {u"chromium"_s, 1, u"http://news.test/"_s, {}, {}});
    }

    void frontApplicationChanged_data()
    {
        QTest::addColumn<int>("situation");
        QTest::addColumn<QStringList>("itemApps");
        QTest::addColumn<QString>("front");
        QTest::addColumn<bool>("hidden");
        QTest::addColumn<QStringList>("notified");
        QTest::addColumn<QString>("blockQuery");

        const auto row = [](const char* name, Situation situation, const QString& front, bool hidden,
                            const char* notified = nullptr, const char* query = nullptr,
                            const QStringList& itemApps = {}) {
            QTest::newRow(name) << int(situation) << itemApps << front << hidden
                                << (notified ? QStringList{notified} : QStringList()) << QString(query);
        };
        row("own window or desktop: never judged", Focus, "", false);
        row("the file manager stays allowed", Focus, "finder", false);
        row("our own name", Focus, "velmora", false);
        row("the screen locker is hidden, never reported", Focus, "light-locker", true);
        row("all applications allowed still starts the address check", FocusAllApps, "chromium", false,
            nullptr, "?old_url=http:%2F%2Fnews.test%2F&focus_mode_end_time=&focus_mode=Deep");
        row("activity hides what it does not list, silently", Activity, "beta", true, nullptr, nullptr,
            {"Alpha"});
        row("activity allows by shown name", Activity, "alpha", false, nullptr, nullptr, {"Alpha"});
        row("item entries keep their extension", Activity, "alpha", true, nullptr, nullptr,
            {"alpha.desktop"});
        row("habit's browser gets the item's address check", MorningHabit, "chromium", false, nullptr,
            "?old_url=&block_type=morning-habit", {"chromium"});
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

    // A browser window whose addresses nobody can read is hidden, a moment after it
    // comes to the front, when addresses are restricted.
    void windowsTheExtensionCannotSee_data()
    {
        QTest::addColumn<int>("situation");
        QTest::addColumn<Application>("front");
        QTest::addColumn<QString>("connected"); // with process 100
        QTest::addColumn<bool>("focused");
        QTest::addColumn<bool>("hidden");
        QTest::addColumn<QString>("blockQuery");
        auto withPid = [](Application a, qint64 pid, bool dialog = false) {
            return a.pid = pid, a.dialog = dialog, a;
        };
        QTest::newRow("private window in a block")
            << int(Focus) << chromium << "chromium" << false << true << "";
        QTest::newRow("its own dialog is left alone")
            << int(Focus) << withPid(chromium, 100, true) << "chromium" << false << false << "";
        QTest::newRow("another profile's process")
            << int(Focus) << withPid(chromium, 200) << "chromium" << true << true << "";
        QTest::newRow("no extension, always-blocked list")
            << int(Idle) << chrome << "" << false << true << "";
        QTest::newRow("a fork is known by its process")
            << int(Idle) << withPid(app(u"librewolf"_s, u"LibreWolf"_s), 100) << "librewolf" << true << false
            << "?old_url=http:%2F%2Fnews.test%2F&block_type=always-blocked";
        QTest::newRow("all addresses allowed: left alone")
            << int(FocusAllApps) << chrome << "" << false << false << "";
    }
    void windowsTheExtensionCannotSee()
    {
        QFETCH(int, situation);
        QFETCH(Application, front);
        QFETCH(QString, connected);
        QFETCH(bool, focused);
        QFETCH(bool, hidden);
        QFETCH(QString, blockQuery);
        enter(Situation(situation));
        if (situation == FocusAllApps) {
            QVariantMap type = w->state.arrFocusType[0].toMap();
            type.insert("isAllowedAllUrls", true);
            w->state.arrFocusType[0] = type;
            w->types.fillAllowUrlArray();
        }
        w->tabs.connected = connected.isEmpty() ? QStringList() : QStringList{connected};
        w->tabs.pids.insert(connected, 100);
        w->tabs.active = {{connected, {connected, 1, u"http://news.test/"_s, {}, connected}}};
        if (!focused)
            w->tabs.unfocused = {connected};
        w->p.workspace.activate(front);
        w->p.scheduler.advance(500);
        if (connected.isEmpty() || (front.pid && front.pid != 100)) { // first, time to connect
            QVERIFY(w->p.workspace.hidden.isEmpty());
            w->p.scheduler.advance(10000);
        }
        QCOMPARE(w->p.workspace.hidden.contains(front.name), hidden);
        QCOMPARE(w->p.notifier.notifications.size(), hidden ? 1 : 0);
        QCOMPARE(w->tabs.blocked.isEmpty() ? QString() : w->tabs.blocked.last().second, blockQuery);
    }

    void itemLaunchesItsApplicationsAndFirstAddress()
    {
        enter(Activity, {u"Alpha"_s, u"Google Chrome"_s, u"Safari"_s},
              {u"docs.test/start"_s, u"https://second.test"_s});
        w->blocker.startTimerActivitiesAllowedApp();
        QCOMPARE(w->p.workspace.launched, (QStringList{"alpha", "google-chrome", "alpha"}));
        QCOMPARE(w->p.workspace.opened, QStringList{"http://docs.test/start"});
    }

    void navigationJudgedAtOnce()
    {
        enter(Idle);
        w->tabs.active.clear();
        w->p.workspace.activate(chromium);
        QVERIFY(w->tabs.blocked.isEmpty());
        w->tabs.navigate(u"chromium"_s, u"https://www.news.test/today"_s);
        QCOMPARE(w->tabs.blocked.size(), 1);
        // The block page and the browser's own pages are left alone.
        w->tabs.navigate(u"chromium"_s, u"chrome-extension://id/vlmr-focus.html?old_url=news.test"_s);
        w->tabs.navigate(u"chromium"_s, u"chrome://settings/news.test"_s);
        QCOMPARE(w->tabs.blocked.size(), 1);
        // Leaving the browser stops its check.
        w->p.workspace.activate(beta);
        w->tabs.navigate(u"chromium"_s, u"https://news.test/"_s);
        QCOMPARE(w->tabs.blocked.size(), 1);
    }

    void alwaysBlockedAgainWhenABlockEnds()
    {
        enter(Focus);
        w->p.workspace.activate(chromium);
        w->blocker.blockStarted();
        w->types.setAllOff();
        w->types.fillAllowAppArray();
        w->blocker.blockEnded();
        // The browser never left the front, yet the always-blocked list holds again.
        w->tabs.navigate(u"chromium"_s, u"https://news.test/"_s);
        QCOMPARE(w->tabs.blocked.last().second.section(u'&', 1), u"block_type=always-blocked"_s);
    }

    void unreadableFrontMeansTheFocusedBrowser()
    {
        w->tabs.focused = u"chromium"_s; // a Wayland session: no front application
        w->tabs.navigate(u"chromium"_s, u"https://news.test/"_s);
        QCOMPARE(w->tabs.blocked.size(), 1);
    }

    void isUrlValid_data()
    {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("address");
        QTest::addColumn<bool>("matches");

        const auto row = [](const char* name, const char* entry, const char* address, bool matches) {
            QTest::newRow(name) << QString(entry) << QString(address) << matches;
        };
        row("fragment matches the www host", "example", "https://www.example.org/a", true);
        row("fragment matches a subdomain", "example.org", "https://m.example.org/", true);
        row("full address: its host, any path", "https://www.example.org/feed",
            "https://example.org/other?q=1", true);
        row("star form used as given: not the bare domain", "*.example.org", "https://example.org/", false);
        row("star form: a subdomain", "*.example.org", "https://video.example.org/", true);
        row("file entry: the whole address, exactly", "file:///Users/", "file:///Users/", true);
        row("file entry: a longer address is no match", "file:///Users/", "file:///Users/me/a.html", false);
        row("file entry with star", "file:///Users/*", "file:///Users/me/a.html", true);
        row("file entry: address without ://", "file:*", "about:blank", false);
        row("case differs: no match", "Example", "https://example.org/", false);
        row("no host: *x* fails", "*x*", "about:blank", false);
        row("no host: * passes", "*", "about:blank", true);
        row("www stays in the entry, not the host", "www.example.org", "https://www.example.org/", false);
        row("http without a readable host matches nothing", "httpbin.org", "https://elsewhere.test/", false);
        row("question mark is one character", "exam?le", "https://example.org/", true);
        row("devtools is an address", "devtools", "devtools://devtools/bundled/inspector.html", true);
    }
    void isUrlValid()
    {
        QFETCH(QString, entry);
        QFETCH(QString, address);
        QFETCH(bool, matches);
        QCOMPARE(urlValidation::isUrlValid(address, entry, velmora::getDomainFromUrl(address)), matches);
    }

    void getDomainFromUrl_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("domain");
        const auto row = [](const char* name, const char* address, const char* domain) {
            QTest::newRow(name) << QString(address) << QString(domain);
        };
        row("www removed", "https://www.example.org/x", "example.org");
        row("every www removed", "https://sub.www.example.www.org", "sub.example.org");
        row("no scheme, no host", "example.org", "");
        row("port dropped", "http://127.0.0.1:8080/a", "127.0.0.1");
    }
    void getDomainFromUrl()
    {
        QFETCH(QString, address);
        QFETCH(QString, domain);
        QCOMPARE(velmora::getDomainFromUrl(address), domain);
    }

    void endTimeText_data()
    {
        QTest::addColumn<QDateTime>("end");
        QTest::addColumn<QString>("text");
        QTest::newRow("afternoon reads like morning")
            << QDateTime(QDate(2026, 11, 23), QTime(15, 4, 5)) << "2026-11-23T03:04:05";
        QTest::newRow("half past midnight is twelve")
            << QDateTime(QDate(2026, 11, 23), QTime(0, 30)) << "2026-11-23T12:30:00";
        QTest::newRow("new year's day in the old week-year")
            << QDateTime(QDate(2027, 1, 1), QTime(9, 0)) << "2026-01-01T09:00:00";
    }
    void endTimeText()
    {
        QFETCH(QDateTime, end);
        QFETCH(QString, text);
        QCOMPARE(UrlBlocker::focusModeEndTimeText(end), text);
    }
};

QTEST_MAIN(TestAppBlocker)
#include "tst_appblocker.moc"
