#include "DaySchedule.h"
#include "DebugLog.h"
#include "FakePorts.h"
#include "GateHost.h"
#include "PreferenceKeys.h"
#include "RunState.h"
#include "SyncTimestamps.h"
#include "TextCatalogue.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;

using namespace velmora;
using namespace velmora::test;

namespace {
struct RecordingHost : GateHost
{
    QStringList calls;
    bool visible = false;
    void abortAllProcess() override { calls << u"abort"_s; }
    void loadMainWindow() override {}
    void showMainWindow() override { visible = true; }
    bool isMainWindowVisible() const override { return visible; }
    void showExtraWindows() override {}
    void setActivityTimer() override { calls << u"timer"_s; }
    void showAllMorningHabits() override { calls << u"morning"_s; }
    void showAllEveningHabits() override { calls << u"evening"_s; }
    void showFocusSummaryView() override { calls << u"summary"_s; }
    void showShutOffScreen() override { calls << u"lock"_s; }
    void setCallLook() override { calls << u"call look"_s; }
    void checkIsMeetingsGoingOn() override {}
    bool isFocusModeOn() const override { return false; }
    void focusModeFinishedFromShutOff() override {}
};

// The day's gates with start and shut-off times, at a moment of 2026-11-23.
struct Gates
{
    QTemporaryDir dir;
    FakeClock clock;
    MemoryPreferences preferences;
    FakeMedia media;
    FakeNotifier notifier;
    TextCatalogue texts;
    RunState state;
    RecordingHost host;
    DebugLog log{clock, dir.filePath(u"log.txt"_s)};
    SyncTimestamps sync{preferences, clock};
    DaySchedule schedule{{state, preferences, clock, log, media, notifier, texts, sync, host}};

    Gates(QTime now = QTime(12, 0), Time start = {7, 0, 0}, Time shutOff = {22, 0, 0})
    {
        state.startTime = start;
        state.shutOffTime = shutOff;
        clock.set(QDateTime(QDate(2026, 11, 23), now));
    }
    // The sync folder's time-stamp file, written with CONTENTS when given.
    QString syncFile(QTemporaryDir& folder, const QByteArray& contents = {})
    {
        preferences.setValue(keys::kUserdefaultsSelectedFolder, folder.path());
        QFile file(folder.filePath(u"timestamp.plist"_s));
        if (!contents.isEmpty() && file.open(QIODevice::WriteOnly))
            file.write(contents);
        return file.fileName();
    }
};

Time timeOf(QTime t)
{
    return {t.hour(), t.minute(), 0};
}
} // namespace

class GatesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void checkLastHabitShowDate_data()
    {
        QTest::addColumn<QDateTime>("shown");
        QTest::addColumn<bool>("alreadyShowed");
        QTest::newRow("yesterday late") << QDateTime(QDate(2026, 11, 22), QTime(23, 59)) << false;
        QTest::newRow("today early") << QDateTime(QDate(2026, 11, 23), QTime(0, 0)) << true;
        QTest::newRow("tomorrow") << QDateTime(QDate(2026, 11, 24), QTime(7, 0)) << true;
        QTest::newRow("same day last month") << QDateTime(QDate(2026, 10, 23), QTime(7, 0)) << false;
        QTest::newRow("earlier month next year") << QDateTime(QDate(2027, 1, 1), QTime(7, 0)) << true;
        QTest::newRow("later day last year") << QDateTime(QDate(2025, 12, 31), QTime(7, 0)) << false;
    }

    void checkLastHabitShowDate()
    {
        QFETCH(QDateTime, shown);
        QFETCH(bool, alreadyShowed);
        Gates g;
        g.state.isHabitAlreadyShowed = !alreadyShowed;
        g.schedule.checkLastHabitShowDate(shown);
        QCOMPARE(g.state.isHabitAlreadyShowed, alreadyShowed);
    }

    void isShutOffTimeGoing_data()
    {
        QTest::addColumn<QTime>("start");
        QTest::addColumn<QTime>("shutOff");
        QTest::addColumn<QTime>("now");
        QTest::addColumn<bool>("going");
        const QTime s(7, 0), e(22, 0), late(1, 0);
        // The day's own times around the shut-off are the day test's.
        QTest::newRow("normal: morning before start") << s << e << QTime(6, 59, 59) << true;
        QTest::newRow("normal: at start") << s << e << QTime(7, 0) << false;
        QTest::newRow("past midnight: night") << s << late << QTime(3, 0) << true;
        QTest::newRow("past midnight: at start") << s << late << QTime(7, 0) << false;
        QTest::newRow("equal times: any other time") << s << s << QTime(15, 0) << true;
        QTest::newRow("equal times: the instant") << s << s << QTime(7, 0) << false;
    }

    void isShutOffTimeGoing()
    {
        QFETCH(QTime, start);
        QFETCH(QTime, shutOff);
        QFETCH(QTime, now);
        QFETCH(bool, going);
        QCOMPARE(Gates(now, timeOf(start), timeOf(shutOff)).schedule.isShutOffTimeGoing(), going);
    }

    void showedTillDate_data()
    {
        QTest::addColumn<QTime>("shutOff");
        QTest::addColumn<QTime>("now");
        QTest::addColumn<QDateTime>("expected");
        QTest::newRow("before start")
            << QTime(22, 0) << QTime(2, 0) << QDateTime(QDate(2026, 11, 23), QTime(7, 0));
        QTest::newRow("in the day") << QTime(22, 0) << QTime(12, 0) << QDateTime();
    }

    void showedTillDate()
    {
        QFETCH(QTime, shutOff);
        QFETCH(QTime, now);
        QFETCH(QDateTime, expected);
        QCOMPARE(Gates(now, {7, 0, 0}, timeOf(shutOff)).schedule.showedTillDate().value_or(QDateTime()),
                 expected);
    }

    // Plain "zoom" is the break test's; here the spellings around it.
    void meetingProgramsKeepingTheDisplayAwake_data()
    {
        QTest::addColumn<QStringList>("inhibitors");
        QTest::addColumn<bool>("on");
        QTest::newRow("Zoom.us, case folded") << QStringList{u"Zoom.us"_s} << true;
        QTest::newRow("teams by path") << QStringList{u"/usr/bin/teams-for-linux"_s} << true;
        QTest::newRow("a video player") << QStringList{u"mpv"_s, u"firefox"_s} << false;
        QTest::newRow("near miss") << QStringList{u"zoomer"_s} << false;
    }

    void meetingProgramsKeepingTheDisplayAwake()
    {
        QFETCH(QStringList, inhibitors);
        QFETCH(bool, on);
        Gates g;
        g.media.inhibitors = inhibitors;
        QCOMPARE(g.schedule.isPreventUserIdleDisplaySleepOn(), on);
    }

    void timeTheCalendarRejectsLeavesTheDayAlone()
    {
        Gates g(QTime(12, 0), {25, 99, 0});
        g.state.isHabitAlreadyShowed = false;
        g.state.arrAllMorningHabits = {habit{}};
        QVERIFY(!g.schedule.isShutOffTimeGoing());
        for (int i = 0; i < 3; ++i)
            g.schedule.tick();
        QVERIFY(g.host.calls.isEmpty());
        // Said once for these times, not at every tick; a new bad time is said again.
        const auto lines = [&g] {
            QFile log(g.log.path());
            return log.open(QIODevice::ReadOnly) ? log.readAll().count("not a time of day") : -1;
        };
        QCOMPARE(lines(), 1);
        g.state.shutOffTime = Time{30, 0, 0};
        g.schedule.tick();
        g.schedule.tick();
        QCOMPARE(lines(), 2);
    }

    void noMorningHabitsNeverMarksTheDay()
    {
        Gates g(QTime(8, 0));
        g.state.isHabitAlreadyShowed = false;
        g.schedule.tick();
        g.schedule.tick();
        QCOMPARE(g.host.calls, (QStringList{u"abort"_s, u"abort"_s}));
        QVERIFY(!g.state.isHabitAlreadyShowed);
        QVERIFY(!g.preferences.contains(keys::kUserdefaultsLastHabitShowDate));
    }

    void syncFileIsReadAndWrittenWhateverItHeld_data()
    {
        QTest::addColumn<QByteArray>("contents");
        const auto plist = [](const char* date) {
            return SyncTimestamps::writePlist({{SyncTimestamps::kMorning, QString::fromLatin1(date)}});
        };
        QTest::newRow("no file yet") << QByteArray();
        QTest::newRow("bad date") << plist("today");
    }

    void syncFileIsReadAndWrittenWhateverItHeld()
    {
        QFETCH(QByteArray, contents);
        Gates g;
        QTemporaryDir folder;
        const QString path = g.syncFile(folder, contents);
        QVERIFY(!g.sync.getMorningRoutineDate());
        // Writing over it yields a readable file, and each key keeps the other machine's.
        g.clock.set(QDateTime(QDate(2026, 11, 22), QTime(21, 0)));
        g.sync.writeEveningRoutineDate();
        g.clock.set(QDateTime(QDate(2026, 11, 23), QTime(7, 0, 5)));
        g.sync.writeMorningRoutineDate();
        QCOMPARE(*g.sync.getEveningRoutineDate(), QDateTime(QDate(2026, 11, 22), QTime(21, 0)));
        QCOMPARE(*g.sync.getMorningRoutineDate(), QDateTime(QDate(2026, 11, 23), QTime(7, 0, 5)));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray xml = file.readAll();
        QVERIFY(xml.contains("<key>lastMorningRoutine</key>"));
        QVERIFY(xml.contains("<string>2026-11-23 07:00:05</string>"));
    }
};

QTEST_GUILESS_MAIN(GatesTest)
#include "tst_gates.moc"
