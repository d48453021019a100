// A day with start 07:00 and shut-off 22:00, played on the virtual clock through
// the real application object and its five-second tick.

#include "AppFixture.h"
#include "focusSummaryVc.h"
#include "StatusItem.h"
#include "SyncTimestamps.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::Literals::StringLiterals;

using namespace velmora;
using namespace velmora::test;

class DayTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void morningGateOpensAtStartTime()
    {
        AppFixture f;
        f.beforeMorning();
        AppDelegate& app = f.launch(at(23, QTime(6, 0, 1)));
        // Until the start time's second the night's lock holds the machine.
        f.fakes.scheduler.advanceTo(QTime(6, 59, 59));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_SHUTOFFMAC_);
        f.fakes.scheduler.advanceTo(QTime(7, 0, 2));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_MORNING_HABIT_);

        // A restart after the next day's start time opens the gate at once.
        AppDelegate& again = f.launch(at(24, QTime(11, 0)));
        QCOMPARE(again.state().currentState, CURRENTSTATE::_MORNING_HABIT_);
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
        f.fakes.scheduler.advanceTo(QTime(22, 0, 0));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_NOTHING_);
        f.fakes.scheduler.advanceTo(QTime(22, 0, 5));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_FOCUS_SUMMARY_);
    }

    // A restart in the night skips both evening stages and goes straight to the lock.
    void restartInTheNightGoesBackToTheLock()
    {
        AppFixture f;
        f.morningDone();
        AppDelegate& app = f.launch(at(23, QTime(22, 10)));
        QTest::mouseClick(app.focusSummary().btnContinue, Qt::LeftButton);
        QCOMPARE(app.state().currentState, CURRENTSTATE::_EVENING_HABIT_);
        AppDelegate& again = f.launch(at(24, QTime(2, 0)));
        QCOMPARE(again.state().currentState, CURRENTSTATE::_SHUTOFFMAC_);
    }

    void shutdownAbortedHoldsLockBack()
    {
        AppFixture f;
        f.morningDone();
        f.fakes.preferences.setValue(keys::kUserdefaultsShutdownAborted, at(23, QTime(22, 30)));
        AppDelegate& app = f.launch(at(23, QTime(21, 0, 1)));

        f.fakes.scheduler.advanceTo(QTime(22, 30, 0));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_NOTHING_);
        // One tick removes the passed date, the next one locks.
        f.fakes.scheduler.advanceTo(QTime(22, 30, 2));
        QVERIFY(!f.fakes.preferences.contains(keys::kUserdefaultsShutdownAborted));
        f.fakes.scheduler.advanceTo(QTime(22, 30, 7));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_FOCUS_SUMMARY_);
    }

    void cameraHoldsTheMorningRoutineBack()
    {
        AppFixture f;
        f.beforeMorning();
        AppDelegate& app = f.launch(at(23, QTime(6, 50)));
        f.fakes.media.camera = true;
        f.fakes.scheduler.advanceTo(QTime(7, 1));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_SHUTOFFMAC_);
        // The routine starts on the first tick after the call.
        f.fakes.media.camera = false;
        f.fakes.scheduler.advance(5000);
        QCOMPARE(app.state().currentState, CURRENTSTATE::_MORNING_HABIT_);
    }

    void deactivatedProgramLocksOnlyWithReactivationDate_data()
    {
        QTest::addColumn<QTime>("reactivate");
        QTest::newRow("deactivated for four hours") << QTime(23, 0);
        QTest::newRow("deactivated for good") << QTime();
        QTest::newRow("reactivation passed before launch: restarts at once") << QTime(9, 0);
    }

    void deactivatedProgramLocksOnlyWithReactivationDate()
    {
        QFETCH(QTime, reactivate);
        const bool withDate = reactivate.isValid();
        AppFixture f;
        f.morningDone();
        f.fakes.preferences.setValue(keys::kUserdefaultsIsAppEnabled, false);
        if (withDate)
            f.fakes.preferences.setValue(keys::kUserdefaults4HourReActivateTime, at(23, reactivate));
        AppDelegate& app = f.launch(at(23, QTime(19, 0, 1)));
        if (withDate && reactivate < QTime(19, 0)) {
            QCOMPARE(f.fakes.launcher.restarts, 1);
            QVERIFY(!f.fakes.preferences.contains(keys::kUserdefaults4HourReActivateTime));
            QCOMPARE(*f.fakes.preferences.boolean(keys::kUserdefaultsIsAppEnabled), true);
            return;
        }
        QCOMPARE(app.statusItem().look(), StatusItem::Look::Off);
        QVERIFY(!app.isTickRunning());
        f.fakes.scheduler.advanceTo(QTime(22, 10));
        QCOMPARE(app.state().currentState,
                 withDate ? CURRENTSTATE::_FOCUS_SUMMARY_ : CURRENTSTATE::_NOTHING_);
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
        f.beforeMorning();
        QFile plist(sync.filePath(u"timestamp.plist"_s));
        QVERIFY(
            plist.open(QIODevice::WriteOnly) &&
            plist.write(SyncTimestamps::writePlist({{u"lastMorningRoutine"_s, u"2026-11-23 06:40:00"_s}})));
        plist.close();

        AppDelegate& app = f.launch(at(23, QTime(6, 59)));
        f.fakes.scheduler.advanceTo(QTime(7, 30));
        QCOMPARE(app.state().currentState, CURRENTSTATE::_SHUTOFFMAC_);
    }

    void pastMidnightShutOff()
    {
        AppFixture f(R"({"morningHabits": [{"name": "Water", "durationSeconds": 30}],
                        "startTime": "07:00", "shutOffTime": "01:00"})");
        f.morningDone();
        AppDelegate& app = f.launch(at(23, QTime(23, 0, 1)));
        // Past midnight is still daytime until 01:00.
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
