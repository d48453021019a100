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
    QStringList quitRows() const { return usageRows().filter(QRegularExpression(QStringLiteral("^Quit,"))); }
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
        QCOMPARE(f.countDown().lblSeconds->text(), QStringLiteral("00:10"));
        QCOMPARE(f.countDown().lblTitle->text(), QStringLiteral("Quitting.."));

        f.seconds(4);
        QCOMPARE(f.countDown().lblSeconds->text(), QStringLiteral("00:06"));
        // A second Quit leaves the flow where it is.
        f.window().btnQuitClicked();
        QCOMPARE(f.logCount(QStringLiteral("Quit window already visible")), 1);
        QCOMPARE(f.logCount(QStringLiteral("Showing quit window")), 2);
        QCOMPARE(f.countDown().lblSeconds->text(), QStringLiteral("00:06"));

        f.seconds(5);
        QCOMPARE(f.window().currentContent(), &f.countDown());
        f.seconds(1);
        QCOMPARE(f.window().currentContent(), &f.confirm());
        QVERIFY(f.confirm().popUpBtnReasons->isEnabled());
        QCOMPARE(f.confirm().popUpBtnReasons->currentText(), QStringLiteral("Select a reason"));
        QVERIFY(f.confirm().btnQuit->isHidden());
        QVERIFY(f.confirm().textView->isHidden());

        // Each choice starts the form over: a half-written text goes, "Select a reason" hides Quit.
        quittingConfirmVc& confirm = f.confirm();
        const auto choose = [&](int reason) {
            confirm.popUpBtnReasons->setCurrentIndex(reason);
            confirm.popUpBtnReasonsClicked(reason);
        };
        choose(quittingConfirmVc::SomethingElse);
        confirm.textView->setPlainText(QStringLiteral("half a thought"));
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
        password::store(f.fakes.preferences, QStringLiteral("s3cret"));
        f.launchWithWebhook();
        f.window().btnQuitClicked();
        QVERIFY(f.countDown().isPasswordViewShown());
        QCOMPARE(f.logCount(QStringLiteral("Showing enter password view from quit")), 1);
        f.seconds(20);
        QVERIFY(!f.countDown().isCounting());
        QCOMPARE(f.countDown().lblSeconds->text(), QStringLiteral("00:10"));

        // Cancel closes the window and the flow has not begun.
        f.countDown().passwordView()->btnCancel->click();
        QVERIFY(!f.window().isVisible());

        f.window().btnQuitClicked();
        enterPasswordVc& prompt = *f.countDown().passwordView();
        QVERIFY(!prompt.isHidden());
        prompt.textFieldPassword->setText(QStringLiteral("s3cret"));
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
        QTest::addColumn<int>("serverAnswersAfter"); // seconds after the post; -1: never
        QTest::addColumn<int>("secondsToExit");      // after the five seconds
        QTest::addColumn<QString>("row");            // the usage row without its time stamp
        QTest::addColumn<QString>("logLine");

        QTest::newRow("emergency") << 1 << "" << -1 << 0 << ",,,,,,,I've got an emergency,"
                                   << "App Quit - I've got an emergency";
        QTest::newRow("broken, the webhook answers") << 2 << "It crashed" << 2 << 2 << ""
                                                     << "App Quit - The app is broken";
        QTest::newRow("broken, the webhook never answers")
            << 2 << "It crashed" << -1 << FeedbackUpload::kTimeoutMs / 1000 << ""
            << "App Quit - The app is broken";
        QTest::newRow("something else") << 3 << "Too strict" << -1 << 0 << ",,,,,,,Something else,Too strict"
                                        << "App Quit - Something else";
    }

    void reasons()
    {
        QFETCH(int, reason);
        QFETCH(QString, feedback);
        QFETCH(int, serverAnswersAfter);
        QFETCH(int, secondsToExit);
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
            confirm.textFieldEmail->setText(QStringLiteral("me@example.org"));
            confirm.textView->setPlainText(feedback);
            QVERIFY(confirm.btnQuit->isEnabled());
            confirm.btnQuit->click();
            QVERIFY(!confirm.popUpBtnReasons->isEnabled());
            QCOMPARE(confirm.lblDescription->text(),
                     QStringLiteral("We hope you will start the habits back soon! See you soon."));
        }
        QCOMPARE(confirm.lblTimer->text(), QStringLiteral("00:05"));
        f.seconds(4);
        QVERIFY(f.exitStatuses.isEmpty());
        f.seconds(1);
        QCOMPARE(f.logCount(logLine), 1);

        if (reason == quittingConfirmVc::AppIsBroken) {
            QCOMPARE(f.fakes.http.requests.size(), 1);
            const auto& post = f.fakes.http.requests.constFirst();
            QCOMPARE(post.url, QUrl(QStringLiteral("http://hook.test/feedback")));
            const QJsonObject body = QJsonDocument::fromJson(post.body).object();
            QCOMPARE(body.value(QStringLiteral("quitReason")).toString(),
                     QStringLiteral("The app is broken"));
            QCOMPARE(body.value(QStringLiteral("feedback")).toString(), feedback);
            QCOMPARE(body.value(QStringLiteral("emailAddress")).toString(), QStringLiteral("me@example.org"));
            if (serverAnswersAfter >= 0) {
                f.seconds(serverAnswersAfter);
                QVERIFY(f.exitStatuses.isEmpty());
                f.fakes.http.answer({200, "1", {}});
                f.fakes.scheduler.flush();
            } else {
                f.seconds(secondsToExit - 1);
                QVERIFY(f.exitStatuses.isEmpty());
                f.seconds(1);
            }
        } else {
            QVERIFY(f.fakes.http.requests.isEmpty());
        }

        QCOMPARE(f.exitStatuses, QList<int>{64});
        QCOMPARE(f.fakes.loginService.disables, 1);
        QVERIFY(f.app->terminateFromSelf);
        QCOMPARE(f.logCount(QStringLiteral("App quit clicked by user")), 1);
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
