// The quit flow on the virtual clock: the optional password, ten seconds to go
// back, a reason, five last seconds, and the program leaving for good.

#include "AppFixture.h"
#include "enterPasswordVc.h"
#include "FeedbackUpload.h"
#include "PasswordStore.h"
#include "quitCountDownVc.h"
#include "quittingConfirmVc.h"
#include "quittingWindow.h"

#include <QComboBox>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;

using namespace velmora;
using namespace velmora::test;

namespace {

// A program whose packaged catalogue names a feedback webhook.
struct QuitFixture : AppFixture
{
    AppDelegate& launchWithWebhook()
    {
        catalogue = R"({"common": {"webhookUrl": "http://hook.test/feedback"}})";
        return launch(at(23, QTime(12, 0)));
    }
    quittingWindow& window() { return app->quittingWcObj(); }
    quitCountDownVc& countDown() { return window().getQuittingCountDownVcObject(); }
    quittingConfirmVc& confirm() { return window().getQuittingConfirmVcObject(); }
    void seconds(int s)
    {
        fakes.scheduler.advance(s * 1000);
        fakes.scheduler.flush();
    }
    QStringList quitRows() const { return usageRows().filter(QRegularExpression(u"^Quit,"_s)); }
};

} // namespace

class QuitTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void countDownThenReasons()
    {
        QuitFixture f;
        f.launchWithWebhook();
        // Cancel within the ten seconds goes back for good.
        f.window().btnQuitClicked();
        f.seconds(7);
        f.countDown().btnCancelAbort->click();
        QVERIFY(!f.window().isVisible());
        f.seconds(30);
        QVERIFY(!f.window().isVisible());
        QVERIFY(f.exitStatuses.isEmpty());
        QCOMPARE(f.fakes.loginService.disables, 0);

        // Opened again, it starts from ten.
        f.window().btnQuitClicked();
        QVERIFY(f.window().isVisible());
        QVERIFY(f.window().windowFlags() & Qt::WindowStaysOnTopHint);
        QCOMPARE(f.window().currentContent(), &f.countDown());
        QVERIFY(f.countDown().isCounting());
        QCOMPARE(f.countDown().lblSeconds->text(), u"00:10"_s);

        f.seconds(4);
        QCOMPARE(f.countDown().lblSeconds->text(), u"00:06"_s);
        // A second Quit leaves the flow where it is.
        f.window().btnQuitClicked();
        QCOMPARE(f.logCount(u"Quit window already visible"_s), 1);
        QCOMPARE(f.logCount(u"Showing quit window"_s), 2);
        QCOMPARE(f.countDown().lblSeconds->text(), u"00:06"_s);

        f.seconds(5);
        QCOMPARE(f.window().currentContent(), &f.countDown());
        f.seconds(1);
        QCOMPARE(f.window().currentContent(), &f.confirm());
        QVERIFY(f.confirm().popUpBtnReasons->isEnabled());
        QCOMPARE(f.confirm().popUpBtnReasons->currentText(), u"Select a reason"_s);
        QVERIFY(f.confirm().btnQuit->isHidden());
        QVERIFY(f.confirm().textView->isHidden());

        // Each choice starts the form over: a half-written text goes, "Select a reason" hides Quit.
        quittingConfirmVc& confirm = f.confirm();
        const auto choose = [&](int reason) {
            confirm.popUpBtnReasons->setCurrentIndex(reason);
            confirm.popUpBtnReasonsClicked(reason);
        };
        choose(quittingConfirmVc::SomethingElse);
        confirm.textView->setPlainText(u"half a thought"_s);
        choose(quittingConfirmVc::AppIsBroken);
        QVERIFY(confirm.textView->toPlainText().isEmpty());
        QVERIFY(!confirm.btnQuit->isEnabled());
        choose(0);
        QVERIFY(confirm.btnQuit->isHidden());
        QVERIFY(confirm.popUpBtnReasons->isEnabled());

        // No way out of the reasons: the window refuses to close, and nothing ends
        // without a reason.
        QVERIFY(!f.window().close());
        QVERIFY(f.window().isVisible());
        f.seconds(60);
        QVERIFY(f.exitStatuses.isEmpty());
    }

    void passwordComesFirst()
    {
        QuitFixture f;
        password::store(f.fakes.preferences, u"s3cret"_s);
        f.launchWithWebhook();
        f.window().btnQuitClicked();
        QVERIFY(f.countDown().isPasswordViewShown());
        QCOMPARE(f.logCount(u"Showing enter password view from quit"_s), 1);
        f.seconds(20);
        QVERIFY(!f.countDown().isCounting());
        QCOMPARE(f.countDown().lblSeconds->text(), u"00:10"_s);

        // Cancel closes the window and the flow has not begun.
        f.countDown().passwordView()->btnCancel->click();
        QVERIFY(!f.window().isVisible());

        f.window().btnQuitClicked();
        enterPasswordVc& prompt = *f.countDown().passwordView();
        QVERIFY(!prompt.isHidden());
        prompt.textFieldPassword->setText(u"s3cret"_s);
        prompt.btnOk->click();
        QVERIFY(!f.countDown().isPasswordViewShown());
        QVERIFY(f.countDown().isCounting());
        f.seconds(10);
        QCOMPARE(f.window().currentContent(), &f.confirm());
    }

    void reasons_data()
    {
        QTest::addColumn<int>("reason");
        QTest::addColumn<QString>("feedback");
        QTest::addColumn<QString>("row"); // the usage row without its time stamp
        QTest::addColumn<QString>("logLine");

        const auto row = [](const char* name, int reason, const char* feedback, const char* row,
                            const char* logLine) {
            QTest::newRow(name) << reason << QString(feedback) << QString(row) << QString(logLine);
        };
        row("emergency", 1, "", ",,,,,,,I've got an emergency,", "App Quit - I've got an emergency");
        row("broken", 2, "It crashed", "", "App Quit - The app is broken");
        row("something else", 3, "Too strict", ",,,,,,,Something else,Too strict",
            "App Quit - Something else");
    }

    void reasons()
    {
        QFETCH(int, reason);
        QFETCH(QString, feedback);
        QFETCH(QString, row);
        QFETCH(QString, logLine);

        QuitFixture f;
        f.launchWithWebhook();
        f.window().btnQuitClicked();
        f.seconds(10);
        quittingConfirmVc& confirm = f.confirm();
        confirm.popUpBtnReasons->setCurrentIndex(reason);
        confirm.popUpBtnReasonsClicked(reason);

        if (reason == quittingConfirmVc::Emergency) {
            // The list locks at once and the quit cannot be stopped.
            QVERIFY(!confirm.popUpBtnReasons->isEnabled());
            QVERIFY(confirm.btnQuit->isHidden());
        } else {
            QVERIFY(!confirm.textView->isHidden());
            QVERIFY(!confirm.btnQuit->isEnabled());
            confirm.textFieldEmail->setText(u"me@example.org"_s);
            confirm.textView->setPlainText(feedback);
            QVERIFY(confirm.btnQuit->isEnabled());
            confirm.btnQuit->click();
            QVERIFY(!confirm.popUpBtnReasons->isEnabled());
            QCOMPARE(confirm.lblDescription->text(),
                     u"We hope you will start the habits back soon! See you soon."_s);
        }
        QCOMPARE(confirm.lblTimer->text(), u"00:05"_s);
        f.seconds(4);
        QVERIFY(f.exitStatuses.isEmpty());
        f.seconds(1);
        QCOMPARE(f.logCount(logLine), 1);

        if (reason == quittingConfirmVc::AppIsBroken) {
            QCOMPARE(f.fakes.http.requests.size(), 1);
            // The upload's own time-out is the upload's test; the quit waits for its answer.
            const QJsonObject body = QJsonDocument::fromJson(f.fakes.http.requests[0].body).object();
            QCOMPARE(body.value(u"feedback"_s).toString(), feedback);
            QCOMPARE(body.value(u"emailAddress"_s).toString(), u"me@example.org"_s);
            f.seconds(2);
            QVERIFY(f.exitStatuses.isEmpty());
            f.fakes.http.answer({200, "1", {}});
            f.fakes.scheduler.flush();
        } else {
            QVERIFY(f.fakes.http.requests.isEmpty());
        }

        QCOMPARE(f.exitStatuses, QList<int>{64});
        QCOMPARE(f.fakes.loginService.disables, 1);
        QVERIFY(f.app->terminateFromSelf);
        QCOMPARE(f.logCount(u"App quit clicked by user"_s), 1);
        const QStringList rows = f.quitRows();
        QCOMPARE(rows.size(), row.isEmpty() ? 0 : 1);
        if (!row.isEmpty())
            QVERIFY2(rows.constFirst().endsWith(row), qPrintable(rows.constFirst()));

        // A late answer does not quit a second time.
        f.seconds(FeedbackUpload::kTimeoutMs / 1000 + 5);
        QCOMPARE(f.exitStatuses.size(), 1);
    }
};

QTEST_MAIN(QuitTest)
#include "tst_quit.moc"
