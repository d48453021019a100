// Start-up: the first run, the data folder, the catalogue download, and
// preferences that an older version or a hand edit left in a bad state.

#include "AppFixture.h"
#include "firstViewController.h"
#include "LockWindows.h"
#include "logQuantityVc.h"
#include "PreferenceKeys.h"
#include "StatusItem.h"
#include "thirdVc.h"
#include "ViewController.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::Literals::StringLiterals;

using namespace velmora;
using namespace velmora::test;

class LaunchTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    // A first launch prepares the data folder and shows the welcome; a relaunch, even one
    // after the welcome was killed, is no first run and tells of the missing tray no more.
    void firstLaunchAndRelaunch()
    {
        AppFixture f;
        f.fakes.preferences.remove(keys::kUserdefaultsFirstRun);
        f.fakes.preferences.remove(u"velmoraTrayHintShown"_s);
        const QString data = f.dataFolder();
        QDir().mkpath(data);
        QFile stale(data + u"/vlmr-focus.html"_s);
        QVERIFY(stale.open(QIODevice::WriteOnly));
        stale.write("old page");
        stale.close();

        f.launch(at(23, QTime(15, 0)));
        QFile csv(data + u"/vlmrStats.csv"_s);
        QVERIFY(csv.open(QIODevice::ReadOnly));
        QCOMPARE(csv.readAll(), QByteArray(UsageLog::kHeader));
        QFile page(data + u"/vlmr-focus.html"_s);
        QVERIFY(page.open(QIODevice::ReadOnly));
        QVERIFY(page.readAll().contains("vlmr-focus.js"));
        QVERIFY(QFile::exists(data + u"/vlmr-focus.js"_s));
        QVERIFY(QFile::exists(data + u"/logo.png"_s));
        // The sound server can only play real files.
        for (const char* sound : {"afterMorningRoutine.wav", "everyActivity.wav"})
            QVERIFY2(QFile::exists(data + u"/sounds/"_s + QLatin1String(sound)), sound);
        QCOMPARE(f.fakes.loginService.enables, 1);
        QCOMPARE(f.logCount(u"downloading config file"_s), 1);

        AppDelegate& again = f.launch(at(23, QTime(15, 1)));
        QCOMPARE(again.state().currentState, CURRENTSTATE::_NOTHING_);
        QVERIFY(again.isTickRunning());
        QCOMPARE(f.logCount(u"Showing first time welcome activity."_s), 1);
        QCOMPARE(f.fakes.notifier.notifications.size(), 1);
        QVERIFY(f.fakes.notifier.notifications.first().contains(u"tray"_s));
    }

    void startUpWaitsForTheCatalogue_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("callTitle");
        QTest::newRow("served catalogue")
            << 200 << QByteArray(R"({"common": {"buttonStatusStateCallText": "MEETING"}})") << "MEETING";
        QTest::newRow("server error: packaged") << 503 << QByteArray() << "CALL";
        QTest::newRow("time-out: packaged") << 0 << QByteArray() << "CALL";
    }

    void startUpWaitsForTheCatalogue()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(QString, callTitle);
        AppFixture f;
        f.configServer = QUrl(u"http://127.0.0.1:9/"_s);
        AppDelegate& app = f.launch(at(23, QTime(12, 0)));
        QCOMPARE(f.fakes.http.requests.size(), 1);
        QCOMPARE(f.fakes.http.requests[0].timeoutMs, 60'000);
        QVERIFY(!app.state().isAppInitialLodded);
        QVERIFY(!app.isTickRunning());

        f.fakes.http.answer({status, body, status ? QString() : u"Operation timed out"_s});
        f.fakes.scheduler.flush();
        QVERIFY(app.state().isAppInitialLodded);
        QVERIFY(app.isTickRunning());
        f.fakes.media.mic = true;
        f.fakes.scheduler.advance(5000);
        QCOMPARE(app.statusItem().title(), callTitle);
    }

    // The screens are built before the download ends: they take their texts when shown.
    void screensTakeTheirTextsFromTheDownloadedCatalogue()
    {
        AppFixture f;
        f.fakes.preferences.remove(keys::kUserdefaultsFirstRun);
        f.configServer = QUrl(u"http://127.0.0.1:9/"_s);
        AppDelegate& app = f.launch(at(23, QTime(12, 0)));
        f.fakes.http.answer({200,
                             R"({"common": {"stayFocusedText": "Go well", "appName": "Vm"},
            "welcomeInfo": {"welcomeEndMessage": "All done"},
            "logQuantityInfo": {"title": "Count it", "buttonOkText": "Yes", "buttonCancelText": "Skip"}})",
                             {}});
        f.fakes.scheduler.flush();
        ViewController& vc = app.viewController();
        click(vc.firstViewControllerObj().btnStartFirstHabit);
        f.fakes.scheduler.advance(app.state().introActivity->durationSeconds * 1000);
        QCOMPARE(vc.thirdVcObj().lblSubTitle->text(), u"All done"_s);
        vc.logQuantityVcObj().resetData(u"Squats"_s, u"20"_s, {}, CURRENTSTATE::_BREATHING_);
        QCOMPARE(vc.logQuantityVcObj().lblTitle->text(), u"Count it"_s);
        QCOMPARE(vc.logQuantityVcObj().btnOk->text(), u"Yes"_s);
        QCOMPARE(vc.logQuantityVcObj().btnCancel->text(), u"Skip"_s);
        vc.logQuantityVcObj().hide();
        click(vc.thirdVcObj().btnMain);
        QCOMPARE(vc.lblMessage->text(), u"Go well"_s);
        QCOMPARE(app.lockWindows().arrWindows().size(), 1); // the second screen's blank window
        QCOMPARE(app.lockWindows().arrWindows().constFirst()->lblTitle->text(), u"Vm"_s);
    }

    void preferencesOfTheWrongTypeNeverCrash_data()
    {
        QTest::addColumn<QVariant>("junk");
        QTest::newRow("text") << QVariant(u"abc"_s);
        QTest::newRow("number") << QVariant(17);
        QTest::newRow("list") << QVariant(QStringList{u"a"_s, u"b"_s});
        QTest::newRow("map") << QVariant(QVariantMap{{u"x"_s, 1}});
        QTest::newRow("date") << QVariant(at(23, QTime(9, 0)));
        QTest::newRow("bool") << QVariant(true);
    }

    void preferencesOfTheWrongTypeNeverCrash()
    {
        QFETCH(QVariant, junk);
        const QStringList all{keys::kUserdefaultsSelectedJson,
                              keys::kUserdefaultsFirstRunDate,
                              keys::kUserdefaultsLastHabitShowDate,
                              keys::kUserdefaultsIsAppEnabled,
                              keys::kUserdefaults4HourReActivateTime,
                              keys::kUserdefaultsShowPomodoroView,
                              keys::kUserdefaultsShutdownAborted,
                              keys::kUserdefaultsEveningHabitsShowedTillDate,
                              keys::kUserdefaultsFocusSummaryShowedTillDate,
                              keys::kUserdefaultsSelectedFolder,
                              keys::kUserdefaultsArrFocusTypes,
                              keys::kUserdefaultsArrBlockedUrls,
                              keys::kUserdefaultsAppPassword,
                              keys::kUserdefaults24HoursClearPasswordTime,
                              keys::kUserdefaultsPomodoroModeEnabled,
                              keys::kUserdefaultsOfficeModeEnabled,
                              keys::kUserdefaultsReducedMotion,
                              keys::kUserdefaultsPromptToRememberHabit};
        AppFixture f;
        for (const QString& key : all)
            f.fakes.preferences.setValue(key, junk);
        f.fakes.preferences.setValue(keys::kUserdefaultsFirstRun, true);
        AppDelegate& app = f.launch(at(23, QTime(6, 0)));
        f.fakes.scheduler.advanceTo(QTime(23, 0));
        // Whatever the junk, the focus types come back whole and the tray answers.
        QCOMPARE(app.state().arrFocusType.size() >= 2, true);
        QVERIFY(app.statusItem().isClickable() || !app.state().isAppEnable);
    }

    // Switches are seeded and the focus types repaired before anything reads them.
    void preferencesAreRepairedAtLaunch()
    {
        AppFixture f;
        f.fakes.preferences.setValue(keys::kUserdefaultsOfficeModeEnabled, u"maybe"_s);
        f.fakes.preferences.setValue(keys::kUserdefaultsPromptToRememberHabit, false);
        const QVariantMap work{{u"name"_s, u"Work"_s}, {u"isOn"_s, true}};
        const QVariantMap oldDefault{{u"name"_s, u"Anything"_s}, {u"isDefault"_s, true}};
        f.fakes.preferences.setValue(keys::kUserdefaultsArrFocusTypes, QVariantList{oldDefault, work});
        AppDelegate& app = f.launch(at(23, QTime(12, 0)));
        QCOMPARE(*f.fakes.preferences.boolean(keys::kUserdefaultsOfficeModeEnabled), false);
        QCOMPARE(*f.fakes.preferences.boolean(keys::kUserdefaultsReducedMotion), false);
        QCOMPARE(*f.fakes.preferences.boolean(keys::kUserdefaultsPromptToRememberHabit), false);
        QCOMPARE(*f.fakes.preferences.boolean(keys::kUserdefaultsPomodoroModeEnabled), true);
        QVERIFY(!app.state().isPromptToRememberHabit);
        QVERIFY(f.fakes.preferences.date(keys::kUserdefaultsFirstRunDate).has_value());
        const QVariantList types = app.state().arrFocusType;
        QCOMPARE(types.size(), 3);
        QCOMPARE(types[0].toMap().value(u"name"_s).toString(), u"Work"_s);
        QCOMPARE(types[0].toMap().value(u"isOn"_s).toBool(), false);
        QCOMPARE(types[1].toMap().value(u"name"_s).toString(), u"Meetings"_s);
        QCOMPARE(types[2].toMap().value(u"name"_s).toString(), u"Complete anarchy! Block nothing 😬"_s);
        QCOMPARE(types[1].toMap().value(u"color"_s).toString(), u"D0963C"_s);
        QCOMPARE(f.fakes.preferences.mapList(keys::kUserdefaultsArrFocusTypes)->size(), 3);
    }

    void resetHotKeyAsksThenClearsAndRestarts_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::newRow("yes") << true;
        QTest::newRow("no") << false;
    }

    void resetHotKeyAsksThenClearsAndRestarts()
    {
        QFETCH(bool, yes);
        AppFixture f;
        AppDelegate& app = f.launch(at(23, QTime(12, 0)));
        QString asked;
        app.confirm = [&](const QString& message) {
            asked = message;
            return yes;
        };
        QVERIFY(f.fakes.hotKeys.press(Qt::Key_J, Qt::ControlModifier | Qt::MetaModifier));
        QCOMPARE(asked, u"Are you sure you want to reset Velmora? All your settings will be deleted."_s);
        QCOMPARE(f.fakes.preferences.contains(keys::kUserdefaultsFirstRun), !yes);
        QCOMPARE(f.fakes.launcher.restarts, yes ? 1 : 0);
        QCOMPARE(f.exitStatuses.size(), yes ? 1 : 0);
        QVERIFY(QFile::exists(f.dataFolder() + u"/vlmrStats.csv"_s));
    }

    void reactivationDatePastAtLaunchRestartsAtOnce()
    {
        AppFixture f;
        f.fakes.preferences.setValue(keys::kUserdefaultsIsAppEnabled, false);
        f.fakes.preferences.setValue(keys::kUserdefaults4HourReActivateTime, at(23, QTime(9, 0)));
        AppDelegate& app = f.launch(at(23, QTime(12, 0)));
        QCOMPARE(f.fakes.launcher.restarts, 1);
        QVERIFY(app.terminateFromSelf);
        QVERIFY(!app.statusItem().isClickable());
        QCOMPARE(*f.fakes.preferences.boolean(keys::kUserdefaultsIsAppEnabled), true);
        QVERIFY(!f.fakes.preferences.contains(keys::kUserdefaults4HourReActivateTime));
        QCOMPARE(f.logCount(u"App Reactivated after 4 hours"_s), 1);
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
    LaunchTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_launch.moc"
