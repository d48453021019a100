// Routines and breaks driven through the real screens on the virtual clock,
// with clicks on the real buttons and keys on the real lock window.

#include "AppFixture.h"
#include "firstViewController.h"
#include "LockWindows.h"
#include "logQuantityVc.h"
#include "MessageCapture.h"
#include "rememberNextHabitVc.h"
#include "StatusItem.h"
#include "Style.h"
#include "thirdVc.h"
#include "timerViewcontroller.h"
#include "ViewController.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::Literals::StringLiterals;

using namespace velmora;
using namespace velmora::test;

namespace {
const QByteArray kMorning = R"({
    "morningHabits": [{"name": "Water", "durationSeconds": 30},
                      {"name": "Push-ups", "durationSeconds": 20, "logQuantity": true},
                      {"name": "Stretch", "durationSeconds": 60}],
    "eveningHabits": [{"name": "Tidy", "durationSeconds": 40},
                      {"name": "Journal", "durationSeconds": 50, "logQuantity": true,
                       "logQuantityQuestion": "How many pages of <activity>?"}],
    "startTime": "07:00", "shutOffTime": "22:00"})";

void pressKey(AppDelegate& app, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QTest::keyClick(app.mainWindow().windowHandle(), Qt::Key(key), modifiers);
}

// A day of breaks every 30 minutes, its morning routine done, launched at `launch`.
AppDelegate& breakDay(AppFixture& f, const char* activities, QTime launch = QTime(10, 0))
{
    f.dayDocumentWith(QByteArray(R"({"breakActivities": )") + activities +
                      R"(, "breakAfterMinutes": 30, "startTime": "07:00", "shutOffTime": "22:00"})");
    f.morningDone();
    return f.launch(at(23, launch));
}
} // namespace

class RoutineTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void wholeMorningRoutineByClicks()
    {
        AppFixture f(kMorning);
        f.fakes.preferences.setValue(keys::kUserdefaultsPromptToRememberHabit, false);
        AppDelegate& app = f.morningUp();
        ViewController& vc = app.viewController();
        firstViewController& overview = vc.firstViewControllerObj();
        QCOMPARE(vc.currentScreen(), &overview);
        QCOMPARE(overview.lblTitle->text(), app.texts().startMorningHabitTitleText);
        QCOMPARE(overview.tblViewHabits->item(0)->text(), u"1.   Water"_s);
        QVERIFY(vc.btnAbort->isVisible());

        // Thirty seconds of rehearsal before the start button comes up; Return does nothing meanwhile.
        QCOMPARE(overview.lbltimer->text(), u"00:30"_s);
        pressKey(app, Qt::Key_Return);
        QCOMPARE(app.state().currentAction, ACTION::_STARTING_);
        f.fakes.scheduler.advance(29'000);
        QCOMPARE(overview.lbltimer->text(), u"00:01"_s);
        QVERIFY(!overview.btnStartFirstHabit->isVisible());
        f.fakes.scheduler.advance(1'000);
        QCOMPARE(overview.btnStartFirstHabit->text(), u"Start 30 seconds Water"_s);
        QVERIFY(!f.fakes.displayAwake.held);
        click(overview.btnStartFirstHabit);

        timerViewcontroller& timer = vc.timerViewcontrollerObj();
        QCOMPARE(vc.currentScreen(), &timer);
        QCOMPARE(timer.lblTitle->text(), u"Do some Water."_s);
        QCOMPARE(timer.lblTimer->text(), u"00:30"_s);
        // The display stays awake exactly while an item counts.
        QVERIFY(f.fakes.displayAwake.held);
        const QString waterStart = f.fakes.clock.now().toString(u"yyyy-MM-dd HH:mm:ss"_s);
        pressKey(app, Qt::Key_Enter); // while the item counts: nothing
        f.fakes.scheduler.advance(29'000);
        QVERIFY(f.fakes.displayAwake.held);
        f.fakes.scheduler.advance(1'000);
        QVERIFY(!f.fakes.displayAwake.held);

        thirdVc& progress = vc.thirdVcObj();
        QCOMPARE(vc.currentScreen(), &progress);
        QCOMPARE(progress.lblTitle->text(), u"Water finished!✅"_s);
        QCOMPARE(progress.lblProgress->text(),
                 u"You have completed 30s of habits - 1m 20s to go. You can do it!"_s);
        QCOMPARE(progress.btnMain->text(), u"Start 20 seconds Push-ups"_s);
        QCOMPARE(f.fakes.notifier.sounds, QStringList{u"everyActivity"_s});
        pressKey(app, Qt::Key_Return); // the progress button
        QCOMPARE(app.state().currentHabitIndex, 1);

        f.fakes.scheduler.advance(20'000);
        logQuantityVc& quantity = vc.logQuantityVcObj();
        QVERIFY(quantity.isVisible());
        QCOMPARE(quantity.lblSubTitle->text(), u"How many Push-ups did you do?"_s);
        QVERIFY(!quantity.btnOk->isEnabled());
        pressKey(app, Qt::Key_Return); // empty quantity field: nothing
        QVERIFY(quantity.isVisible());
        QTest::keyClicks(quantity.textFieldCount, u"12a"_s);
        QCOMPARE(quantity.textFieldCount->text(), u"12"_s);
        pressKey(app, Qt::Key_Return); // confirms the quantity...
        QVERIFY(!quantity.isVisible());
        QCOMPARE(app.state().currentHabitIndex, 1);
        pressKey(app, Qt::Key_Return); // ...and the next press goes to the progress button
        QCOMPARE(app.state().currentHabitIndex, 2);

        f.fakes.scheduler.advance(60'000);
        QVERIFY(!style::isAnimating(progress.imgViewGif)); // reduced motion is on
        QCOMPARE(progress.lblTitle->text(), u"Stretch finished!✅ You’ve earned your velmora. 💪"_s);
        QCOMPARE(progress.lblProgress->text(), u"You have completed 1m 50s of habits."_s);
        QCOMPARE(f.fakes.notifier.sounds.last(), u"afterMorningRoutine"_s);
        QCOMPARE(progress.btnMain->text(), u"Unlock the machine"_s);
        click(progress.btnMain);

        // "OK - Stay focused" for three seconds, then the lock goes.
        QVERIFY(vc.lblMessage->isVisible());
        QCOMPARE(app.state().currentState, CURRENTSTATE::_NOTHING_);
        f.fakes.scheduler.advance(2'999);
        QVERIFY(app.mainWindow().isVisible());
        f.fakes.scheduler.advance(1);
        QVERIFY(!app.mainWindow().isVisible());
        QVERIFY(!vc.isBreakTimerPending()); // no break activities in this document
        QVERIFY(!timer.webView);            // a day without pages never loads the web engine

        const QStringList rows = f.usageRows();
        QCOMPARE(rows.size(), 3);
        QCOMPARE(rows[0], u"morning routine,Water,30,,,%1,,,,"_s.arg(waterStart));
        QVERIFY(rows[1].startsWith(u"morning routine,Push-ups,20,How many <activity> did you do?,12,"_s));
        QVERIFY(rows[2].startsWith(u"morning routine,Stretch,60,,,"_s));
    }

    // Idle means idle: an animation decodes frames only while its screen is shown.
    void animationsPlayOnlyWhileShown()
    {
        AppFixture f(R"({"morningHabits": [{"name": "Water", "durationSeconds": 30}],
                         "startTime": "07:00", "shutOffTime": "22:00"})");
        AppDelegate& app = f.morningUp();
        app.state().kIsReducedMotion = false;
        ViewController& vc = app.viewController();
        QVERIFY(!style::isAnimating(vc.thirdVcObj().imgViewGif));
        f.fakes.scheduler.advance(30'000);
        click(vc.firstViewControllerObj().btnStartFirstHabit);
        QVERIFY(style::isAnimating(vc.timerViewcontrollerObj().imgViewGif));
        f.fakes.scheduler.advance(30'000);
        QVERIFY(!style::isAnimating(vc.timerViewcontrollerObj().imgViewGif));
        QVERIFY(style::isAnimating(vc.thirdVcObj().imgViewGif));
        click(vc.thirdVcObj().btnMain);
        f.fakes.scheduler.advance(3'000);
        QVERIFY(!app.mainWindow().isVisible());
        for (QLabel* label : app.mainWindow().findChildren<QLabel*>())
            QVERIFY2(!style::isAnimating(label), qPrintable(label->objectName()));
    }

    void quizComesWhenTheDrawSaysSo()
    {
        AppFixture f(kMorning);
        AppDelegate& app = f.morningUp();
        // A seed whose first draw of 0..5 is 5: the quiz follows the first habit.
        quint32 seed = 1;
        while (QRandomGenerator(seed).bounded(6) != 5)
            ++seed;
        app.random().seed(seed);
        ViewController& vc = app.viewController();
        f.fakes.scheduler.advance(30'000);
        click(vc.firstViewControllerObj().btnStartFirstHabit);
        f.fakes.scheduler.advance(30'000);
        thirdVc& progress = vc.thirdVcObj();
        QCOMPARE(progress.btnMain->text(), u"What comes next?"_s);
        click(progress.btnMain);

        rememberNextHabitVc& quiz = progress.getRememberNextHabitVcObj();
        QVERIFY(quiz.isVisible());
        QVERIFY(progress.boxBg->isHidden());
        QCOMPARE(quiz.lblQuestion->text(), u"You just completed Water. What habit will you do next?"_s);
        QCOMPARE(quiz.popupBtnHabits->count(), 4); // "Select Habit" and every habit of the routine
        QVERIFY(quiz.btnStartNextHabit->isHidden());
        quiz.popupBtnHabits->setCurrentIndex(quiz.popupBtnHabits->findText(u"Stretch"_s));
        quiz.popupBtnHabitsClicked();
        QVERIFY(quiz.lblSelectionResult->text().endsWith(u"it's Push-ups"_s));
        quiz.popupBtnHabits->setCurrentIndex(quiz.popupBtnHabits->findText(u"Push-ups"_s));
        quiz.popupBtnHabitsClicked();
        QVERIFY(quiz.arrRandomPhraseRightChoice.contains(quiz.lblSelectionResult->text()));
        QCOMPARE(quiz.btnStartNextHabit->text(), u"Start 20 seconds Push-ups"_s);
        click(quiz.btnStartNextHabit);
        QCOMPARE(vc.currentScreen(), &vc.timerViewcontrollerObj());
        QCOMPARE(app.state().currentHabitIndex, 1);

        // Never two quizzes in a row.
        f.fakes.scheduler.advance(20'000);
        vc.logQuantityVcObj().btnCancelClicked();
        QCOMPARE(progress.btnMain->text(), u"Start 1 minute Stretch"_s);

        // The release chord drops the lock; the key monitor, which sees everything typed on
        // the lock (passwords included), says none of it.
        {
            const MessageCapture output;
            for (const int key : {Qt::Key_S, Qt::Key_3, Qt::Key_Tab}) {
                pressKey(app, key,
                         key == Qt::Key_Tab ? Qt::ControlModifier | Qt::AltModifier : Qt::NoModifier);
                QVERIFY2(!output.all().contains(QString::number(key)), qPrintable(output.all()));
            }
        }
        QVERIFY(app.mainWindow().isVisible()); // not the whole chord
        pressKey(app, Qt::Key_Backtab, Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier);
        QVERIFY(!app.mainWindow().isVisible());
    }

    void eveningEndsInTheLockWithQuantityOverIt()
    {
        AppFixture f(kMorning);
        f.morningDone();
        f.fakes.preferences.setValue(keys::kUserdefaultsFocusSummaryShowedTillDate, at(24, QTime(7, 0)));
        f.fakes.preferences.setValue(keys::kUserdefaultsPromptToRememberHabit, false);
        AppDelegate& app = f.launch(at(23, QTime(22, 0, 1)));
        ViewController& vc = app.viewController();
        QCOMPARE(app.state().currentState, CURRENTSTATE::_EVENING_HABIT_);
        QCOMPARE(vc.firstViewControllerObj().lbltimer->text(), u"00:20"_s);
        f.fakes.scheduler.advance(20'000);
        click(vc.firstViewControllerObj().btnStartFirstHabit);
        f.fakes.scheduler.advance(40'000);
        click(vc.thirdVcObj().btnMain);
        f.fakes.scheduler.advance(50'000);

        // The last evening habit: no progress screen, straight to the lock, with the quantity over it.
        QCOMPARE(app.state().currentState, CURRENTSTATE::_SHUTOFFMAC_);
        QCOMPARE(f.logCount(u"evening habit Finished"_s), 1);
        logQuantityVc& quantity = vc.logQuantityVcObj();
        QVERIFY(quantity.isVisible());
        QCOMPARE(quantity.lblSubTitle->text(), u"How many pages of Journal?"_s);
        QTest::keyClicks(quantity.textFieldCount, u"3"_s);
        click(quantity.btnOk);
        QVERIFY(!quantity.isVisible());
        const QStringList rows = f.usageRows();
        QCOMPARE(rows.size(), 2);
        QVERIFY(rows[0].startsWith(u"evening routine,Tidy,40,,,"_s));
        QVERIFY(rows[1].startsWith(u"evening routine,Journal,50,How many pages of <activity>?,3,"_s));
    }

    void quantityFieldKeepsAWholeNumber_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("kept");
        const auto row = [](const char* typed, const char* kept) { QTest::newRow(typed) << typed << kept; };
        row("12a", "12");
        row("abc", "0");
        row("12345", "9999");
        row("-1234", "9999");
        row("007", "7");
        row("-5", "-5");
        row("99999999999999999999999", "9999");
    }

    void quantityFieldKeepsAWholeNumber()
    {
        QFETCH(QString, typed);
        QFETCH(QString, kept);
        QCOMPARE(logQuantityVc::normalisedCount(typed), kept);
    }

    void breakIsCalledOffForSevenReasonsInOrder_data()
    {
        QTest::addColumn<int>("reason");
        QTest::addColumn<QString>("line");
        QTest::addColumn<bool>("rearmed");
        const auto row = [](int reason, const char* line, bool rearmed) {
            QTest::addRow("%d %s", reason, line) << reason << line << rearmed;
        };
        row(1, "Mic is in use, Break Activities cancelled.", true);
        row(2, "Camera is in use, Break Activities cancelled.", true);
        row(3, "PreventUserIdleDisplaySleep is On: Break Activities cancelled.", true);
        row(4, "App is disabled, Break Activities cancelled.", false);
        row(5, "App is in shutoff state, Break Activities cancelled.", false);
        row(6, "Morning habit showing, Break Activities cancelled.", false);
        row(7, "not working hours, Break Activities cancelled.", false);
    }

    void breakIsCalledOffForSevenReasonsInOrder()
    {
        QFETCH(int, reason);
        QFETCH(QString, line);
        QFETCH(bool, rearmed);
        AppFixture f;
        AppDelegate& app = breakDay(f, R"([{"name": "Walk", "durationSeconds": 60}])");
        QVERIFY(app.viewController().isBreakTimerPending());
        // Every later reason holds too: only the first one may speak.
        f.fakes.media.mic = reason <= 1;
        f.fakes.media.camera = reason <= 2;
        f.fakes.media.inhibitors = reason <= 3 ? QStringList{u"zoom"_s} : QStringList();
        const CURRENTSTATE states[] = {CURRENTSTATE::_ABORT_, CURRENTSTATE::_SHUTOFFMAC_,
                                       CURRENTSTATE::_MORNING_HABIT_};
        if (reason >= 4 && reason <= 6)
            app.state().currentState = states[reason - 4];
        if (reason == 7)
            app.state().shutOffTime = Time{10, 10, 0};
        f.fakes.scheduler.advance(30 * 60'000);
        QCOMPARE(f.logCount(line), 1);
        QCOMPARE(f.logCount(u"Initiating Break Activities"_s), 1);
        QCOMPARE(app.viewController().isBreakTimerPending(), rearmed);
        QCOMPARE(app.statusItem().look() == StatusItem::Look::Call, reason <= 2);
        QVERIFY(app.state().currentState != CURRENTSTATE::_ACTIVITY_);
    }

    void breakRunsMandatoryActivitiesThenOneDrawn()
    {
        AppFixture f;
        AppDelegate& app =
            breakDay(f, R"([{"name": "Eyes", "durationSeconds": 20, "includeInEveryBreak": true},
            {"name": "Walk", "durationSeconds": 60}, {"name": "Water", "durationSeconds": 10, "includeInEveryBreak": true},
            {"name": "Squats", "durationSeconds": 30, "logQuantity": true}])");
        ViewController& vc = app.viewController();
        f.fakes.scheduler.advance(30 * 60'000);
        QCOMPARE(app.state().currentState, CURRENTSTATE::_ACTIVITY_);
        QVERIFY(app.mainWindow().isVisible());
        thirdVc& progress = vc.thirdVcObj();
        QCOMPARE(progress.lblTitle->text(),
                 u"It’s time for a break. Do 20 seconds of Eyes to earn more velmora."_s);
        QStringList done;
        for (int guard = 0; guard < 5 && app.state().currentState == CURRENTSTATE::_ACTIVITY_; ++guard) {
            click(progress.btnMain);
            if (app.state().currentState != CURRENTSTATE::_ACTIVITY_)
                break;
            done << vc.timerViewcontrollerObj().currentActicityTitle;
            f.fakes.scheduler.advance(qint64(vc.timerViewcontrollerObj().totalDuration) * 1000);
            if (vc.logQuantityVcObj().isVisible())
                vc.logQuantityVcObj().btnCancelClicked();
        }
        QCOMPARE(done.size(), 3);
        QCOMPARE(done.mid(0, 2), (QStringList{u"Eyes"_s, u"Water"_s}));
        QVERIFY(done[2] == u"Walk"_s || done[2] == u"Squats"_s);
        QCOMPARE(f.logCount(u"Break Activities Finished"_s), 1);
        QVERIFY(!app.mainWindow().isVisible());
        QVERIFY(vc.isBreakTimerPending()); // the next break is a full interval away
    }

    void officeModeFiltersAtEveryBreak()
    {
        AppFixture f;
        AppDelegate& app = breakDay(f, R"([{"name": "Squats", "durationSeconds": 30},
            {"name": "Breathe", "durationSeconds": 30, "isOfficeFriendly": true}])");
        for (int i = 0; i < 6; ++i) {
            // Switching office mode needs no reload: the next break follows it.
            app.state().isOfficeModeEnabled = i % 2 == 0;
            f.fakes.scheduler.advance(30 * 60'000);
            const auto& drawn = app.state().arrActivitiesExcludeInEveryBreak;
            QCOMPARE(drawn.size(), app.state().isOfficeModeEnabled ? 1 : 2);
            QVERIFY(!app.state().isOfficeModeEnabled || drawn.first().name == u"Breathe"_s);
            app.viewController().activityFinishedUnlockMachine();
        }
        // With nothing office-friendly left, the break is skipped.
        app.state().arrAllbreakActivities.removeLast();
        app.state().isOfficeModeEnabled = true;
        f.fakes.scheduler.advance(30 * 60'000);
        QVERIFY(!app.mainWindow().isVisible());
        QVERIFY(app.viewController().isBreakTimerPending());
        QCOMPARE(f.logCount(u"No activity fits this break (office mode); the break is skipped."_s), 1);
    }

    void randomChoiceAlternatives()
    {
        AppFixture f;
        AppDelegate& app = breakDay(f, R"([{"name": "Loosen", "durationSeconds": 30, "type": "random-choice",
            "choices": [{"name": "Neck rolls"}, {"name": "Shoulder shrugs"}]}])",
                                    QTime(9, 0));
        QStringList shown;
        for (int i = 0; i < 6; ++i) {
            f.fakes.scheduler.advance(30 * 60'000);
            click(app.viewController().thirdVcObj().btnMain);
            shown << app.viewController().timerViewcontrollerObj().currentActicityTitle;
            QCOMPARE(app.state().lastShownRandomChoiceDic.value(u"Loosen"_s).name, shown.last());
            app.viewController().activityFinishedUnlockMachine();
        }
        // With a memory of the last one, two alternatives strictly alternate.
        for (int i = 1; i < shown.size(); ++i)
            QVERIFY2(shown[i] != shown[i - 1], qPrintable(shown.join(u',')));
    }

    void webPageLinksAreEmbedded_data()
    {
        QTest::addColumn<QString>("link");
        QTest::addColumn<QString>("embedded");
        const auto row = [](const char* link, const char* embedded) {
            QTest::newRow(link) << link << embedded;
        };
        row("https://www.youtube.com/watch?v=abc", "https://www.youtube.com/embed/abc?autoplay=1");
        row("https://www.youtube.com/watch?v=abc&t=5", "https://www.youtube.com/embed/abc&t=5?autoplay=1");
        row("https://example.org/a?x=1", "https://example.org/a?x=1&autoplay=1");
        row("https://example.org/a", "https://example.org/a?autoplay=1");
    }

    void webPageLinksAreEmbedded()
    {
        QFETCH(QString, link);
        QFETCH(QString, embedded);
        QCOMPARE(timerViewcontroller::embedAddress(link), embedded);
    }
};

QTEST_MAIN(RoutineTest)
#include "tst_routine.moc"
