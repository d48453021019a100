// Focus blocks on the virtual clock, through the real application object: the
// start dialog, the questions, the abort dialog, pomodoro, the shut-off, a
// restart, and the meeting suggestion.

#include "abortingFocusModeVc.h"
#include "discourageDefaultFocusVc.h"
#include "focusCompletedVc.h"
#include "FocusFixture.h"
#include "menuViewController.h"
#include "pomodoroVc.h"
#include "startingFocusModeVc.h"
#include "StatusItem.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QtTest>

using namespace velmora;
using namespace velmora::test;

namespace {
const QString kStart = QStringLiteral("2026-11-23 10:00:00");
}

class FocusSessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void timeFields_data();
    void timeFields();
    void timedBlockFromThePanel();
    void abortReasons_data();
    void abortReasons();
    void newBlockWhileQuestionsAreOpen();
    void pomodoroCycle();
    void pomodoroMarkerAtLaunch_data();
    void pomodoroMarkerAtLaunch();
    void shutOffCutsTheBlock();
    void blockRunningAtQuitComesBackOff();
    void meetingSuggestion_data();
    void meetingSuggestion();
};

void FocusSessionTest::timeFields_data()
{
    QTest::addColumn<bool>("hours"); // else the minutes field
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<bool>("canStart"); // the other field shows 00 for hours, 20 for minutes

    QTest::newRow("hours above 12 become 12") << true << QStringLiteral("25") << QStringLiteral("12") << true;
    QTest::newRow("one digit gets its leading zero")
        << true << QStringLiteral("7") << QStringLiteral("07") << true;
    QTest::newRow("minutes above 59 become 59")
        << false << QStringLiteral("70") << QStringLiteral("59") << true;
    QTest::newRow("00 and 00 cannot start") << false << QStringLiteral("0") << QStringLiteral("00") << false;
    QTest::newRow("a minute after 00 can") << false << QStringLiteral("05") << QStringLiteral("05") << true;
}

void FocusSessionTest::timeFields()
{
    QFETCH(bool, hours);
    QFETCH(QString, keys);
    QFETCH(QString, shown);
    QFETCH(bool, canStart);

    FocusFixture f;
    f.start();
    f.engine().showStartingFocusMode(FocusFixture::kWork, QStringLiteral("Work"));
    startingFocusModeVc* vc = f.engine().startingFocusModeVcObj();
    QLineEdit* field = hours ? vc->textFieldHour : vc->textFieldMinute;
    field->clear();
    QTest::keyClicks(field, keys);
    QCOMPARE(field->text(), shown);
    QCOMPARE(vc->btnStartFocus->isEnabled(), canStart);
}

void FocusSessionTest::timedBlockFromThePanel()
{
    FocusFixture f;
    AppDelegate& app = f.start();
    app.togglePopover();
    menuViewController& menu = app.menuViewControllerObj();
    QCOMPARE(menu.boxFocusMode->height(), 3 * 32 + 34);
    menu.focusRows.at(FocusFixture::kWork)->click();

    startingFocusModeVc* vc = f.engine().startingFocusModeVcObj();
    QCOMPARE(vc->lblTitle->text(), QStringLiteral("Starting Focus type - Work"));
    vc->textFieldMinute->setText(QStringLiteral("25"));
    vc->textViewQuestion->setPlainText(QStringLiteral("Draft the report"));
    QTest::keyClick(vc->textFieldMinute, Qt::Key_Return);

    QVERIFY(f.isOn(FocusFixture::kWork));
    QVERIFY(!f.engine().isStartWindowVisible());
    QCOMPARE(app.statusItem().background(), QColor(0x33, 0x66, 0xCC));
    QCOMPARE(app.statusItem().title(), QStringLiteral("FOCUS"));
    QCOMPARE(f.logCount(QStringLiteral("focus mode Started until - 10:25 AM")), 1);
    app.togglePopover();
    QCOMPARE(menu.boxFocusMode->height(), 3 * 32 + 53);
    QVERIFY(!menu.boxStartPomodoroMode->isVisible());
    QCOMPARE(menu.lblOn->text(), QStringLiteral("On Until 10:25 AM"));
    menu.hide();

    f.fakes.scheduler.advance(25 * 60 * 1000);
    focusCompletedVc* questions = f.engine().focusCompletedVcObj();
    QVERIFY(questions->isVisible());
    QCOMPARE(app.statusItem().look(), StatusItem::Look::Normal);
    QCOMPARE(questions->textViewIntention->text(), QStringLiteral("Draft the report"));
    QVERIFY(f.rows().isEmpty());
    questions->textViewAchieve->setPlainText(QStringLiteral("Two pages"));
    questions->textViewDistractions->setPlainText(QStringLiteral("Mail"));
    questions->btnTakeBreak->click();
    QCOMPARE(f.rows().size(), 1);
    QCOMPARE(f.row(0), QStringLiteral("focus block,Work,1500,,,%1,Two pages,Mail,,").arg(kStart));
}

void FocusSessionTest::abortReasons_data()
{
    QTest::addColumn<int>("reason");
    QTest::addColumn<QString>("reasonText");
    QTest::addColumn<bool>("questions");

    QTest::newRow("not working") << 0 << "Focus mode is not working properly." << false;
    QTest::newRow("achieved early: questions and a second row")
        << 1 << "I achieved what I wanted to too early." << true;
    QTest::newRow("emergency") << 2 << "I have an emergency" << false;
}

void FocusSessionTest::abortReasons()
{
    QFETCH(int, reason);
    QFETCH(QString, reasonText);
    QFETCH(bool, questions);

    FocusFixture f;
    AppDelegate& app = f.start();
    f.engine().session().start(FocusFixture::kWork, 60, QString(), FocusSession::Origin::Dialog);
    f.fakes.scheduler.advance(5 * 60 * 1000);
    f.engine().focusRowClicked(FocusFixture::kWork);

    abortingFocusModeVc* vc = f.engine().abortingFocusModeVcObj();
    QCOMPARE(vc->lblTitle->text(), QStringLiteral("Aborting Focus type - Work"));
    f.fakes.scheduler.advance(9 * 1000);
    QVERIFY(!vc->btnAbortFocus->isEnabled());
    f.fakes.scheduler.advance(1000);
    QVERIFY(vc->btnAbortFocus->isEnabled());
    vc->popUpBtnAbortReasons->setCurrentIndex(reason);
    vc->btnAbortFocus->click();

    QVERIFY(!f.engine().isStartWindowVisible());
    QVERIFY(!f.engine().session().isTimerRunning());
    QCOMPARE(app.statusItem().look(), StatusItem::Look::Normal);
    QCOMPARE(f.logCount(QStringLiteral("Focus mode abort clicked with reason - ") + reasonText), 1);
    QCOMPARE(f.engine().focusCompletedVcObj()->isVisible(), questions);
    QCOMPARE(f.rows().size(), 1);
    QCOMPARE(f.row(0),
             QStringLiteral("focus mode abort,focus block - Work,310,,,%1,,,%2,").arg(kStart, reasonText));
    if (questions) {
        f.engine().focusCompletedVcObj()->btnTakeBreak->click();
        QCOMPARE(f.rows().size(), 2);
        QCOMPARE(f.row(1), QStringLiteral("focus block,Work,310,,,%1,,,,").arg(kStart));
    }
}

void FocusSessionTest::newBlockWhileQuestionsAreOpen()
{
    FocusFixture f;
    f.start();
    f.engine().session().start(FocusFixture::kWork, 25, QString(), FocusSession::Origin::Dialog);
    QCOMPARE(f.engine().session().focusModeEndTime(), at(23, QTime(10, 25)));
    // Beta stays in front: hidden at every tick of the block, reported once per block.
    const QString report = QStringLiteral("Beta isn't allowed in the Work focus mode.");
    f.fakes.workspace.activate({QStringLiteral("beta"), QStringLiteral("Beta"), {}, {}});
    f.fakes.scheduler.advance(25 * 60 * 1000);
    QVERIFY(f.engine().focusCompletedVcObj()->isVisible());
    const qsizetype hidden = f.fakes.workspace.hidden.size();
    QVERIFY(hidden > 1000);
    f.fakes.scheduler.advance(5000);
    QCOMPARE(f.fakes.workspace.hidden.size(), hidden);
    QCOMPARE(f.fakes.notifier.notifications.count(report), 1);

    f.engine().focusRowClicked(FocusFixture::kWork);
    f.engine().startingFocusModeVcObj()->btnStartFocus->click();
    QVERIFY(!f.engine().focusCompletedVcObj()->isVisible());
    QVERIFY(f.isOn(FocusFixture::kWork));
    QCOMPARE(f.fakes.notifier.notifications.count(report), 2);
    QCOMPARE(f.rows().size(), 1);
    QCOMPARE(f.row(0), QStringLiteral("focus block,Work,1500,,,%1,25 of Work,,,").arg(kStart));
}

void FocusSessionTest::pomodoroCycle()
{
    FocusFixture f;
    AppDelegate& app = f.start();
    app.togglePopover();
    app.menuViewControllerObj().boxStartPomodoroMode->click();
    pomodoroVc* pomodoro = f.engine().pomodoroVcObj();
    QVERIFY(pomodoro->isVisible());
    pomodoro->popUpBtnFocusType->setCurrentIndex(FocusFixture::kDefault);
    pomodoro->btnLetsDoIt->click();

    discourageDefaultFocusVc* sheet = f.engine().discourageDefaultFocusVcObj();
    QVERIFY(sheet->isVisible());
    app.togglePopover(); // the tray does nothing while the sheet is up
    QVERIFY(!app.menuViewControllerObj().isVisible());
    sheet->btnShutUp->click();
    f.fakes.scheduler.advance(4 * 1000);
    QVERIFY(!f.engine().session().isFocusModeOn());
    f.fakes.scheduler.advance(1000);
    QVERIFY(f.isOn(FocusFixture::kDefault));
    QVERIFY(!pomodoro->isVisible());
    QCOMPARE(f.logCount(QStringLiteral("pomodoro mode Started")), 1);

    f.fakes.scheduler.advance(25 * 60 * 1000);
    focusCompletedVc* questions = f.engine().focusCompletedVcObj();
    QVERIFY(questions->isVisible());
    questions->btnTakeBreak->click();
    QCOMPARE(f.logCount(QStringLiteral("pomodoro mode Finished")), 1);
    f.fakes.scheduler.advance(299 * 1000);
    QVERIFY(!pomodoro->isVisible());
    f.fakes.scheduler.advance(1000);
    QVERIFY(pomodoro->isVisible());
}

void FocusSessionTest::pomodoroMarkerAtLaunch_data()
{
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<bool>("mic");
    QTest::addColumn<bool>("shown");
    QTest::addColumn<QString>("line");

    QTest::newRow("activated") << true << false << true << "Initiating Auto Pomodoro Mode View.";
    QTest::newRow("deactivated") << false << false << true << "App started in Deactivated state";
    QTest::newRow("during a call") << true << true << false
                                   << "Mic/Camera Is On: Pomodoro Mode View cancelled";
}

void FocusSessionTest::pomodoroMarkerAtLaunch()
{
    QFETCH(bool, enabled);
    QFETCH(bool, mic);
    QFETCH(bool, shown);
    QFETCH(QString, line);

    FocusFixture f;
    f.fakes.preferences.setValue(keys::kUserdefaultsShowPomodoroView, true);
    f.fakes.preferences.setValue(keys::kUserdefaultsIsAppEnabled, enabled);
    f.fakes.media.mic = mic;
    f.start();
    QCOMPARE(f.engine().isPomodoroWindowVisible(), shown);
    QCOMPARE(f.logCount(line), 1);
    QVERIFY(!f.fakes.preferences.contains(keys::kUserdefaultsShowPomodoroView));
}

void FocusSessionTest::shutOffCutsTheBlock()
{
    FocusFixture f;
    f.start(QTime(21, 30));
    f.engine().session().start(FocusFixture::kWork, 60, QString(), FocusSession::Origin::Dialog);
    f.fakes.scheduler.advanceTo(QTime(22, 0, 10));
    QVERIFY(!f.engine().session().isFocusModeOn());
    QVERIFY(!f.engine().focusCompletedVcObj()->isVisible());
    QCOMPARE(f.rows().size(), 1);
    QVERIFY2(f.row(0).startsWith(QStringLiteral("focus block,Work,180")), qPrintable(f.row(0)));
    QVERIFY(f.row(0).endsWith(QStringLiteral(",,,2026-11-23 21:30:00,,,,")));
}

void FocusSessionTest::blockRunningAtQuitComesBackOff()
{
    FocusFixture f;
    f.start();
    f.engine().session().start(FocusFixture::kWork, 60, QString(), FocusSession::Origin::Dialog);
    const QVariantList stored = f.fakes.preferences.value(keys::kUserdefaultsArrFocusTypes).toList();
    QVERIFY(stored.at(FocusFixture::kWork).toMap().value("isOn").toBool());
    AppDelegate& app = f.start(QTime(10, 5));
    QVERIFY(!f.engine().session().isFocusModeOn());
    QCOMPARE(app.statusItem().look(), StatusItem::Look::Normal);
    QVERIFY(f.rows().isEmpty());
}

void FocusSessionTest::meetingSuggestion_data()
{
    QTest::addColumn<bool>("accept");
    QTest::addColumn<bool>("workRunning");
    QTest::newRow("Block everything else") << true << false;
    QTest::newRow("other apps are fine for this call") << false << false;
    QTest::newRow("a block of another type is left alone") << false << true;
}

void FocusSessionTest::meetingSuggestion()
{
    QFETCH(bool, accept);
    QFETCH(bool, workRunning);

    FocusFixture f;
    AppDelegate& app = f.start();
    f.fakes.workspace.running = QStringList{"xterm", "chromium"};
    f.fakes.media.mic = true;
    if (workRunning) {
        f.engine().session().start(FocusFixture::kWork, 60, QString(), FocusSession::Origin::Dialog);
        f.fakes.scheduler.advance(30 * 1000);
        QVERIFY(!f.engine().meetingWatch().alertSuggestFocusMode());
        QCOMPARE(app.statusItem().background(), QColor(0x33, 0x66, 0xCC));
        return;
    }
    f.fakes.scheduler.advance(5000);
    QMessageBox* alert = f.engine().meetingWatch().alertSuggestFocusMode();
    QVERIFY(alert && alert->isVisible());
    QCOMPARE(alert->text(),
             QStringLiteral("It looks like you're in a meeting. Will you need to use other apps "
                            "during the meeting? If not, I can block everything else to help you "
                            "concentrate."));
    QCOMPARE(
        alert->informativeText(),
        QStringLiteral("On selecting \"Block everything else\" the app will start \"Meetings\" focus mode."));
    QCOMPARE(app.statusItem().look(), StatusItem::Look::Call);
    QCOMPARE(alert->buttons().size(), 2);
    QAbstractButton* answer = alert->buttons().at(accept ? 0 : 1);
    QCOMPARE(answer->text(), accept ? QStringLiteral("Block everything else")
                                    : QStringLiteral("It's ok for me to use other apps during this meeting"));
    answer->click();
    f.fakes.scheduler.advance(60 * 1000);
    QVERIFY(!f.engine().meetingWatch().alertSuggestFocusMode());
    QCOMPARE(f.isOn(FocusFixture::kMeetings), accept);
    QCOMPARE(app.statusItem().look(), accept ? StatusItem::Look::Focus : StatusItem::Look::Call);
    if (accept)
        QVERIFY(!f.engine().session().focusModeEndTime());

    f.fakes.media.mic = false;
    f.fakes.scheduler.advance(5000);
    QCOMPARE(app.statusItem().look(), StatusItem::Look::Normal);
    QVERIFY(!f.engine().session().isFocusModeOn());
    QVERIFY(!f.engine().focusCompletedVcObj()->isVisible());
    QCOMPARE(f.rows().size(), accept ? 1 : 0);
    if (accept)
        QCOMPARE(f.row(0), QStringLiteral("focus block,Meetings,65,,,%1,Meeting using {chromium.desktop},,,")
                               .arg(QStringLiteral("2026-11-23 10:00:05")));

    // The next call asks again.
    f.fakes.media.mic = true;
    f.fakes.scheduler.advance(5000);
    QVERIFY(f.engine().meetingWatch().alertSuggestFocusMode());
}

QTEST_MAIN(FocusSessionTest)
#include "tst_focus_session.moc"
