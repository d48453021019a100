// Routines and breaks driven through the real screens on the virtual clock,
// with clicks on the real buttons and keys on the real lock window.

#include "AppFixture.h"
#include "firstViewController.h"
#include "LockWindows.h"
#include "logQuantityVc.h"
#include "PreferenceKeys.h"
#include "rememberNextHabitVc.h"
#include "StatusItem.h"
#include "thirdVc.h"
#include "timerViewcontroller.h"
#include "ViewController.h"

#include <QtTest>
#include <QtWidgets>

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

QByteArray usageRows(const AppFixture& f)
{
    QFile file(f.dataFolder() + QStringLiteral("/vlmrStats.csv"));
    file.open(QIODevice::ReadOnly);
    QByteArray rows = file.readAll().mid(qsizetype(qstrlen(UsageLog::kHeader)));
    // Time stamps are the write moments; compare everything else.
    return rows;
}

void click(QAbstractButton* button)
{
    QVERIFY2(button->isVisible() && button->isEnabled(), qPrintable(button->objectName()));
    QTest::mouseClick(button, Qt::LeftButton);
}

void pressKey(AppDelegate& app, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QTest::keyClick(app.mainWindow().windowHandle(), Qt::Key(key), modifiers);
}

// A seed whose first draw of 0..5 is 5: the quiz follows the first habit.
quint32 seedForQuizFirst()
{
    for (quint32 seed = 1;; ++seed) {
        QRandomGenerator probe(seed);
        if (probe.bounded(6) == 5)
            return seed;
    }
}
} // namespace

class RoutineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wholeMorningRoutineByClicks();
    void quizComesWhenTheDrawSaysSo();
    void eveningEndsInTheLockWithQuantityOverIt();
    void welcomeFlowHasNoAbortButtonAndStartsTheTickAfterUnlock();
    void quantityFieldKeepsAWholeNumber_data();
    void quantityFieldKeepsAWholeNumber();
    void returnKeyFollowsTheScreenOnTop();
    void releaseChordDropsTheLock();
    void breakIsCalledOffForSevenReasonsInOrder_data();
    void breakIsCalledOffForSevenReasonsInOrder();
    void breakRunsMandatoryActivitiesThenOneDrawn();
    void officeModeFiltersAtEveryBreak();
    void officeModeWithNothingFriendlySkipsTheBreak();
    void randomChoiceAlternatives();
    void webPageLinksAreEmbedded_data();
    void webPageLinksAreEmbedded();
    void displayStaysAwakeExactlyWhileAnItemCounts();

private:
    AppDelegate& morningUp(AppFixture& f);
};

// Launches at 06:59:58 with the night already behind us; the gate opens at 07:00:03.
AppDelegate& RoutineTest::morningUp(AppFixture& f)
{
    f.fakes.preferences.setValue(keys::kUserdefaultsLastHabitShowDate, at(22, QTime(7, 0)));
    f.fakes.preferences.setValue(keys::kUserdefaultsReducedMotion, true);
    f.nightStagesDone(at(23, QTime(7, 0)));
    AppDelegate& app = f.launch(at(23, QTime(6, 59, 58)));
    f.fakes.scheduler.advanceTo(QTime(7, 0, 3)); // the first tick after the start time
    return app;
}

void RoutineTest::wholeMorningRoutineByClicks()
{
    AppFixture f(kMorning);
    f.fakes.preferences.setValue(keys::kUserdefaultsPromptToRememberHabit, false);
    AppDelegate& app = morningUp(f);
    ViewController& vc = app.viewController();
    firstViewController& overview = vc.firstViewControllerObj();
    QCOMPARE(vc.currentScreen(), &overview);
    QCOMPARE(overview.lblTitle->text(), app.texts().startMorningHabitTitleText);
    QCOMPARE(overview.tblViewHabits->item(0)->text(), QStringLiteral("1.   Water"));
    QVERIFY(vc.btnAbort->isVisible());

    // Thirty seconds of rehearsal before the start button comes up.
    QVERIFY(!overview.btnStartFirstHabit->isVisible());
    QCOMPARE(overview.lbltimer->text(), QStringLiteral("00:30"));
    f.fakes.scheduler.advance(29'000);
    QCOMPARE(overview.lbltimer->text(), QStringLiteral("00:01"));
    QVERIFY(!overview.btnStartFirstHabit->isVisible());
    f.fakes.scheduler.advance(1'000);
    QCOMPARE(overview.btnStartFirstHabit->text(), QStringLiteral("Start 30 seconds Water"));
    click(overview.btnStartFirstHabit);

    timerViewcontroller& timer = vc.timerViewcontrollerObj();
    QCOMPARE(vc.currentScreen(), &timer);
    QCOMPARE(timer.lblTitle->text(), QStringLiteral("Do some Water."));
    QCOMPARE(timer.lblTimer->text(), QStringLiteral("00:30"));
    const QDateTime waterStart = f.fakes.clock.now();
    f.fakes.scheduler.advance(30'000);

    thirdVc& progress = vc.thirdVcObj();
    QCOMPARE(vc.currentScreen(), &progress);
    QCOMPARE(progress.lblTitle->text(), QStringLiteral("Water finished!✅"));
    QCOMPARE(progress.lblProgress->text(),
             QStringLiteral("You have completed 30s of habits - 1m 20s to go. You can do it!"));
    QCOMPARE(progress.btnMain->text(), QStringLiteral("Start 20 seconds Push-ups"));
    QCOMPARE(f.fakes.notifier.sounds, QStringList{QStringLiteral("everyActivity")});
    click(progress.btnMain);

    f.fakes.scheduler.advance(20'000);
    logQuantityVc& quantity = vc.logQuantityVcObj();
    QVERIFY(quantity.isVisible());
    QCOMPARE(quantity.lblSubTitle->text(), QStringLiteral("How many Push-ups did you do?"));
    QVERIFY(!quantity.btnOk->isEnabled());
    QTest::keyClicks(quantity.textFieldCount, QStringLiteral("12a"));
    QCOMPARE(quantity.textFieldCount->text(), QStringLiteral("12"));
    click(quantity.btnOk);
    QVERIFY(!quantity.isVisible());
    click(progress.btnMain);

    f.fakes.scheduler.advance(60'000);
    QCOMPARE(progress.lblTitle->text(), QStringLiteral("Stretch finished!✅ You’ve earned your velmora. 💪"));
    QCOMPARE(progress.lblProgress->text(), QStringLiteral("You have completed 1m 50s of habits."));
    QCOMPARE(progress.btnMain->text(), QStringLiteral("Unlock the machine"));
    QCOMPARE(f.fakes.notifier.sounds.last(), QStringLiteral("afterMorningRoutine"));
    click(progress.btnMain);

    // "OK - Stay focused" for three seconds, then the lock goes.
    QVERIFY(vc.lblMessage->isVisible());
    QCOMPARE(app.state().currentState, CURRENTSTATE::_NOTHING_);
    f.fakes.scheduler.advance(2'999);
    QVERIFY(app.mainWindow().isVisible());
    f.fakes.scheduler.advance(1);
    QVERIFY(!app.mainWindow().isVisible());
    QVERIFY(vc.isBreakTimerPending() == false); // no break activities in this document

    const QString s = waterStart.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    const QStringList rows = QString::fromUtf8(usageRows(f)).split(u'\n', Qt::SkipEmptyParts);
    QCOMPARE(rows.size(), 3);
    auto withoutStamp = [](QString row) {
        return row.remove(QRegularExpression(QStringLiteral("^([^,]*),[^,]*,")));
    };
    QCOMPARE(withoutStamp(rows[0]), QStringLiteral("Water,30,,,%1,,,,").arg(s));
    QCOMPARE(withoutStamp(rows[1]),
             QStringLiteral("Push-ups,20,How many <activity> did you do?,12,%1,,,,")
                 .arg(waterStart.addSecs(30).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))));
    QVERIFY(rows[2].startsWith(QStringLiteral("morning routine,")));
    QVERIFY(rows[2].contains(QStringLiteral(",Stretch,60,,,")));
}

void RoutineTest::quizComesWhenTheDrawSaysSo()
{
    AppFixture f(kMorning);
    AppDelegate& app = morningUp(f);
    app.random().seed(seedForQuizFirst());
    ViewController& vc = app.viewController();
    f.fakes.scheduler.advance(30'000);
    click(vc.firstViewControllerObj().btnStartFirstHabit);
    f.fakes.scheduler.advance(30'000);
    thirdVc& progress = vc.thirdVcObj();
    QCOMPARE(progress.btnMain->text(), QStringLiteral("What comes next?"));
    click(progress.btnMain);

    rememberNextHabitVc& quiz = progress.getRememberNextHabitVcObj();
    QVERIFY(quiz.isVisible());
    QVERIFY(progress.boxBg->isHidden());
    QCOMPARE(quiz.lblQuestion->text(),
             QStringLiteral("You just completed Water. What habit will you do next?"));
    QCOMPARE(quiz.popupBtnHabits->count(), 4); // "Select Habit" and every habit of the routine
    QVERIFY(quiz.btnStartNextHabit->isHidden());
    const int wrong = quiz.popupBtnHabits->findText(QStringLiteral("Stretch"));
    quiz.popupBtnHabits->setCurrentIndex(wrong);
    quiz.popupBtnHabitsClicked();
    QVERIFY(quiz.lblSelectionResult->text().endsWith(QStringLiteral("it's Push-ups")));
    quiz.popupBtnHabits->setCurrentIndex(quiz.popupBtnHabits->findText(QStringLiteral("Push-ups")));
    quiz.popupBtnHabitsClicked();
    QVERIFY(quiz.arrRandomPhraseRightChoice.contains(quiz.lblSelectionResult->text()));
    QCOMPARE(quiz.btnStartNextHabit->text(), QStringLiteral("Start 20 seconds Push-ups"));
    click(quiz.btnStartNextHabit);
    QCOMPARE(vc.currentScreen(), &vc.timerViewcontrollerObj());
    QCOMPARE(app.state().currentHabitIndex, 1);

    // Never two quizzes in a row.
    f.fakes.scheduler.advance(20'000);
    vc.logQuantityVcObj().btnCancelClicked();
    QCOMPARE(progress.btnMain->text(), QStringLiteral("Start 1 minute Stretch"));
}

void RoutineTest::eveningEndsInTheLockWithQuantityOverIt()
{
    AppFixture f(kMorning);
    f.fakes.preferences.setValue(keys::kUserdefaultsLastHabitShowDate, at(23, QTime(7, 0)));
    f.fakes.preferences.setValue(keys::kUserdefaultsFocusSummaryShowedTillDate, at(24, QTime(7, 0)));
    f.fakes.preferences.setValue(keys::kUserdefaultsPromptToRememberHabit, false);
    AppDelegate& app = f.launch(at(23, QTime(22, 0, 1)));
    ViewController& vc = app.viewController();
    QCOMPARE(app.state().currentState, CURRENTSTATE::_EVENING_HABIT_);
    QCOMPARE(vc.firstViewControllerObj().lbltimer->text(), QStringLiteral("00:20"));
    f.fakes.scheduler.advance(20'000);
    click(vc.firstViewControllerObj().btnStartFirstHabit);
    f.fakes.scheduler.advance(40'000);
    click(vc.thirdVcObj().btnMain);
    f.fakes.scheduler.advance(50'000);

    // The last evening habit: no progress screen, straight to the lock, with the
    // quantity screen over it.
    QCOMPARE(app.state().currentState, CURRENTSTATE::_SHUTOFFMAC_);
    QCOMPARE(f.logCount(QStringLiteral("evening habit Finished")), 1);
    logQuantityVc& quantity = vc.logQuantityVcObj();
    QVERIFY(quantity.isVisible());
    QCOMPARE(quantity.lblSubTitle->text(), QStringLiteral("How many pages of Journal?"));
    QTest::keyClicks(quantity.textFieldCount, QStringLiteral("3"));
    pressKey(app, Qt::Key_Return);
    QVERIFY(!quantity.isVisible());
    const QString rows = QString::fromUtf8(usageRows(f));
    QVERIFY(rows.contains(QStringLiteral(",Tidy,40,,,")));
    QVERIFY(rows.contains(QStringLiteral(",Journal,50,How many pages of <activity>?,3,")));
    QCOMPARE(rows.count(u'\n'), 2);
}

void RoutineTest::welcomeFlowHasNoAbortButtonAndStartsTheTickAfterUnlock()
{
    AppFixture f(kMorning);
    f.fakes.preferences.remove(keys::kUserdefaultsFirstRun);
    AppDelegate& app = f.launch(at(23, QTime(15, 0)));
    ViewController& vc = app.viewController();
    firstViewController& overview = vc.firstViewControllerObj();
    QVERIFY(!vc.btnAbort->isVisible());
    QVERIFY(overview.btnStartFirstHabit->isVisible()); // no countdown on the welcome screen
    QVERIFY(overview.tblViewHabits->isHidden());
    click(overview.btnStartFirstHabit);
    QVERIFY(!vc.btnAbort->isVisible());
    QCOMPARE(app.state().currentState, CURRENTSTATE::_BREATHING_);
    const int seconds = app.state().introActivity->durationSeconds;
    QVERIFY(seconds > 0);
    f.fakes.scheduler.advance(seconds * 1000);
    thirdVc& progress = vc.thirdVcObj();
    QVERIFY(progress.boxBreathingFinished->isVisible());
    QCOMPARE(progress.btnMain->text(), QStringLiteral("Unlock the machine"));
    QVERIFY(!vc.btnAbort->isVisible());
    QVERIFY(!app.isTickRunning());
    click(progress.btnMain);
    f.fakes.scheduler.advance(3'000);
    QVERIFY(!app.mainWindow().isVisible());
    QVERIFY(app.isTickRunning());
    QCOMPARE(usageRows(f), QByteArray()); // the intro never reaches the usage log
}

void RoutineTest::quantityFieldKeepsAWholeNumber_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("kept");
    QTest::newRow("trailing letters") << "12a"
                                      << "12";
    QTest::newRow("letters") << "abc"
                             << "0";
    QTest::newRow("too long") << "12345"
                              << "9999";
    QTest::newRow("negative too long") << "-1234"
                                       << "9999";
    QTest::newRow("leading zeros") << "007"
                                   << "7";
    QTest::newRow("negative") << "-5"
                              << "-5";
    QTest::newRow("huge") << "99999999999999999999999"
                          << "9999";
}

void RoutineTest::quantityFieldKeepsAWholeNumber()
{
    QFETCH(QString, typed);
    QFETCH(QString, kept);
    QCOMPARE(logQuantityVc::normalisedCount(typed), kept);
}

void RoutineTest::returnKeyFollowsTheScreenOnTop()
{
    AppFixture f(kMorning);
    f.fakes.preferences.setValue(keys::kUserdefaultsPromptToRememberHabit, false);
    AppDelegate& app = morningUp(f);
    ViewController& vc = app.viewController();

    pressKey(app, Qt::Key_Return); // during the countdown: nothing
    QCOMPARE(app.state().currentAction, ACTION::_STARTING_);
    QCOMPARE(vc.firstViewControllerObj().lbltimer->text(), QStringLiteral("00:30"));
    f.fakes.scheduler.advance(30'000);
    pressKey(app, Qt::Key_Return);
    QCOMPARE(app.state().currentAction, ACTION::_RUNNING_);
    pressKey(app, Qt::Key_Enter); // while the item counts: nothing
    QCOMPARE(app.state().currentHabitIndex, 0);
    f.fakes.scheduler.advance(30'000);
    pressKey(app, Qt::Key_Return); // the progress button
    QCOMPARE(app.state().currentHabitIndex, 1);
    f.fakes.scheduler.advance(20'000);
    pressKey(app, Qt::Key_Return); // empty quantity field: nothing
    QVERIFY(vc.logQuantityVcObj().isVisible());
    QTest::keyClicks(vc.logQuantityVcObj().textFieldCount, QStringLiteral("8"));
    pressKey(app, Qt::Key_Return); // confirms the quantity...
    QVERIFY(!vc.logQuantityVcObj().isVisible());
    QCOMPARE(app.state().currentHabitIndex, 1);
    pressKey(app, Qt::Key_Return); // ...and the next press goes to the progress button
    QCOMPARE(app.state().currentHabitIndex, 2);
    QVERIFY(QString::fromUtf8(usageRows(f)).contains(QStringLiteral("did you do?,8,")));
}

void RoutineTest::releaseChordDropsTheLock()
{
    AppFixture f(kMorning);
    AppDelegate& app = morningUp(f);
    QVERIFY(app.mainWindow().isVisible());
    pressKey(app, Qt::Key_Tab, Qt::ControlModifier | Qt::AltModifier); // not the whole chord
    QVERIFY(app.mainWindow().isVisible());
    pressKey(app, Qt::Key_Backtab, Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier);
    QVERIFY(!app.mainWindow().isVisible());
}

void RoutineTest::breakIsCalledOffForSevenReasonsInOrder_data()
{
    QTest::addColumn<int>("reason");
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("rearmed");
    QTest::newRow("1 microphone") << 1 << "Mic is in use, Break Activities cancelled." << true;
    QTest::newRow("2 camera") << 2 << "Camera is in use, Break Activities cancelled." << true;
    QTest::newRow("3 meeting keeps display awake")
        << 3 << "PreventUserIdleDisplaySleep is On: Break Activities cancelled." << true;
    QTest::newRow("4 abort screens") << 4 << "App is disabled, Break Activities cancelled." << false;
    QTest::newRow("5 shut-off screen")
        << 5 << "App is in shutoff state, Break Activities cancelled." << false;
    QTest::newRow("6 morning routine") << 6 << "Morning habit showing, Break Activities cancelled." << false;
    QTest::newRow("7 after hours") << 7 << "not working hours, Break Activities cancelled." << false;
}

void RoutineTest::breakIsCalledOffForSevenReasonsInOrder()
{
    QFETCH(int, reason);
    QFETCH(QString, line);
    QFETCH(bool, rearmed);
    AppFixture f(R"({"breakActivities": [{"name": "Walk", "durationSeconds": 60}], "breakAfterMinutes": 30,
                    "startTime": "07:00", "shutOffTime": "22:00"})");
    f.fakes.preferences.setValue(keys::kUserdefaultsLastHabitShowDate, at(23, QTime(7, 0)));
    AppDelegate& app = f.launch(at(23, QTime(10, 0)));
    QVERIFY(app.viewController().isBreakTimerPending());
    // Every later reason holds too: only the first one may speak.
    f.fakes.media.mic = reason <= 1;
    f.fakes.media.camera = reason <= 2;
    f.fakes.media.inhibitors = reason <= 3 ? QStringList{QStringLiteral("zoom")} : QStringList();
    const CURRENTSTATE states[] = {CURRENTSTATE::_ABORT_, CURRENTSTATE::_SHUTOFFMAC_,
                                   CURRENTSTATE::_MORNING_HABIT_};
    if (reason >= 4 && reason <= 6)
        app.state().currentState = states[reason - 4];
    if (reason == 7)
        app.state().shutOffTime = Time{10, 10, 0};
    f.fakes.scheduler.advance(30 * 60'000);
    QCOMPARE(f.logCount(line), 1);
    QCOMPARE(f.logCount(QStringLiteral("Initiating Break Activities")), 1);
    QCOMPARE(app.viewController().isBreakTimerPending(), rearmed);
    QCOMPARE(app.statusItem().look() == StatusItem::Look::Call, reason <= 2);
    QVERIFY(app.state().currentState != CURRENTSTATE::_ACTIVITY_);
}

void RoutineTest::breakRunsMandatoryActivitiesThenOneDrawn()
{
    AppFixture f(R"({"breakActivities": [
        {"name": "Eyes", "durationSeconds": 20, "includeInEveryBreak": true},
        {"name": "Walk", "durationSeconds": 60},
        {"name": "Water", "durationSeconds": 10, "includeInEveryBreak": true},
        {"name": "Squats", "durationSeconds": 30, "logQuantity": true}],
        "breakAfterMinutes": 30, "startTime": "07:00", "shutOffTime": "22:00"})");
    f.fakes.preferences.setValue(keys::kUserdefaultsLastHabitShowDate, at(23, QTime(7, 0)));
    AppDelegate& app = f.launch(at(23, QTime(10, 0)));
    ViewController& vc = app.viewController();
    f.fakes.scheduler.advance(30 * 60'000);
    QCOMPARE(app.state().currentState, CURRENTSTATE::_ACTIVITY_);
    QVERIFY(app.mainWindow().isVisible());
    thirdVc& progress = vc.thirdVcObj();
    QCOMPARE(progress.lblTitle->text(),
             QStringLiteral("It’s time for a break. Do 20 seconds of Eyes to earn more velmora."));
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
    QCOMPARE(done.mid(0, 2), (QStringList{QStringLiteral("Eyes"), QStringLiteral("Water")}));
    QVERIFY(done[2] == QStringLiteral("Walk") || done[2] == QStringLiteral("Squats"));
    QCOMPARE(f.logCount(QStringLiteral("Break Activities Finished")), 1);
    QVERIFY(!app.mainWindow().isVisible());
    QVERIFY(vc.isBreakTimerPending()); // the next break is a full interval away
}

void RoutineTest::officeModeFiltersAtEveryBreak()
{
    AppFixture f(R"({"breakActivities": [
        {"name": "Squats", "durationSeconds": 30},
        {"name": "Breathe", "durationSeconds": 30, "isOfficeFriendly": true}],
        "breakAfterMinutes": 30, "startTime": "07:00", "shutOffTime": "22:00"})");
    f.fakes.preferences.setValue(keys::kUserdefaultsLastHabitShowDate, at(23, QTime(7, 0)));
    AppDelegate& app = f.launch(at(23, QTime(10, 0)));
    for (int i = 0; i < 6; ++i) {
        // Switching office mode needs no reload: the next break follows it.
        app.state().isOfficeModeEnabled = i % 2 == 0;
        f.fakes.scheduler.advance(30 * 60'000);
        QCOMPARE(app.state().arrActivitiesExcludeInEveryBreak.size(),
                 app.state().isOfficeModeEnabled ? 1 : 2);
        if (app.state().isOfficeModeEnabled)
            QCOMPARE(app.state().arrActivitiesExcludeInEveryBreak.first().name, QStringLiteral("Breathe"));
        app.viewController().activityFinishedUnlockMachine();
    }
}

void RoutineTest::officeModeWithNothingFriendlySkipsTheBreak()
{
    AppFixture f(R"({"breakActivities": [{"name": "Squats", "durationSeconds": 30}],
        "breakAfterMinutes": 30, "startTime": "07:00", "shutOffTime": "22:00"})");
    f.fakes.preferences.setValue(keys::kUserdefaultsLastHabitShowDate, at(23, QTime(7, 0)));
    f.fakes.preferences.setValue(keys::kUserdefaultsOfficeModeEnabled, true);
    AppDelegate& app = f.launch(at(23, QTime(10, 0)));
    f.fakes.scheduler.advance(30 * 60'000);
    QVERIFY(!app.mainWindow().isVisible());
    QVERIFY(app.viewController().isBreakTimerPending());
    QCOMPARE(f.logCount(QStringLiteral("No activity fits this break (office mode); the break is skipped.")),
             1);
}

void RoutineTest::randomChoiceAlternatives()
{
    AppFixture f(R"({"breakActivities": [{"name": "Loosen", "durationSeconds": 30, "type": "random-choice",
        "choices": [{"name": "Neck rolls"}, {"name": "Shoulder shrugs"}]}],
        "breakAfterMinutes": 30, "startTime": "07:00", "shutOffTime": "22:00"})");
    f.fakes.preferences.setValue(keys::kUserdefaultsLastHabitShowDate, at(23, QTime(7, 0)));
    AppDelegate& app = f.launch(at(23, QTime(9, 0)));
    QStringList shown;
    for (int i = 0; i < 6; ++i) {
        f.fakes.scheduler.advance(30 * 60'000);
        thirdVc& progress = app.viewController().thirdVcObj();
        click(progress.btnMain);
        shown << app.viewController().timerViewcontrollerObj().currentActicityTitle;
        QCOMPARE(app.state().lastShownRandomChoiceDic.value(QStringLiteral("Loosen")).name, shown.last());
        app.viewController().activityFinishedUnlockMachine();
    }
    // With a memory of the last one, two alternatives strictly alternate.
    for (int i = 1; i < shown.size(); ++i)
        QVERIFY2(shown[i] != shown[i - 1], qPrintable(shown.join(u',')));
}

void RoutineTest::webPageLinksAreEmbedded_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("embedded");
    QTest::newRow("watch link") << "https://www.youtube.com/watch?v=abc"
                                << "https://www.youtube.com/embed/abc?autoplay=1";
    QTest::newRow("watch link with more") << "https://www.youtube.com/watch?v=abc&t=5"
                                          << "https://www.youtube.com/embed/abc&t=5?autoplay=1";
    QTest::newRow("page with a query") << "https://example.org/a?x=1"
                                       << "https://example.org/a?x=1&autoplay=1";
    QTest::newRow("page without one") << "https://example.org/a"
                                      << "https://example.org/a?autoplay=1";
}

void RoutineTest::webPageLinksAreEmbedded()
{
    QFETCH(QString, link);
    QFETCH(QString, embedded);
    QCOMPARE(timerViewcontroller::embedAddress(link), embedded);
}

void RoutineTest::displayStaysAwakeExactlyWhileAnItemCounts()
{
    AppFixture f(kMorning);
    f.fakes.preferences.setValue(keys::kUserdefaultsPromptToRememberHabit, false);
    AppDelegate& app = morningUp(f);
    f.fakes.scheduler.advance(30'000);
    QVERIFY(!f.fakes.displayAwake.held);
    click(app.viewController().firstViewControllerObj().btnStartFirstHabit);
    QVERIFY(f.fakes.displayAwake.held);
    f.fakes.scheduler.advance(29'000);
    QVERIFY(f.fakes.displayAwake.held);
    f.fakes.scheduler.advance(1'000);
    QVERIFY(!f.fakes.displayAwake.held);
    // A day without pages never loads the web engine.
    QVERIFY(!app.viewController().timerViewcontrollerObj().webView);
}

QTEST_MAIN(RoutineTest)
#include "tst_routine.moc"
