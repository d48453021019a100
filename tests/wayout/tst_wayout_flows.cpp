// The ways out of the lock window, driven through the real screens and buttons
// on the virtual clock.

#include "AbortScreens.h"
#include "AppFixture.h"
#include "enterPasswordVc.h"
#include "FeedbackUpload.h"
#include "firstViewController.h"
#include "LockLayout.h"
#include "LockWindows.h"
#include "PasswordStore.h"
#include "PreferenceKeys.h"
#include "shutOffTimeVc.h"
#include "thirdVc.h"
#include "timerViewcontroller.h"
#include "ViewController.h"
#include "WayOut.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::Literals::StringLiterals;

using namespace velmora;
using namespace velmora::test;

namespace {

// Eleven morning habits: one more than starting small keeps.
const QByteArray kDocument =
    R"({"morningHabits": [{"name": "Water", "durationSeconds": 30}, {"name": "Stretch", "durationSeconds": 60})" +
    QByteArray(R"(, {"name": "Walk", "durationSeconds": 40})").repeated(9) + R"(],
    "eveningHabits": [{"name": "Journal", "durationSeconds": 120}],
    "breakActivities": [{"name": "Look away", "durationSeconds": 20}],
    "breakAfterMinutes": 50, "startTime": "07:00", "shutOffTime": "22:00"})";

// A launched program with a webhook of the test's own, its ways out laid into the lock window.
struct Fixture : AppFixture
{
    Fixture()
        : AppFixture(kDocument)
    {
        catalogue = R"({"common": {"webhookUrl": "https://hooks.example/velmora"}})";
    }
    WayOut& wayOut() { return app->wayOut(); }
};

enum Stage
{
    Running,
    Over,
    Overview
};

} // namespace

class WayOutFlowsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void passwordThenCountDown()
    {
        Fixture f;
        AppDelegate& app = f.morningUp();
        password::store(f.fakes.preferences, u"letmeout"_s);
        ViewController& vc = app.viewController();
        runToStageAndAbort(f, Running);

        // The prompt covers the screen; the lock offers no reset.
        enterPasswordVc& prompt = f.wayOut().enterPasswordVcObj();
        QVERIFY(vc.isPasswordViewShown());
        QVERIFY(prompt.btnResetPassword->isHidden());
        QTest::keyClicks(prompt.textFieldPassword, u"letmein"_s);
        click(prompt.btnOk);
        QVERIFY(vc.isPasswordViewShown() && prompt.lblError->isVisible());

        // Return on the lock window is OK.
        prompt.textFieldPassword->setText(u"letmeout"_s);
        QTest::keyClick(app.mainWindow().windowHandle(), Qt::Key_Return);
        QVERIFY(!vc.isPasswordViewShown());
        abortingCountDownVc& countDown = f.wayOut().abortingCountDownVcObj();
        QCOMPARE(vc.currentScreen(), &countDown);
        f.fakes.scheduler.advance(9'000);
        QCOMPARE(countDown.lblSeconds->text(), u"00:01"_s);
        checkLockLayout(app.mainWindow(), u"abort"_s);
        f.fakes.scheduler.advance(1'000);
        QCOMPARE(vc.currentScreen(), &f.wayOut().abortingConfirmVcObj());
        checkLockLayout(app.mainWindow(), u"abort-reasons"_s);
    }

    void cancelReturnsToTheExactScreen_data()
    {
        QTest::addColumn<int>("stage");
        QTest::addColumn<bool>("withPassword"); // left at its prompt with Cancel
        QTest::newRow("running habit, count-down cancelled") << int(Running) << false;
        QTest::newRow("running habit, password prompt cancelled") << int(Running) << true;
        QTest::newRow("progress screen") << int(Over) << false;
        QTest::newRow("overview") << int(Overview) << false;
    }

    void cancelReturnsToTheExactScreen()
    {
        QFETCH(int, stage);
        QFETCH(bool, withPassword);
        Fixture f;
        AppDelegate& app = f.morningUp();
        if (withPassword)
            password::store(f.fakes.preferences, u"letmeout"_s);
        ViewController& vc = app.viewController();
        timerViewcontroller& timer = vc.timerViewcontrollerObj();
        runToStageAndAbort(f, Stage(stage));
        const ACTION action = app.state().lastCurrentAction;

        // The habit stands still meanwhile, and the display may sleep.
        f.fakes.scheduler.advance(4'000);
        QVERIFY(!f.fakes.displayAwake.held);
        click(withPassword ? f.wayOut().enterPasswordVcObj().btnCancel
                           : f.wayOut().abortingCountDownVcObj().btnCancelAbort);

        QCOMPARE(app.state().currentState, CURRENTSTATE::_MORNING_HABIT_);
        QCOMPARE(app.state().currentAction, action);
        QVERIFY(!vc.isPasswordViewShown());
        if (stage == Running) {
            QCOMPARE(vc.currentScreen(), &timer);
            QCOMPARE(timer.lblTimer->text(), u"00:18"_s);
            QVERIFY(f.fakes.displayAwake.held);
            f.fakes.scheduler.advance(18'000);
        }
        QCOMPARE(vc.currentScreen(),
                 stage == Overview ? static_cast<QWidget*>(&vc.firstViewControllerObj()) : &vc.thirdVcObj());
        // The count-down is gone for good: nothing moves on to the reasons.
        f.fakes.scheduler.advance(20'000);
        QVERIFY(vc.currentScreen() != &f.wayOut().abortingConfirmVcObj());
        QVERIFY(f.usageRows().filter(u"abort"_s).isEmpty());
    }

    void reasonOutcomes_data()
    {
        QTest::addColumn<int>("reason");
        QTest::addColumn<QString>("feedback");
        QTest::addColumn<QString>("row"); // the usage row's reason and feedback
        QTest::addColumn<bool>("fourHours");
        QTest::newRow("emergency") << int(abortingConfirmVc::Emergency) << u""_s
                                   << u"I've got an emergency,"_s << true;
        QTest::newRow("something else")
            << int(abortingConfirmVc::SomethingElse) << u" "_s << u"Something else, "_s << false;
        QTest::newRow("no routine at all") << int(abortingConfirmVc::HabitsHard) << u"too much"_s
                                           << u"Deactivate routine + breaks,too much"_s << false;
    }

    void reasonOutcomes()
    {
        QFETCH(int, reason);
        QFETCH(QString, feedback);
        QFETCH(QString, row);
        QFETCH(bool, fourHours);
        Fixture f;
        abortingConfirmVc& reasons = toReason(f, reason);
        ViewController& vc = f.app->viewController();
        if (reason == abortingConfirmVc::Emergency) {
            QVERIFY(!reasons.popUpBtnReasons->isEnabled());
        } else if (reason == abortingConfirmVc::SomethingElse) {
            QTest::keyClicks(reasons.textViewSomethingElse, feedback);
            click(reasons.btnDeactivate_boxSomethingElse);
        } else {
            click(reasons.btnDontWantRoutine_boxHabit);
            abortingCantHandleVc& last = f.wayOut().abortingCantHandleVcObj();
            QCOMPARE(vc.currentScreen(), &last);
            QTest::keyClicks(last.textViewFeedback, feedback);
            click(last.btnMain);
        }
        if (reason != abortingConfirmVc::Emergency)
            QCOMPARE(vc.currentScreen(), &f.wayOut().abortDoneVcObj());

        f.fakes.scheduler.advance(5'000 - 1); // from the click or the choice
        QCOMPARE(f.fakes.launcher.restarts, 0);
        f.fakes.scheduler.advance(1);
        QCOMPARE(f.fakes.launcher.restarts, 1);
        QCOMPARE(f.usageRows().filter(u"abort"_s),
                 QStringList{u"morning routine abort,morning routine,,,,,,,"_s + row});
        QCOMPARE(f.fakes.preferences.boolean(keys::kUserdefaultsIsAppEnabled), std::optional<bool>(false));
        QCOMPARE(f.fakes.preferences.boolean(keys::kUserdefaultsShowPomodoroView), std::optional<bool>(true));
        QCOMPARE(f.fakes.preferences.date(keys::kUserdefaults4HourReActivateTime),
                 fourHours ? std::optional(f.fakes.clock.now().addSecs(4 * 3600)) : std::nullopt);
        QVERIFY(f.fakes.http.requests.isEmpty());
    }

    void tooHardStartsSmall()
    {
        Fixture f;
        click(toReason(f, abortingConfirmVc::HabitsHard).btnStartSmall_boxHabit);

        // The rewrite is done at the click, before any feedback.
        const QJsonObject saved =
            QJsonDocument::fromJson(f.fakes.preferences.string(keys::kUserdefaultsSelectedJson)->toUtf8())
                .object();
        QCOMPARE(saved.value(u"morningHabits"_s).toArray().size(), 10);

        abortingCantHandleVc& last = f.wayOut().abortingCantHandleVcObj();
        QCOMPARE(f.app->viewController().currentScreen(), &last);
        QTest::keyClicks(last.textViewFeedback, u"ten is plenty"_s);
        click(last.btnMain);
        QCOMPARE(f.fakes.launcher.restarts, 1);
        QCOMPARE(f.usageRows().filter(u"abort"_s),
                 QStringList{
                     u"morning routine abort,morning routine,,,,,,,Start shortened routine,ten is plenty"_s});
        // Not deactivated: the short routine comes through the gates after the restart.
        QVERIFY(f.fakes.preferences.boolean(keys::kUserdefaultsIsAppEnabled).value_or(true));
    }

    // The upload's own time-out and failures are the upload's tests; here the screen waits for it.
    void brokenAppWaitsForTheWebhook()
    {
        Fixture f;
        abortingConfirmVc& reasons = toReason(f, abortingConfirmVc::AppBroken);
        ViewController& vc = f.app->viewController();
        QTest::keyClicks(reasons.textViewAppBroken, u"the timer froze"_s);
        click(reasons.btnDeactivateAppBroken);
        // An edit after the click must not arm the button for a second post.
        QTest::keyClicks(reasons.textViewAppBroken, u" at noon"_s);
        QVERIFY(!reasons.btnDeactivateAppBroken->isEnabled());

        QCOMPARE(f.fakes.http.requests.size(), 1);
        const QJsonObject sent = QJsonDocument::fromJson(f.fakes.http.requests[0].body).object();
        QCOMPARE(sent.value(u"feedback"_s).toString(), u"the timer froze"_s);
        QCOMPARE(vc.currentScreen(), &reasons);
        f.fakes.http.answer({.status = 200, .body = "1", .error = {}});
        QCOMPARE(vc.currentScreen(), &f.wayOut().abortDoneVcObj());
        f.fakes.scheduler.advance(5'000);
        QCOMPARE(f.fakes.launcher.restarts, 1);
        QVERIFY(f.usageRows().filter(u"abort"_s).isEmpty());
    }

    void shutOffEmergencyUnlock_data()
    {
        QTest::addColumn<QDateTime>("now");
        QTest::addColumn<QDateTime>("skippedUntil");
        QTest::newRow("before midnight") << at(23, QTime(23, 30)) << at(24, QTime(7, 0));
        QTest::newRow("after midnight") << at(24, QTime(1, 0)) << at(24, QTime(7, 0));
    }

    void shutOffEmergencyUnlock()
    {
        QFETCH(QDateTime, now);
        QFETCH(QDateTime, skippedUntil);
        Fixture f;
        f.fakes.preferences.setValue(keys::kUserdefaultsReducedMotion, true);
        f.nightStagesDone(skippedUntil);
        AppDelegate& app = f.launch(now);
        ViewController& vc = app.viewController();
        app.state().currentState = CURRENTSTATE::_NOTHING_;
        vc.shutOffMac();
        shutOffTimeVc& screen = f.wayOut().shutOffTimeVcObj();
        QCOMPARE(vc.currentScreen(), &screen);
        checkLockLayout(app.mainWindow(), u"shut-off"_s);

        // Thirty seconds of reflection; Cancel goes back to rest.
        click(screen.btnGetAccessNow);
        QCOMPARE(screen.step, int(shutOffTimeVc::Reflecting));
        f.fakes.scheduler.advance(10'000);
        click(screen.btnUnlock);
        QCOMPARE(screen.step, int(shutOffTimeVc::Resting));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_SHUTOFFMAC_);

        click(screen.btnGetAccessNow);
        f.fakes.scheduler.advance(29'999);
        QCOMPARE(screen.step, int(shutOffTimeVc::Reflecting));
        f.fakes.scheduler.advance(1);
        QCOMPARE(screen.step, int(shutOffTimeVc::Unlocking));
        f.fakes.scheduler.advance(600'000); // it waits without limit
        QTest::keyClicks(screen.textView, u"server down"_s);
        click(screen.btnUnlock);
        QCOMPARE(f.fakes.http.requests.size(), 1);
        const QJsonObject sent = QJsonDocument::fromJson(f.fakes.http.requests[0].body).object();
        QCOMPARE(sent.value(u"abortReason"_s).toString(), u"Shutdown skipped"_s);
        QCOMPARE(sent.value(u"feedback"_s).toString(), u"server down"_s);

        // The upload is not waited for.
        f.fakes.scheduler.advance(4'999);
        QVERIFY(app.mainWindow().isVisible());
        f.fakes.scheduler.advance(1);
        QVERIFY(!app.mainWindow().isVisible());
        QCOMPARE(f.fakes.preferences.date(keys::kUserdefaultsShutdownAborted), std::optional(skippedUntil));
        QVERIFY(f.usageRows().isEmpty());
        // The rest of the night stays open.
        f.fakes.scheduler.advance(60'000);
        QVERIFY(!app.mainWindow().isVisible());
    }

private:
    // Brings the morning routine to a stage and presses Abort.
    void runToStageAndAbort(Fixture& f, Stage stage)
    {
        ViewController& vc = f.app->viewController();
        f.fakes.scheduler.advance(30'000);
        if (stage != Overview) {
            click(vc.firstViewControllerObj().btnStartFirstHabit);
            f.fakes.scheduler.advance(stage == Running ? 12'000 : 30'000);
        }
        click(vc.btnAbort);
    }

    // Starts the morning, aborts the running habit and picks a reason after the count-down.
    abortingConfirmVc& toReason(Fixture& f, int reason)
    {
        f.morningUp();
        runToStageAndAbort(f, Running);
        f.fakes.scheduler.advance(10'000);
        abortingConfirmVc& reasons = f.wayOut().abortingConfirmVcObj();
        [&] { QCOMPARE(f.app->viewController().currentScreen(), &reasons); }();
        reasons.popUpBtnReasons->setCurrentIndex(reason);
        return reasons;
    }
};

QTEST_MAIN(WayOutFlowsTest)
#include "tst_wayout_flows.moc"
