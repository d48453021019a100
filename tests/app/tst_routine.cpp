// Start-up (the first run, the data folder, the catalogue download, preferences
// that an older version or a hand edit left in a bad state), then routines and
// breaks driven through the real screens on the virtual clock, with clicks on the
// real buttons and keys on the real lock window.

#include "AppFixture.h"
#include "firstViewController.h"
#include "LockLayout.h"
#include "LockWindows.h"
#include "logQuantityVc.h"
#include "menuViewController.h"
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

// A day of breaks every 30 minutes, its morning routine done, from 10:00.
AppDelegate& breakDay(AppFixture& f, const char* activities)
{
    f.dayDocumentWith(QByteArray(R"({"breakActivities": )") + activities +
                      R"(, "breakAfterMinutes": 30, "startTime": "07:00", "shutOffTime": "22:00"})");
    f.morningDone();
    return f.launch(at(23, QTime(10, 0)));
}
} // namespace

class RoutineTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    // A first launch prepares the data folder; a relaunch tells of the missing tray no more.
    void firstLaunchAndRelaunch()
    {
        AppFixture f;
        f.fakes.preferences.remove(keys::kUserdefaultsFirstRun);
        f.fakes.preferences.remove(u"velmoraTrayHintShown"_s);
        const QString data = f.dataFolder();
        QDir().mkpath(data);
        QFile stale(data + u"/vlmr-focus.html"_s);
        QVERIFY(stale.open(QIODevice::WriteOnly) && stale.write("old page"));
        stale.close();

        f.launch(at(23, QTime(15, 0)));
        // The block page is the packaged one, not what an older version left there.
        QVERIFY(AppFixture::readAll(data + u"/vlmr-focus.html"_s).contains(u"vlmr-focus.js"_s) &&
                QFile::exists(data + u"/vlmr-focus.js"_s));

        f.launch(at(23, QTime(15, 1)));
        QCOMPARE(f.fakes.notifier.notifications.size(), 1);
        QVERIFY(f.fakes.notifier.notifications.first().contains(u"tray"_s));
    }

    // A server that never answers holds start-up back for a minute, then the packaged texts serve.
    void startUpWaitsForTheCatalogue()
    {
        AppFixture f;
        f.configServer = QUrl(u"http://127.0.0.1:9/"_s);
        AppDelegate& app = f.launch(at(23, QTime(12, 0)));
        QCOMPARE(f.fakes.http.requests[0].timeoutMs, 60'000);
        QVERIFY(!app.isTickRunning());
        app.togglePopover(); // the panel does not open before start-up is over
        QVERIFY(!app.menuViewControllerObj().isVisible());

        f.fakes.http.answer({0, {}, u"Operation timed out"_s});
        f.fakes.scheduler.flush();
        QVERIFY(app.isTickRunning());
        f.fakes.media.mic = true;
        f.fakes.scheduler.advance(5000);
        QCOMPARE(app.statusItem().title(), u"CALL"_s);
    }

    // The welcome on the day of the first run: no abort button to skip it, the downloaded
    // catalogue's texts (the screens are built before it arrives and take them when shown),
    // and the tick only once the machine is unlocked.
    void welcomeTakesTheDownloadedTextsAndStartsTheTickAfterUnlock()
    {
        AppFixture f;
        f.fakes.preferences.remove(keys::kUserdefaultsFirstRun);
        f.configServer = QUrl(u"http://127.0.0.1:9/"_s);
        AppDelegate& app = f.launch(at(23, QTime(15, 0)));
        f.fakes.http.answer({200,
                             R"({"common": {"stayFocusedText": "Go well", "appName": "Vm"},
            "welcomeInfo": {"welcomeEndMessage": "All done"},
            "logQuantityInfo": {"title": "Count it", "buttonOkText": "Yes", "buttonCancelText": "Skip"}})",
                             {}});
        f.fakes.scheduler.flush();
        ViewController& vc = app.viewController();
        firstViewController& overview = vc.firstViewControllerObj();
        click(overview.btnStartFirstHabit); // no countdown on the welcome screen
        f.fakes.scheduler.advance(app.state().introActivity->durationSeconds * 1000);
        thirdVc& progress = vc.thirdVcObj();
        QCOMPARE(progress.lblSubTitle->text(), u"All done"_s);
        QVERIFY(!vc.btnAbort->isVisible());
        QVERIFY(!app.isTickRunning());
        logQuantityVc& quantity = vc.logQuantityVcObj();
        quantity.resetData(u"Squats"_s, u"20"_s, {}, CURRENTSTATE::_BREATHING_);
        QCOMPARE(quantity.lblTitle->text(), u"Count it"_s);
        quantity.hide();

        click(progress.btnMain);
        QCOMPARE(vc.lblMessage->text(), u"Go well"_s);
        QCOMPARE(app.lockWindows().arrWindows().constFirst()->lblTitle->text(), u"Vm"_s);
        f.fakes.scheduler.advance(3'000);
        QVERIFY(!app.mainWindow().isVisible());
        QVERIFY(app.isTickRunning());
        QVERIFY(f.usageRows().isEmpty()); // the intro never reaches the usage log
        // No morning routine follows on the day of the first run.
        f.fakes.scheduler.advanceTo(QTime(21, 0));
        QCOMPARE(f.logCount(u"Showing morning habits."_s), 0);
    }

    void preferencesOfTheWrongTypeNeverCrash_data()
    {
        QTest::addColumn<QVariant>("junk");
        QTest::newRow("text") << QVariant(u"abc"_s);
        QTest::newRow("list") << QVariant(QStringList{u"a"_s, u"b"_s});
        QTest::newRow("bool") << QVariant(true);
    }

    void preferencesOfTheWrongTypeNeverCrash()
    {
        QFETCH(QVariant, junk);
        AppFixture f;
        for (const QString& key :
             {keys::kUserdefaultsSelectedJson, keys::kUserdefaultsFirstRunDate,
              keys::kUserdefaultsLastHabitShowDate, keys::kUserdefaultsIsAppEnabled,
              keys::kUserdefaults4HourReActivateTime, keys::kUserdefaultsShowPomodoroView,
              keys::kUserdefaultsShutdownAborted, keys::kUserdefaultsEveningHabitsShowedTillDate,
              keys::kUserdefaultsFocusSummaryShowedTillDate, keys::kUserdefaultsSelectedFolder,
              keys::kUserdefaultsArrFocusTypes, keys::kUserdefaultsArrBlockedUrls,
              keys::kUserdefaultsAppPassword, keys::kUserdefaults24HoursClearPasswordTime,
              keys::kUserdefaultsPomodoroModeEnabled, keys::kUserdefaultsOfficeModeEnabled,
              keys::kUserdefaultsReducedMotion, keys::kUserdefaultsPromptToRememberHabit})
            f.fakes.preferences.setValue(key, junk);
        f.fakes.preferences.setValue(keys::kUserdefaultsFirstRun, true);
        AppDelegate& app = f.launch(at(23, QTime(6, 0)));
        f.fakes.scheduler.advanceTo(QTime(23, 0));
        // Whatever the junk, the focus types come back whole and the tray answers.
        QCOMPARE(app.state().arrFocusType.size() >= 2, true);
        QVERIFY(app.statusItem().isClickable() || !app.state().isAppEnable);
    }

    // Switches are seeded before anything reads them.
    void preferencesAreRepairedAtLaunch()
    {
        AppFixture f;
        f.fakes.preferences.setValue(keys::kUserdefaultsOfficeModeEnabled, u"maybe"_s);
        f.fakes.preferences.setValue(keys::kUserdefaultsPromptToRememberHabit, false);
        AppDelegate& app = f.launch(at(23, QTime(12, 0)));
        QCOMPARE(*f.fakes.preferences.boolean(keys::kUserdefaultsOfficeModeEnabled), false);
        QCOMPARE(*f.fakes.preferences.boolean(keys::kUserdefaultsReducedMotion), false);
        QCOMPARE(*f.fakes.preferences.boolean(keys::kUserdefaultsPomodoroModeEnabled), true);
        QVERIFY(!app.state().isPromptToRememberHabit); // a stored switch is kept, not reseeded
        QVERIFY(f.fakes.preferences.date(keys::kUserdefaultsFirstRunDate).has_value());
    }

    void resetHotKeyAsksThenClearsAndRestarts_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::newRow("yes") << true;
        QTest::newRow("no") << false;
    }

    // The question comes above the lock, which lets go of the keyboard while it is asked.
    void resetHotKeyAsksThenClearsAndRestarts()
    {
        QFETCH(bool, yes);
        AppFixture f;
        AppDelegate& app = f.morningUp();
        bool aboveTheLock = false;
        QTimer::singleShot(0, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            aboveTheLock = box && !app.mainWindow().mayTakeKeyboard() &&
                           box->windowHandle()->transientParent() == app.mainWindow().windowHandle();
            box->buttons().value(yes ? 0 : 1)->click();
        });
        QVERIFY(f.fakes.hotKeys.press(Qt::Key_J, Qt::ControlModifier | Qt::MetaModifier));
        QVERIFY(aboveTheLock);
        QCOMPARE(f.fakes.preferences.contains(keys::kUserdefaultsFirstRun), !yes);
        QCOMPARE(f.fakes.launcher.restarts, yes ? 1 : 0);
        QCOMPARE(f.exitStatuses.size(), yes ? 1 : 0);
        QVERIFY(QFile::exists(f.dataFolder() + u"/vlmrStats.csv"_s));
    }

    // The morning routine on the clock's edges: the overview's thirty seconds, the display
    // kept awake exactly while an item counts, the progress sums, the sounds, the quantity's
    // rules, and animations that decode only on a screen that is shown, never with reduced
    // motion. The keys and the rows on the desktop are it_morning_routine's.
    void wholeMorningRoutineByClicks()
    {
        AppFixture f(kMorning);
        f.fakes.preferences.setValue(keys::kUserdefaultsPromptToRememberHabit, false);
        AppDelegate& app = f.morningUp();
        ViewController& vc = app.viewController();
        firstViewController& overview = vc.firstViewControllerObj();
        timerViewcontroller& timer = vc.timerViewcontrollerObj();
        thirdVc& progress = vc.thirdVcObj();
        QVERIFY(!style::isAnimating(progress.imgViewGif));
        pressKey(app, Qt::Key_Return);
        QCOMPARE(app.state().currentAction, ACTION::_STARTING_);
        f.fakes.scheduler.advance(29'000);
        QVERIFY(!overview.btnStartFirstHabit->isVisible());
        f.fakes.scheduler.advance(1'000);
        QVERIFY(!f.fakes.displayAwake.held);
        checkLockLayout(app.mainWindow(), u"overview"_s);
        click(overview.btnStartFirstHabit);

        QCOMPARE(vc.currentScreen(), &timer);
        QVERIFY(f.fakes.displayAwake.held);
        pressKey(app, Qt::Key_Enter); // while the item counts: nothing
        checkLockLayout(app.mainWindow(), u"timer"_s);
        f.fakes.scheduler.advance(29'000);
        QVERIFY(f.fakes.displayAwake.held);
        f.fakes.scheduler.advance(1'000);
        QVERIFY(!f.fakes.displayAwake.held);

        QCOMPARE(vc.currentScreen(), &progress);
        QVERIFY(!style::isAnimating(progress.imgViewGif));
        QCOMPARE(progress.lblProgress->text(),
                 u"You have completed 30s of habits - 1m 20s to go. You can do it!"_s);
        QCOMPARE(f.fakes.notifier.sounds, QStringList{u"everyActivity"_s});
        checkLockLayout(app.mainWindow(), u"progress"_s);
        app.state().kIsReducedMotion = false;
        pressKey(app, Qt::Key_Return); // the progress button
        QCOMPARE(app.state().currentHabitIndex, 1);
        QVERIFY(style::isAnimating(timer.imgViewGif));

        f.fakes.scheduler.advance(20'000);
        QVERIFY(!style::isAnimating(timer.imgViewGif));
        logQuantityVc& quantity = vc.logQuantityVcObj();
        QVERIFY(!quantity.btnOk->isEnabled());
        checkLockLayout(app.mainWindow(), u"quantity"_s);
        pressKey(app, Qt::Key_Return); // empty quantity field: nothing
        QVERIFY(quantity.isVisible());
        QTest::keyClicks(quantity.textFieldCount, u"12a"_s);
        QCOMPARE(quantity.textFieldCount->text(), u"12"_s);
        click(quantity.btnOk);
        click(progress.btnMain);

        f.fakes.scheduler.advance(60'000);
        QVERIFY(style::isAnimating(progress.imgViewGif));
        QCOMPARE(progress.lblProgress->text(), u"You have completed 1m 50s of habits."_s);
        QCOMPARE(f.fakes.notifier.sounds.last(), u"afterMorningRoutine"_s);
        click(progress.btnMain);
        f.fakes.scheduler.advance(3'000);
        QVERIFY(!app.mainWindow().isVisible());
        for (QLabel* label : app.mainWindow().findChildren<QLabel*>())
            QVERIFY2(!style::isAnimating(label), qPrintable(label->objectName()));
        QVERIFY(!timer.webView); // a day without pages never loads the web engine
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
        QCOMPARE(quiz.popupBtnHabits->count(), 4); // "Select Habit" and every habit of the routine
        checkLockLayout(app.mainWindow(), u"quiz"_s);
        quiz.popupBtnHabits->setCurrentIndex(quiz.popupBtnHabits->findText(u"Push-ups"_s));
        quiz.popupBtnHabitsClicked();
        click(quiz.btnStartNextHabit);
        QCOMPARE(app.state().currentHabitIndex, 1);

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
        f.fakes.scheduler.advance(20'000);
        click(vc.firstViewControllerObj().btnStartFirstHabit);
        f.fakes.scheduler.advance(40'000);
        click(vc.thirdVcObj().btnMain);
        f.fakes.scheduler.advance(50'000);

        // The last evening habit: no progress screen, straight to the lock, with the quantity over it.
        QCOMPARE(app.state().currentState, CURRENTSTATE::_SHUTOFFMAC_);
        logQuantityVc& quantity = vc.logQuantityVcObj();
        QCOMPARE(quantity.lblSubTitle->text(), u"How many pages of Journal?"_s);
        QTest::keyClicks(quantity.textFieldCount, u"3"_s);
        click(quantity.btnOk);
        const QStringList rows = f.usageRows();
        QCOMPARE(rows.size(), 2);
        QVERIFY(rows[0].startsWith(u"evening routine,Tidy,40,,,"_s));
        QVERIFY(rows[1].startsWith(u"evening routine,Journal,50,How many pages of <activity>?,3,"_s));
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
        thirdVc& progress = vc.thirdVcObj();
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
    }
};

// Two screens side by side, so that the lock has a blank neighbour.
int main(int argc, char* argv[])
{
    QTemporaryDir dir;
    QFile config(dir.filePath(u"screens.json"_s));
    if (!config.open(QIODevice::WriteOnly))
        return 1;
    config.write(R"({"screens": [{"name": "left", "x": 0, "y": 0, "width": 1280, "height": 800},
                                 {"name": "right", "x": 1280, "y": 0, "width": 1280, "height": 800}]})");
    config.close();
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + QFile::encodeName(config.fileName()));
    QApplication app(argc, argv);
    RoutineTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_routine.moc"
