// The focus windows as a screen reader user meets them: Tab reaches every
// control, Return presses the default button, every control is named by its text.

#include "abortingFocusModeVc.h"
#include "focusCompletedVc.h"
#include "FocusFixture.h"
#include "pomodoroVc.h"
#include "startingFocusModeVc.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QDialog>
#include <QPushButton>
#include <QtTest>

using namespace velmora;
using namespace velmora::test;

namespace {

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

class FocusPanelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void screensByKeyboard_data();
    void screensByKeyboard();
};

void FocusPanelTest::screensByKeyboard_data()
{
    QTest::addColumn<QString>("screen");
    QTest::newRow("start") << "start";
    QTest::newRow("abort") << "abort";
    QTest::newRow("questions") << "questions";
    QTest::newRow("pomodoro") << "pomodoro";
}

void FocusPanelTest::screensByKeyboard()
{
    QFETCH(QString, screen);
    FocusFixture f;
    f.start();
    FocusEngine& engine = f.engine();
    QWidget* window = nullptr;
    if (screen == u"start") {
        engine.showStartingFocusMode(FocusFixture::kWork, QStringLiteral("Work"));
        window = engine.startingFocusWindow();
    } else if (screen == u"abort") {
        engine.session().start(FocusFixture::kWork, 30, QString(), FocusSession::Origin::Dialog);
        engine.showAbortingFocusModeVc();
        f.fakes.scheduler.advance(10 * 1000);
        window = engine.startingFocusWindow();
    } else if (screen == u"questions") {
        engine.session().start(FocusFixture::kWork, 1, QString(), FocusSession::Origin::Dialog);
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
        QVERIFY2(visited.contains(w), qPrintable(w->objectName() + QStringLiteral(" is out of Tab's reach")));
        QVERIFY2(!accessibleName(w).isEmpty(), qPrintable(w->objectName() + QStringLiteral(" has no name")));
        if (auto* button = qobject_cast<QAbstractButton*>(w))
            QCOMPARE(accessibleName(w), button->text());
    }

    // Return presses the default button, from anywhere but a field of several lines.
    const int rowsBefore = int(f.rows().size());
    auto single = std::find_if(visited.cbegin(), visited.cend(),
                               [](QWidget* w) { return !w->inherits("QPlainTextEdit"); });
    QVERIFY(single != visited.cend());
    QTest::keyClick(*single, Qt::Key_Return);
    if (screen == u"pomodoro" || screen == u"start")
        QVERIFY(engine.session().isFocusModeOn());
    else
        QCOMPARE(int(f.rows().size()), rowsBefore + 1);
    QVERIFY(!window->isVisible());
}

QTEST_MAIN(FocusPanelTest)
#include "tst_focus_panel.moc"
