// A day with start 07:00 and shut-off 22:00, played on the virtual clock through
// the real application object and its five-second tick.

#include "AppFixture.h"
#include "focusSummaryVc.h"
#include "LockWindows.h"
#include "PreferenceKeys.h"
#include "StatusItem.h"
#include "SyncTimestamps.h"
#include "ViewController.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::Literals::StringLiterals;

using namespace velmora;
using namespace velmora::test;

class DayTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void morningGateOpensOnceAtStartTime()
    {
        AppFixture f;
        f.fakes.preferences.setValue(keys::kUserdefaultsLastHabitShowDate, at(22, QTime(7, 0)));
        f.nightStagesDone(at(23, QTime(7, 0)));
        AppDelegate& app = f.launch(at(23, QTime(6, 0, 1)));

        // Before the start time the night's lock holds the machine.
        f.fakes.scheduler.advanceTo(QTime(6, 59, 59));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_SHUTOFFMAC_);
        QCOMPARE(f.logCount(u"Showing morning habits."_s), 0);

        f.fakes.scheduler.advanceTo(QTime(7, 0, 2));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_MORNING_HABIT_);
        QVERIFY(app.mainWindow().isVisible());
        QCOMPARE(f.fakes.preferences.date(keys::kUserdefaultsLastHabitShowDate)->date(), QDate(2026, 11, 23));

        // The routine is lifted by hand; the gate must not open again today.
        app.viewController().unlockMachine();
        app.state().currentState = CURRENTSTATE::_NOTHING_;
        f.fakes.scheduler.advanceTo(QTime(21, 0));
        QCOMPARE(f.logCount(u"Showing morning habits."_s), 1);
        QCOMPARE(f.logCount(u"Initiating morning habits."_s), 1);
        QVERIFY(!app.mainWindow().isVisible());

        // A restart after the next day's start time opens the gate at once.
        AppDelegate& again = f.launch(at(24, QTime(11, 0)));
        QCOMPARE(again.state().currentState, CURRENTSTATE::_MORNING_HABIT_);
        QCOMPARE(f.logCount(u"Showing morning habits."_s), 2);
        QVERIFY(again.isTickRunning());
    }

    void shutOffChainStartsAfterShutOffTime_data()
    {
        QTest::addColumn<QTime>("launch");
        QTest::addColumn<int>("warnings");
        // Ticks at :x1 and :x6 put one tick strictly inside (21:54:55, 21:55:00).
        QTest::newRow("one warning tick in the band") << QTime(20, 0, 1) << 1;
        // Ticks on :x0 and :x5 land on the band's edges, which do not count.
        QTest::newRow("ticks on the warning band's edges") << QTime(20, 0, 0) << 0;
    }

    void shutOffChainStartsAfterShutOffTime()
    {
        QFETCH(QTime, launch);
        QFETCH(int, warnings);
        AppFixture f;
        f.morningDone();
        AppDelegate& app = f.launch(at(23, launch));
        f.fakes.scheduler.advanceTo(QTime(21, 59, 0));
        QCOMPARE(f.fakes.notifier.notifications.size(), warnings);
        if (warnings)
            QVERIFY(f.fakes.notifier.notifications.first().contains(u"5 minutes"_s));
        f.fakes.scheduler.advanceTo(QTime(22, 0, 0));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_NOTHING_);
        QCOMPARE(f.logCount(u"Initiating shut off process."_s), 0);

        f.fakes.scheduler.advanceTo(QTime(22, 0, 5));
        QCOMPARE(f.logCount(u"Initiating shut off process."_s), 1);
        QCOMPARE(app.state().currentState, CURRENTSTATE::_FOCUS_SUMMARY_);
        QVERIFY(app.mainWindow().isVisible());
        QCOMPARE(*f.fakes.preferences.date(keys::kUserdefaultsFocusSummaryShowedTillDate),
                 at(24, QTime(7, 0)));
        QVERIFY(!app.state().isHabitAlreadyShowed);
    }

    void eveningStagesEachShowOncePerNight()
    {
        AppFixture f;
        f.morningDone();
        AppDelegate& app = f.launch(at(23, QTime(22, 10)));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_FOCUS_SUMMARY_);

        // The summary's continue button hands back to the gate.
        QTest::mouseClick(app.focusSummary().btnContinue, Qt::LeftButton);
        QCOMPARE(app.state().currentState, CURRENTSTATE::_EVENING_HABIT_);
        QCOMPARE(*f.fakes.preferences.date(keys::kUserdefaultsEveningHabitsShowedTillDate),
                 at(24, QTime(7, 0)));

        // The evening routine ends in the lock, which the following ticks leave alone.
        app.viewController().shutOffMac();
        f.fakes.scheduler.advanceTo(QTime(23, 59));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_SHUTOFFMAC_);
        QCOMPARE(f.logCount(u"Showing Focus Summary"_s), 1);
        QCOMPARE(f.logCount(u"Initiate and run Evening Habits."_s), 1);
        QCOMPARE(f.logCount(u"Showing Shut Off screen."_s), 1);

        // A restart in the night goes straight back to the lock.
        AppDelegate& again = f.launch(at(24, QTime(2, 0)));
        QCOMPARE(again.state().currentState, CURRENTSTATE::_SHUTOFFMAC_);
        QCOMPARE(f.logCount(u"Focus Summary already shown for today - skipping."_s), 2);
        QCOMPARE(f.logCount(u"Evening habits already shown for today - skipping."_s), 1);

        // Morning: the gate opens, the period is over.
        f.fakes.scheduler.advanceTo(QTime(7, 0, 5));
        QCOMPARE(again.state().currentState, CURRENTSTATE::_MORNING_HABIT_);
    }

    void shutdownAbortedHoldsLockBack()
    {
        AppFixture f;
        f.morningDone();
        f.fakes.preferences.setValue(keys::kUserdefaultsShutdownAborted, at(23, QTime(22, 30)));
        AppDelegate& app = f.launch(at(23, QTime(21, 0, 1)));

        f.fakes.scheduler.advanceTo(QTime(22, 30, 0));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_NOTHING_);
        QVERIFY(f.fakes.preferences.contains(keys::kUserdefaultsShutdownAborted));

        // One tick removes the passed date, the next one locks.
        f.fakes.scheduler.advanceTo(QTime(22, 30, 2));
        QVERIFY(!f.fakes.preferences.contains(keys::kUserdefaultsShutdownAborted));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_NOTHING_);
        f.fakes.scheduler.advanceTo(QTime(22, 30, 7));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_FOCUS_SUMMARY_);
    }

    void callCancelsMorningRoutine_data()
    {
        QTest::addColumn<bool>("mic");
        QTest::addColumn<QString>("line");
        QTest::newRow("microphone") << true << u"Mic is in use, Morning Habits cancelled."_s;
        QTest::newRow("camera") << false << u"Camera is is use, Morning Habits cancelled."_s;
    }

    void callCancelsMorningRoutine()
    {
        QFETCH(bool, mic);
        QFETCH(QString, line);
        AppFixture f;
        f.fakes.preferences.setValue(keys::kUserdefaultsLastHabitShowDate, at(22, QTime(7, 0)));
        f.nightStagesDone(at(23, QTime(7, 0)));
        AppDelegate& app = f.launch(at(23, QTime(6, 50)));
        (mic ? f.fakes.media.mic : f.fakes.media.camera) = true;

        f.fakes.scheduler.advanceTo(QTime(7, 1));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_SHUTOFFMAC_);
        QCOMPARE(app.statusItem().look(), StatusItem::Look::Call);
        QCOMPARE(app.statusItem().title(), u"CALL"_s);
        QCOMPARE(f.logCount(line), 13); // every tick from 07:00:00 to 07:01:00
        QVERIFY(!f.fakes.preferences.contains(keys::kUserdefaultsLastHabitShowDate) ||
                f.fakes.preferences.date(keys::kUserdefaultsLastHabitShowDate)->date() !=
                    QDate(2026, 11, 23));

        // The routine starts on the first tick after the call.
        (mic ? f.fakes.media.mic : f.fakes.media.camera) = false;
        f.fakes.scheduler.advance(5000);
        QCOMPARE(app.state().currentState, CURRENTSTATE::_MORNING_HABIT_);
        QCOMPARE(app.statusItem().look(), StatusItem::Look::Normal);
    }

    void deactivatedProgramLocksOnlyWithReactivationDate_data()
    {
        QTest::addColumn<bool>("withDate");
        QTest::newRow("deactivated for four hours") << true;
        QTest::newRow("deactivated for good") << false;
    }

    void deactivatedProgramLocksOnlyWithReactivationDate()
    {
        QFETCH(bool, withDate);
        AppFixture f;
        f.morningDone();
        f.fakes.preferences.setValue(keys::kUserdefaultsIsAppEnabled, false);
        if (withDate)
            f.fakes.preferences.setValue(keys::kUserdefaults4HourReActivateTime, at(23, QTime(23, 0)));
        AppDelegate& app = f.launch(at(23, QTime(19, 0, 1)));
        QCOMPARE(app.statusItem().look(), StatusItem::Look::Off);
        QCOMPARE(f.logCount(u"App started in Deactivated state"_s), 1);
        QVERIFY(!app.isTickRunning());

        f.fakes.scheduler.advanceTo(QTime(22, 10));
        QCOMPARE(app.state().currentState,
                 withDate ? CURRENTSTATE::_FOCUS_SUMMARY_ : CURRENTSTATE::_NOTHING_);
        QCOMPARE(app.mainWindow().isVisible(), withDate);

        // When the date passes the program reactivates itself through a restart.
        f.fakes.scheduler.advanceTo(QTime(23, 0, 5));
        QCOMPARE(f.fakes.launcher.restarts, withDate ? 1 : 0);
        QCOMPARE(*f.fakes.preferences.boolean(keys::kUserdefaultsIsAppEnabled), withDate);
    }

    void otherMachineShowedMorningRoutine()
    {
        AppFixture f;
        QTemporaryDir sync;
        f.fakes.preferences.setValue(keys::kUserdefaultsSelectedFolder, sync.path());
        f.fakes.preferences.setValue(keys::kUserdefaultsLastHabitShowDate, at(22, QTime(7, 0)));
        f.nightStagesDone(at(23, QTime(7, 0)));
        QFile plist(sync.filePath(u"timestamp.plist"_s));
        QVERIFY(plist.open(QIODevice::WriteOnly));
        plist.write(SyncTimestamps::writePlist({{u"lastMorningRoutine"_s, u"2026-11-23 06:40:00"_s}}));
        plist.close();

        AppDelegate& app = f.launch(at(23, QTime(6, 59)));
        f.fakes.scheduler.advanceTo(QTime(7, 30));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_SHUTOFFMAC_);
        QCOMPARE(f.logCount(u"Showing morning habits."_s), 0);
        QCOMPARE(*f.fakes.preferences.date(keys::kUserdefaultsLastHabitShowDate), at(22, QTime(7, 0)));
    }

    void pastMidnightShutOff()
    {
        AppFixture f(R"({"morningHabits": [{"name": "Water", "durationSeconds": 30}],
                        "startTime": "07:00", "shutOffTime": "01:00"})");
        f.morningDone();
        AppDelegate& app = f.launch(at(23, QTime(23, 0, 1)));
        // Past midnight is still daytime until 01:00.
        f.fakes.scheduler.advanceTo(QTime(23, 59, 59));
        f.fakes.scheduler.runUntil(at(24, QTime(1, 0, 0)));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_NOTHING_);
        f.fakes.scheduler.runUntil(at(24, QTime(1, 0, 10)));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_FOCUS_SUMMARY_);
        // A stage shown after the shut-off counts until tomorrow's start, a full day ahead.
        QCOMPARE(*f.fakes.preferences.date(keys::kUserdefaultsFocusSummaryShowedTillDate),
                 at(25, QTime(7, 0)));
    }
};

QTEST_MAIN(DayTest)
#include "tst_day.moc"
