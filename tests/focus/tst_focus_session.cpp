// Focus blocks on the virtual clock, through the real application object: the
// start dialog, the questions, the abort dialog, pomodoro, the shut-off, a
// restart, the meeting suggestion, and these windows as a screen reader user meets
// them.

#include "abortingFocusModeVc.h"
#include "discourageDefaultFocusVc.h"
#include "focusCompletedVc.h"
#include "FocusFixture.h"
#include "menuViewController.h"
#include "pomodoroVc.h"
#include "startingFocusModeVc.h"
#include "StatusItem.h"

#include <QtTest>
#include <QtWidgets>

using namespace velmora;
using namespace velmora::test;

namespace {

const QString kStart = u"2026-11-23 10:00:00"_s;

QString accessibleName(QWidget* w)
{
    QAccessibleInterface* a = QAccessible::queryAccessibleInterface(w);
    return a ? a->text(QAccessible::Name) : QString();
}

// Tabs once round the window from its focus widget and answers what was visited.
QList<QWidget*> tabRound(QWidget* window)
{
    QApplication::setActiveWindow(window);
    QList<QWidget*> seen;
    for (int i = 0; i < 40; ++i) {
        QWidget* now = QApplication::focusWidget();
        if (!now || seen.contains(now))
            break;
        seen << now;
        QTest::keyClick(now, Qt::Key_Tab);
    }
    return seen;
}

} // namespace

class FocusSessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void timeFields_data()
    {
        QTest::addColumn<bool>("hours"); // else the minutes field
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<bool>("canStart"); // the other field shows 00 for hours, 20 for minutes

        QTest::newRow("hours above 12 become 12") << true << u"25"_s << u"12"_s << true;
        QTest::newRow("00 and 00 cannot start") << false << u"0"_s << u"00"_s << false;
    }

    void timeFields()
    {
        QFETCH(bool, hours);
        QFETCH(QString, keys);
        QFETCH(QString, shown);
        QFETCH(bool, canStart);

        FocusFixture f;
        f.start();
        f.engine().showStartingFocusMode(FocusFixture::kWork, u"Work"_s);
        startingFocusModeVc* vc = f.engine().startingFocusModeVcObj();
        QLineEdit* field = hours ? vc->textFieldHour : vc->textFieldMinute;
        field->clear();
        QTest::keyClicks(field, keys);
        QCOMPARE(field->text(), shown);
        QCOMPARE(vc->btnStartFocus->isEnabled(), canStart);
    }

    // Two timed blocks of Work: the first from the panel with Beta in front, the second
    // started while the first one's questions are still open.
    void timedBlocksFromThePanel()
    {
        FocusFixture f;
        AppDelegate& app = f.start();
        app.togglePopover();
        menuViewController& menu = app.menuViewControllerObj();
        menu.focusRows.at(FocusFixture::kWork)->click();
        startingFocusModeVc* vc = f.engine().startingFocusModeVcObj();
        vc->textFieldMinute->setText(u"25"_s);
        vc->textViewQuestion->setPlainText(u"Draft the report"_s);
        QTest::keyClick(vc->textFieldMinute, Qt::Key_Return);

        QVERIFY(f.isOn(FocusFixture::kWork));
        QVERIFY(!f.engine().isStartWindowVisible());

        // Beta stays in front: hidden at every tick of the block, reported once per block.
        const QString report = u"Beta isn't allowed in the Work focus mode."_s;
        f.fakes.workspace.activate({u"beta"_s, u"Beta"_s, {}, {}});
        f.fakes.scheduler.advance(25 * 60 * 1000);
        focusCompletedVc* questions = f.engine().focusCompletedVcObj();
        QVERIFY(questions->isVisible());
        QCOMPARE(app.statusItem().look(), StatusItem::Look::Normal);
        QCOMPARE(questions->textViewIntention->text(), u"Draft the report"_s);
        QCOMPARE(f.fakes.workspace.hidden.size(), 25 * 60); // once a second
        f.fakes.scheduler.advance(5000);
        QCOMPARE(f.fakes.workspace.hidden.size(), 25 * 60);
        QCOMPARE(f.fakes.notifier.notifications.count(report), 1);
        QVERIFY(f.usageRows().isEmpty());

        f.engine().focusRowClicked(FocusFixture::kWork);
        f.engine().startingFocusModeVcObj()->btnStartFocus->click();
        QVERIFY(!questions->isVisible());
        QVERIFY(f.isOn(FocusFixture::kWork));
        QCOMPARE(f.fakes.notifier.notifications.count(report), 2);
        const QString unanswered = u"focus block,Work,1500,,,%1,25 of Work,,,"_s.arg(kStart);
        QCOMPARE(f.usageRows(), QStringList{unanswered});

        f.fakes.scheduler.advance(20 * 60 * 1000); // the dialog's own 20 minutes
        QVERIFY(questions->isVisible());
        questions->textViewAchieve->setPlainText(u"Two pages"_s);
        questions->textViewDistractions->setPlainText(u"Mail"_s);
        questions->btnTakeBreak->click();
        QCOMPARE(
            f.usageRows(),
            (QStringList{unanswered, u"focus block,Work,1200,,,2026-11-23 10:25:05,Two pages,Mail,,"_s}));
    }

    void abortReasons_data()
    {
        QTest::addColumn<int>("reason");
        QTest::addColumn<QString>("reasonText");
        QTest::addColumn<bool>("questions");

        QTest::newRow("not working") << 0 << "Focus mode is not working properly." << false;
        QTest::newRow("achieved early: questions and a second row")
            << 1 << "I achieved what I wanted to too early." << true;
    }

    void abortReasons()
    {
        QFETCH(int, reason);
        QFETCH(QString, reasonText);
        QFETCH(bool, questions);

        FocusFixture f;
        AppDelegate& app = f.start();
        f.startWork(60);
        f.fakes.scheduler.advance(5 * 60 * 1000);
        f.engine().focusRowClicked(FocusFixture::kWork);

        abortingFocusModeVc* vc = f.engine().abortingFocusModeVcObj();
        f.fakes.scheduler.advance(9 * 1000);
        QVERIFY(!vc->btnAbortFocus->isEnabled());
        f.fakes.scheduler.advance(1000);
        QVERIFY(vc->btnAbortFocus->isEnabled());
        vc->popUpBtnAbortReasons->setCurrentIndex(reason);
        vc->btnAbortFocus->click();

        QVERIFY(!f.engine().isStartWindowVisible());
        QVERIFY(!f.engine().session().isTimerRunning());
        QCOMPARE(app.statusItem().look(), StatusItem::Look::Normal);
        QCOMPARE(f.engine().focusCompletedVcObj()->isVisible(), questions);
        const QString aborted =
            u"focus mode abort,focus block - Work,310,,,%1,,,%2,"_s.arg(kStart, reasonText);
        QCOMPARE(f.usageRows(), QStringList{aborted});
        if (questions) {
            f.engine().focusCompletedVcObj()->btnTakeBreak->click();
            QCOMPARE(f.usageRows(), (QStringList{aborted, u"focus block,Work,310,,,%1,,,,"_s.arg(kStart)}));
        }
    }

    void pomodoroCycle()
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
        sheet->btnShutUp->click();
        f.fakes.scheduler.advance(4 * 1000);
        QVERIFY(!f.engine().session().isFocusModeOn());
        f.fakes.scheduler.advance(1000);
        QVERIFY(f.isOn(FocusFixture::kDefault));
        QVERIFY(!pomodoro->isVisible());

        f.fakes.scheduler.advance(25 * 60 * 1000);
        focusCompletedVc* questions = f.engine().focusCompletedVcObj();
        QVERIFY(questions->isVisible());
        questions->btnTakeBreak->click();
        f.fakes.scheduler.advance(299 * 1000);
        QVERIFY(!pomodoro->isVisible());
        f.fakes.scheduler.advance(1000);
        QVERIFY(pomodoro->isVisible());
    }

    void pomodoroMarkerAtLaunch_data()
    {
        QTest::addColumn<bool>("enabled");
        QTest::addColumn<bool>("mic");
        QTest::addColumn<bool>("shown");

        QTest::newRow("deactivated") << false << false << true;
        QTest::newRow("during a call") << true << true << false;
    }

    void pomodoroMarkerAtLaunch()
    {
        QFETCH(bool, enabled);
        QFETCH(bool, mic);
        QFETCH(bool, shown);

        FocusFixture f;
        f.fakes.preferences.setValue(keys::kUserdefaultsShowPomodoroView, true);
        f.fakes.preferences.setValue(keys::kUserdefaultsIsAppEnabled, enabled);
        f.fakes.media.mic = mic;
        f.start();
        QCOMPARE(f.engine().isPomodoroWindowVisible(), shown);
        QVERIFY(!f.fakes.preferences.contains(keys::kUserdefaultsShowPomodoroView));
    }

    void shutOffCutsTheBlock()
    {
        FocusFixture f;
        f.start(QTime(21, 30));
        f.startWork(60);
        f.fakes.scheduler.advanceTo(QTime(22, 0, 10));
        QVERIFY(!f.engine().session().isFocusModeOn());
        QVERIFY(!f.engine().focusCompletedVcObj()->isVisible());
        // Cut at the first tick after the shut-off, 22:00:05.
        QCOMPARE(f.usageRows(), QStringList{u"focus block,Work,1805,,,2026-11-23 21:30:00,,,,"_s});
    }

    void blockRunningAtQuitComesBackOff()
    {
        FocusFixture f;
        f.start();
        f.startWork(60);
        const QVariantList stored = f.fakes.preferences.value(keys::kUserdefaultsArrFocusTypes).toList();
        QVERIFY(stored.at(FocusFixture::kWork).toMap().value("isOn").toBool());
        AppDelegate& app = f.start(QTime(10, 5));
        QVERIFY(!f.engine().session().isFocusModeOn());
        QCOMPARE(app.statusItem().look(), StatusItem::Look::Normal);
        QVERIFY(f.usageRows().isEmpty());
    }

    void meetingSuggestion_data()
    {
        QTest::addColumn<bool>("accept");
        QTest::addColumn<bool>("workRunning");
        QTest::newRow("Block everything else") << true << false;
        QTest::newRow("other apps are fine for this call") << false << false;
        QTest::newRow("a block of another type is left alone") << false << true;
    }

    void meetingSuggestion()
    {
        QFETCH(bool, accept);
        QFETCH(bool, workRunning);

        FocusFixture f;
        AppDelegate& app = f.start();
        f.fakes.workspace.running = QStringList{"xterm", "firefox-esr", "chromium"};
        f.fakes.media.mic = true;
        if (workRunning) {
            f.startWork(60);
            f.fakes.scheduler.advance(30 * 1000);
            QVERIFY(!f.engine().meetingWatch().alertSuggestFocusMode());
            return;
        }
        f.fakes.scheduler.advance(5000);
        QMessageBox* alert = f.engine().meetingWatch().alertSuggestFocusMode();
        QVERIFY(alert && alert->isVisible());
        QCOMPARE(app.statusItem().look(), StatusItem::Look::Call);
        alert->buttons().at(accept ? 0 : 1)->click();
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
        const QString meetingRow =
            u"focus block,Meetings,65,,,2026-11-23 10:00:05,Meeting using {firefox-esr.desktop},,,"_s;
        QCOMPARE(f.usageRows(), accept ? QStringList{meetingRow} : QStringList());

        // The next call asks again.
        f.fakes.media.mic = true;
        f.fakes.scheduler.advance(5000);
        QVERIFY(f.engine().meetingWatch().alertSuggestFocusMode());
    }

    // Tab reaches every control, Return presses the default button, every control is
    // named by its text.
    // The status icon keeps its clock beside a title, and shows the title whole.
    void statusIconKeepsClockBesideTitle()
    {
        const auto image = [](const QString& title) {
            const QIcon icon = StatusItem::paintLook(title, Qt::transparent, Qt::transparent);
            return icon.pixmap(icon.availableSizes().value(0)).toImage();
        };
        QCOMPARE(image(u"FOCUS"_s).copy(0, 0, 22, 22), image({}));
        QVERIFY(image(u"FOCUS MODE"_s).width() > image(u"FOCUS"_s).width());
    }

    void screensByKeyboard_data()
    {
        QTest::addColumn<QString>("screen");
        for (const char* screen : {"start", "abort", "questions", "pomodoro"})
            QTest::newRow(screen) << QString(screen);
    }

    void screensByKeyboard()
    {
        QFETCH(QString, screen);
        FocusFixture f;
        f.start();
        FocusEngine& engine = f.engine();
        QWidget* window = nullptr;
        if (screen == u"start") {
            engine.showStartingFocusMode(FocusFixture::kWork, u"Work"_s);
            window = engine.startingFocusWindow();
        } else if (screen == u"abort") {
            f.startWork(30);
            engine.showAbortingFocusModeVc();
            f.fakes.scheduler.advance(10 * 1000);
            window = engine.startingFocusWindow();
        } else if (screen == u"questions") {
            f.startWork(1);
            f.fakes.scheduler.advance(60 * 1000);
            window = engine.focusCompletedVcObj();
        } else {
            engine.menuShowPomodoroModeView();
            window = engine.pomodoroVcObj();
        }
        QVERIFY(window->isVisible());

        const QList<QWidget*> visited = tabRound(window);
        for (QWidget* w : window->findChildren<QWidget*>()) {
            if (!w->isVisible() || !w->isEnabled() || !(w->focusPolicy() & Qt::TabFocus))
                continue;
            QVERIFY2(visited.contains(w), qPrintable(w->objectName() + u" is out of Tab's reach"_s));
            QVERIFY2(!accessibleName(w).isEmpty(), qPrintable(w->objectName() + u" has no name"_s));
            if (auto* button = qobject_cast<QAbstractButton*>(w))
                QCOMPARE(accessibleName(w), button->text());
        }

        // Return presses the default button, from anywhere but a field of several lines.
        const int rowsBefore = int(f.usageRows().size());
        auto single = std::find_if(visited.cbegin(), visited.cend(),
                                   [](QWidget* w) { return !w->inherits("QPlainTextEdit"); });
        QVERIFY(single != visited.cend());
        QTest::keyClick(*single, Qt::Key_Return);
        if (screen == u"pomodoro" || screen == u"start")
            QVERIFY(engine.session().isFocusModeOn());
        else
            QCOMPARE(int(f.usageRows().size()), rowsBefore + 1);
        QVERIFY(!window->isVisible());
    }
};

QTEST_MAIN(FocusSessionTest)
#include "tst_focus_session.moc"
