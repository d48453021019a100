// The tray panel and what its rows open: office mode, the preferences window behind its
// password and its tabs, the export of the usage log, and the quit flow on the virtual clock.

#include "AppFixture.h"
#include "enterPasswordVc.h"
#include "FeedbackUpload.h"
#include "menuViewController.h"
#include "PasswordStore.h"
#include "passwordVc.h"
#include "preferencesWindowController.h"
#include "quitCountDownVc.h"
#include "quittingConfirmVc.h"
#include "quittingWindow.h"
#include "selectJsonVc.h"
#include "SettingsValidation.h"
#include "uninstallVc.h"

#include <QtTest>
#include <QtWidgets>
#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

using namespace velmora;
using namespace velmora::test;

namespace {

QByteArray documentWithBreaks(const char* breaks)
{
    return R"({"morningHabits": [], "eveningHabits": [], "startTime": "07:00", "shutOffTime": "22:00",
              "breakActivities": )" +
           QByteArray(breaks) + "}";
}

void write(const QString& path, const QByteArray& data)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(data);
}

const QString kValid = QStringLiteral(R"({"morningHabits": [{"name": "Water", "durationSeconds": 30}],
  "eveningHabits": [], "breakActivities": [], "breakAfterMinutes": 45, "startTime": "07:00"})");
const QString kCannotValidate = u"Your settings can not be validated."_s;
const QString kNotValid = u"Sorry it seems like your settings aren’t valid."_s;

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
    void choose(int reason)
    {
        confirm().popUpBtnReasons->setCurrentIndex(reason);
        confirm().popUpBtnReasonsClicked(reason);
    }
    QStringList quitRows() const { return usageRows().filter(QRegularExpression(u"^Quit,"_s)); }
};

} // namespace

class PanelTest : public QObject
{
    Q_OBJECT
    std::unique_ptr<AppFixture> ed; // the program of the settings editor's tests
    QStringList alerts;             // message, then details

    // The program with Preferences → Settings open; a configuration server when asked.
    selectJsonVc& open(bool server = false)
    {
        ed = std::make_unique<AppFixture>();
        ed->fakes.preferences.setValue(u"kUserdefaultsSelectedJson"_s, kValid);
        if (server)
            ed->catalogue = "{\"deployment\": {\"configServer\": \"http://127.0.0.1:9/\"}}";
        ed->launch(at(23, QTime(12, 0)));
        while (!ed->fakes.http.requests.isEmpty()) // the catalogue: the packaged one will do
            ed->fakes.http.answer(HttpReply{404, {}, {}});
        alerts.clear();
        auto& window = ed->app->preferencesWindowControllerObj();
        window.selectJsonVcObj->inform = [this](const QString& message, const QString& details) {
            alerts << message << details;
        };
        window.menuItem_Preferences();
        window.preferencesTabViewController->setCurrentIndex(preferencesWindowController::SettingsEditorTab);
        return *window.selectJsonVcObj;
    }
    QString stored() const { return *ed->fakes.preferences.string(u"kUserdefaultsSelectedJson"_s); }

private Q_SLOTS:
    // Reactivate, shown while deactivated, closes the panel and restarts the program activated.
    void reactivateRestarts()
    {
        AppFixture f;
        f.fakes.preferences.setValue(keys::kUserdefaultsIsAppEnabled, false);
        f.fakes.preferences.setValue(keys::kUserdefaults4HourReActivateTime, at(23, QTime(9, 0)));
        AppDelegate& app = f.launch(at(23, QTime(6, 0)));
        app.togglePopover();
        menuViewController& menu = app.menuViewControllerObj();
        QTest::mouseClick(menu.boxReactivate, Qt::LeftButton);
        QCOMPARE(f.fakes.launcher.restarts, 1);
        QCOMPARE(f.exitStatuses, QList<int>{0});
        QCOMPARE(*f.fakes.preferences.boolean(keys::kUserdefaultsIsAppEnabled), true);
        QVERIFY(!f.fakes.preferences.contains(keys::kUserdefaults4HourReActivateTime));
    }

    void officeMode_data()
    {
        QTest::addColumn<QByteArray>("packaged");
        QTest::addColumn<bool>("answerYes");
        QTest::addColumn<int>("questions");
        QTest::addColumn<bool>("enabled");
        QTest::addColumn<QStringList>("savedActivities"); // empty: nothing saved

        const QByteArray friendly =
            documentWithBreaks(R"([{"name": "Walk", "durationSeconds": 60, "isOfficeFriendly": true}])");
        const QByteArray unfriendly = documentWithBreaks(R"([{"name": "Handstand", "durationSeconds": 30}])");
        QTest::newRow("friendly activity: no question") << friendly << true << 0 << true << QStringList();
        QTest::newRow("yes: saved with the new activity")
            << unfriendly << true << 1 << true << QStringList{"Handstand", "Stand up and stretch"};
        QTest::newRow("no: nothing changes") << unfriendly << false << 1 << false << QStringList();
    }

    void officeMode()
    {
        QFETCH(QByteArray, packaged);
        QFETCH(bool, answerYes);
        QFETCH(int, questions);
        QFETCH(bool, enabled);
        QFETCH(QStringList, savedActivities);

        AppFixture f(packaged);
        AppDelegate& app = f.launch(at(23, QTime(6, 0)));
        menuViewController& menu = app.menuViewControllerObj();
        int asked = 0;
        menu.ask = [&](const QString&, const QString&, const QString&) {
            ++asked;
            return answerYes;
        };
        menu.inform = [](const QString&, const QString&) {};
        const int activitiesBefore = app.state().arrAllbreakActivities.size();

        app.togglePopover();
        menu.boxEnableOfficeMode->click();

        QCOMPARE(asked, questions);
        QCOMPARE(app.state().isOfficeModeEnabled, enabled);
        QCOMPARE(f.fakes.preferences.value(u"kUserdefaultsOfficeModeEnabled"_s).toBool(), enabled);

        const bool added = questions == 1 && answerYes;
        QCOMPARE(app.state().arrAllbreakActivities.size(), activitiesBefore + (added ? 1 : 0));
        QVERIFY(!added || app.state().arrAllbreakActivities.constLast().isOfficeFriendly);

        const QVariant saved = f.fakes.preferences.value(u"kUserdefaultsSelectedJson"_s);
        QCOMPARE(saved.isValid(), added);
        if (added) {
            const QJsonObject document = QJsonDocument::fromJson(saved.toString().toUtf8()).object();
            QCOMPARE(document.value(u"shutOffTime"_s).toString(), u"22:00"_s);
            QStringList names;
            for (const QJsonValue& activity : document.value(u"breakActivities"_s).toArray())
                names << activity.toObject().value(u"name"_s).toString();
            QCOMPARE(names, savedActivities);
        }

        // A second click turns it off again, without a question.
        if (!enabled)
            return;
        app.togglePopover();
        menu.boxEnableOfficeMode->click();
        QCOMPARE(asked, questions);
        QCOMPARE(f.fakes.preferences.value(u"kUserdefaultsOfficeModeEnabled"_s).toBool(), false);
    }

    void preferencesBehindPassword()
    {
        AppFixture f;
        password::store(f.fakes.preferences, u"grüße"_s);
        AppDelegate& app = f.launch(at(23, QTime(6, 0)));
        preferencesWindowController& window = app.preferencesWindowControllerObj();
        app.menuItem_Preferences();
        QVERIFY(window.isVisible() && window.isPasswordViewShown());

        // The tabs stay out of reach.
        window.preferencesTabViewController->setCurrentIndex(1);
        QCOMPARE(window.preferencesTabViewController->currentIndex(), 0);

        enterPasswordVc& prompt = *window.enterPasswordVcObj;
        QCOMPARE(window.focusWidget(), prompt.textFieldPassword); // typing goes to the prompt
        prompt.inform = [](const QString&, const QString&) {};
        prompt.textFieldPassword->setText(u"grüsse"_s);
        prompt.btnOk->click();
        QVERIFY(window.isPasswordViewShown());

        prompt.textFieldPassword->setText(u"grüße"_s);
        prompt.btnOk->click();
        QVERIFY(!window.isPasswordViewShown());
        window.preferencesTabViewController->setCurrentIndex(1);
        QCOMPARE(window.preferencesTabViewController->currentIndex(), 1);

        // Cancel at the prompt closes the window with the tabs still locked.
        window.hide();
        app.menuItem_Preferences();
        QVERIFY(window.isPasswordViewShown());
        prompt.btnCancel->click();
        QVERIFY(!window.isVisible());

        // A stored password that cannot be read lets nothing through; the reset
        // (not offered again while it runs) clears it 24 hours later.
        app.menuItem_Preferences();
        f.fakes.preferences.setValue(keys::kUserdefaultsAppPassword, u"***not base64***"_s);
        prompt.textFieldPassword->setText(u"***not base64***"_s);
        prompt.btnOk->click();
        QVERIFY(window.isPasswordViewShown());
        prompt.confirm = [](const QString&, const QString&) { return true; };
        click(prompt.btnResetPassword);
        QVERIFY(!window.isVisible());
        QCOMPARE(f.fakes.preferences.date(keys::kUserdefaults24HoursClearPasswordTime), at(24, QTime(6, 0)));

        // Closed by its title bar meanwhile: the next opening after the reset shows the
        // tabs, with no stale prompt over them.
        app.menuItem_Preferences();
        QVERIFY(!prompt.btnResetPassword->isEnabled());
        QCloseEvent titleBar; // reaches the widget as the window manager's close does
        QCoreApplication::sendEvent(window.windowHandle(), &titleBar);
        QVERIFY(!window.isVisible());
        f.fakes.scheduler.advance(24 * 3600 * 1000 - 1);
        QVERIFY(password::isSet(f.fakes.preferences));
        f.fakes.scheduler.advance(1);
        QVERIFY(!password::isSet(f.fakes.preferences));
        QVERIFY(!f.fakes.preferences.contains(keys::kUserdefaults24HoursClearPasswordTime));
        app.menuItem_Preferences();
        QVERIFY(!window.isPasswordViewShown());

        // A restart before the clearing date clears it when the date comes; one after it, at launch.
        password::store(f.fakes.preferences, u"pw"_s);
        f.fakes.preferences.setValue(keys::kUserdefaults24HoursClearPasswordTime, at(25, QTime(12, 0)));
        f.launch(at(25, QTime(11, 59, 50)));
        f.fakes.scheduler.advance(9'000);
        QVERIFY(password::isSet(f.fakes.preferences));
        f.fakes.scheduler.advance(5'000);
        QVERIFY(!password::isSet(f.fakes.preferences));
        password::store(f.fakes.preferences, u"pw2"_s);
        f.fakes.preferences.setValue(keys::kUserdefaults24HoursClearPasswordTime, at(25, QTime(12, 0)));
        f.launch(at(26, QTime(8, 0)));
        QVERIFY(!password::isSet(f.fakes.preferences));
    }

    void passwordTab_data()
    {
        QTest::addColumn<QString>("existing"); // empty: none set
        QTest::addColumn<QString>("entered");
        QTest::addColumn<QString>("confirmed");
        QTest::addColumn<QString>("stored");

        QTest::newRow("blank password") << u""_s << u""_s << u"x"_s << u""_s;
        QTest::newRow("no match keeps the old one") << u"old"_s << u"abc"_s << u"abd"_s << u"old"_s;
        QTest::newRow("first password") << u""_s << u"ñandú"_s << u"ñandú"_s << u"ñandú"_s;
    }

    void passwordTab()
    {
        QFETCH(QString, existing);
        QFETCH(QString, entered);
        QFETCH(QString, confirmed);
        QFETCH(QString, stored);

        FakePorts fakes;
        RunState state;
        DebugLog log(fakes.clock, {});
        TextCatalogue texts;
        if (!existing.isEmpty())
            password::store(fakes.preferences, existing);
        passwordVc tab({state, fakes.preferences, fakes.clock, fakes.scheduler, log, texts});
        tab.alertforvalidation = [](const QString&, const QString&) {};
        tab.textFieldNewPassword->setText(entered);
        tab.textFieldConfirmPassword->setText(confirmed);
        tab.btnChangePassword->click();

        if (stored.isEmpty())
            QVERIFY(!password::isSet(fakes.preferences));
        else
            QCOMPARE(password::check(fakes.preferences, stored), password::Check::Correct);
    }

    // Ordinary quits are refused: the session's, and a close of our windows that does not
    // come from the user's title bar. Uninstall asks, and only a yes leaves for good.
    void onlyOurOwnWaysEnd()
    {
        AppFixture f;
        AppDelegate& app = f.launch(at(23, QTime(6, 0)));
        const QString usageBefore = AppFixture::readAll(app.usageLog().path());
        QEvent quit(QEvent::Quit);
        QCoreApplication::sendEvent(qApp, &quit);
        QVERIFY(!quit.isAccepted());
        app.menuItem_Preferences();
        QVERIFY(!app.preferencesWindowControllerObj().close());
        app.terminateFromSelf = true; // a quit of the program's own goes through, once
        QVERIFY(app.applicationShouldTerminate());
        QVERIFY(!app.terminateFromSelf);

        uninstallVc& tab = *app.preferencesWindowControllerObj().uninstallVcObj;
        bool yes = false;
        tab.ask = [&](const QString&, const QString&, const QString&) { return yes; };
        tab.inform = [](const QString&, const QString&) {};
        tab.btUninstall->click();
        QVERIFY(f.fakes.loginService.disables == 0 && f.exitStatuses.isEmpty());
        yes = true;
        tab.btUninstall->click();
        QCOMPARE(f.fakes.loginService.disables, 1);
        QCOMPARE(f.exitStatuses, QList<int>{64});
        QCOMPARE(AppFixture::readAll(app.usageLog().path()), usageBefore);
        QVERIFY(f.fakes.http.requests.isEmpty());
    }

    // The usage log goes to the chosen folder under its own name, over an earlier export
    // and with no temporary file left beside it; a cancelled chooser writes nothing.
    void exportStatistics()
    {
        AppFixture f;
        AppDelegate& app = f.launch(at(23, QTime(6, 0)));
        app.usageLog().addEntryInCsv({.logType = u"Quit"_s, .abortReason = u"why"_s});
        const QString usage = AppFixture::readAll(app.usageLog().path());
        const QString folder = f.dir.filePath(u"out"_s);
        QDir().mkpath(folder);
        const QString exported = QDir(folder).filePath(u"vlmrStats.csv"_s);
        write(exported, "the earlier export\n");
        QString chosen = folder;
        app.chooseExportFolder = [&](const QString& prompt) {
            [&] { QCOMPARE(prompt, u"Export"_s); }();
            return chosen;
        };

        app.menuItem_ExportStatistics();
        QCOMPARE(AppFixture::readAll(exported), usage);
        QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden), QStringList{"vlmrStats.csv"});
        QCOMPARE(AppFixture::readAll(app.usageLog().path()), usage);

        write(exported, "kept\n");
        chosen.clear();
        app.menuItem_ExportStatistics();
        QCOMPARE(AppFixture::readAll(exported), u"kept\n"_s);

        // The prompt names the chooser's accept button, not its window.
        const auto dialog = AppDelegate::exportFolderDialog(u"Export"_s);
        QCOMPARE(dialog->labelText(QFileDialog::Accept), u"Export"_s);
    }

    void advancedFace_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("expectStored");
        QTest::addColumn<QString>("expectInView");
        QTest::addColumn<QStringList>("expectAlert"); // message, then what the details hold

        QString curly = kValid;
        curly.replace(u"\"Water\""_s, u"“Water”"_s);
        QString wrong = kValid;
        wrong.replace(u"30}"_s, u"\"30\"}"_s).replace(u"45"_s, u"0"_s);
        const QString broken = u"{\"morningHabits\": [\n  {\"name\": \"Water\",}\n]}"_s;
        QTest::newRow("valid, stored as typed") << kValid + u' ' << true << kValid + u' ' << QStringList();
        QTest::newRow("smart quotes made plain") << curly << true << kValid << QStringList();
        QTest::newRow("parse failure keeps the text") << broken << false << broken << QStringList();
        QTest::newRow("schema errors listed by path")
            << wrong << false << wrong
            << QStringList{kNotValid, u"breakAfterMinutes: "_s, u"morningHabits[0].durationSeconds: "_s};
        QTest::newRow("an array is checked as an empty object")
            << u"[1]"_s << false << u"[1]"_s << QStringList{kNotValid};
    }
    void advancedFace()
    {
        QFETCH(QString, typed);
        QFETCH(bool, expectStored);
        QFETCH(QString, expectInView);
        QFETCH(QStringList, expectAlert);
        selectJsonVc& editor = open();
        QCOMPARE(editor.textViewJson->toPlainText(), kValid); // the tab shows what is stored
        editor.btnAdvanced->click();
        editor.textViewJson->setPlainText(typed);
        editor.btnSave->click();

        QCOMPARE(stored(), expectStored ? expectInView : kValid);
        QCOMPARE(ed->fakes.launcher.restarts, expectStored ? 1 : 0);
        QCOMPARE(editor.textViewJson->toPlainText(), expectInView);
        QCOMPARE(alerts.isEmpty(), expectAlert.isEmpty());
        for (qsizetype i = 0; i < expectAlert.size(); ++i)
            QVERIFY2(alerts.value(qMin(i, qsizetype(1))).contains(expectAlert[i]),
                     qPrintable(alerts.join(u'|')));
        QCOMPARE(editor.lblParseError->text().isEmpty(), !typed.contains(QLatin1String(",}")));
    }

    // What the page posts must be a settings document; the valid one is stored and
    // applied on the desktop (it_settings_editor).
    void pageMessageRefused_data()
    {
        QTest::addColumn<QVariant>("body");
        QTest::newRow("not JSON") << QVariant(u"{morning"_s);
        QTest::newRow("not text") << QVariant(42);
    }
    void pageMessageRefused()
    {
        QFETCH(QVariant, body);
        selectJsonVc& editor = open();
        editor.messageHandler->postMessage(u"setting_saved"_s, body);
        QVERIFY2(alerts.value(0).startsWith(kNotValid), qPrintable(alerts.join(u'|')));
        QCOMPARE(stored(), kValid);
        QCOMPARE(ed->fakes.launcher.restarts, 0);
    }

    // Where the address space is tight (strict overcommit, a limit) a save still validates:
    // patterns need no deep stack, and what they refuse stays refused.
    void validatedWithinATightAddressSpace()
    {
        QFile statm(u"/proc/self/statm"_s);
        QVERIFY(statm.open(QIODevice::ReadOnly));
        rlimit before{}, tight{};
        getrlimit(RLIMIT_AS, &before);
        tight = {statm.readAll().split(' ').value(0).toULongLong() * getpagesize() + (256u << 20),
                 before.rlim_max};
        QCOMPARE(setrlimit(RLIMIT_AS, &tight), 0);
        const QJsonObject schema{
            {u"patternProperties"_s, QJsonObject{{u"^x"_s, QJsonObject{{u"pattern"_s, u"^(a|b)*$"_s}}}}}};
        const auto check = [&](const QString& text) { return validateSettings({{u"x1"_s, text}}, schema); };
        const SettingsValidation pass = check(QString(10000, u'a')), fail = check(QString(9999, u'a') + u'c');
        setrlimit(RLIMIT_AS, &before);
        QVERIFY2(pass.isValid(), qPrintable(pass.describe()));
        QVERIFY2(fail.describe().startsWith(u"x1: Failed to match"_s), qPrintable(fail.describe()));
    }

    // A configured server's schema decides; one that fails it lets nothing be stored.
    void schemaFromServer_data()
    {
        QTest::addColumn<HttpReply>("reply");
        QTest::addColumn<bool>("viaPage");
        QTest::addColumn<QString>("expectDetails"); // null: the document is stored
        const auto row = [](const char* name, const HttpReply& reply, bool viaPage, const QString& details) {
            QTest::newRow(name) << reply << viaPage << details;
        };
        const QString unreadable = u"The settings schema cannot be read"_s;
        row("garbage", {200, "<html>502 Bad Gateway</html>", {}}, false, QString(""));
        row("not found, from the page", {404, {}, {}}, true, QString(""));
        row("schema valijson cannot parse", {200, R"({"type": 12})", {}}, false, unreadable);
        // Not a raw string: moc would read its two slashes as a comment.
        row("remote reference, from the page", {200, "{\"$ref\": \"http://127.0.0.1:9/other.json\"}", {}},
            true, unreadable);
        row("references in a loop", {200, "{\"$ref\": \"\\u0023\"}", {}}, false, unreadable);
        row("multipleOf 0, from the page",
            {200, R"({"properties": {"breakAfterMinutes": {"multipleOf": 0}}})", {}}, true, unreadable);
        row("the server's own rules", {200, R"({"required": ["eveningHabits"]})", {}}, false, QString());
    }

    void schemaFromServer()
    {
        QFETCH(HttpReply, reply);
        QFETCH(bool, viaPage);
        QFETCH(QString, expectDetails);
        selectJsonVc& editor = open(true);
        auto& window = ed->app->preferencesWindowControllerObj();
        if (viaPage) {
            editor.messageHandler->postMessage(u"setting_saved"_s, kValid);
        } else {
            editor.btnAdvanced->click();
            editor.textViewJson->setPlainText(kValid);
            editor.btnSave->click();
        }
        QCOMPARE(ed->fakes.http.requests.size(), 1);
        QCOMPARE(ed->fakes.http.requests[0].url.path(), u"/config/settings-schema.json"_s);
        QVERIFY(ed->fakes.http.requests[0].timeoutMs <= 60'000);
        QVERIFY(editor.isGettingSchema && !editor.btnSave->isEnabled());
        QVERIFY(!window.windowShouldClose()); // while it runs the window stays open

        ed->fakes.http.answer(reply);
        QVERIFY(!editor.isGettingSchema);
        QCOMPARE(ed->fakes.launcher.restarts, expectDetails.isNull() ? 1 : 0);
        if (!expectDetails.isNull()) {
            QCOMPARE(alerts.value(0), kCannotValidate);
            QVERIFY2(alerts.value(1).left(expectDetails.size()) == expectDetails,
                     qPrintable(alerts.value(1)));
            QCOMPARE(editor.textViewJson->toPlainText(), kValid);
            QVERIFY(window.windowShouldClose()); // now the window closes
        }
    }

    void countDownThenReasons()
    {
        QuitFixture f;
        password::store(f.fakes.preferences, u"s3cret"_s);
        f.launchWithWebhook();
        // The password comes first: nothing counts under it, and its Cancel closes the window.
        f.window().btnQuitClicked();
        QVERIFY(f.countDown().isPasswordViewShown());
        f.seconds(20);
        QCOMPARE(f.countDown().lblSeconds->text(), u"00:10"_s);
        f.countDown().passwordView()->btnCancel->click();
        QVERIFY(!f.window().isVisible());
        const auto pastPassword = [&] {
            f.window().btnQuitClicked();
            f.countDown().passwordView()->textFieldPassword->setText(u"s3cret"_s);
            f.countDown().passwordView()->btnOk->click();
            QVERIFY(!f.countDown().isPasswordViewShown());
        };

        // Cancel within the ten seconds goes back for good.
        pastPassword();
        f.seconds(7);
        f.countDown().btnCancelAbort->click();
        f.seconds(30);
        QVERIFY(!f.window().isVisible());
        QVERIFY(f.exitStatuses.isEmpty());
        QCOMPARE(f.fakes.loginService.disables, 0);

        // Opened again, it starts from ten; a second Quit leaves it where it is.
        pastPassword();
        QCOMPARE(f.countDown().lblSeconds->text(), u"00:10"_s);
        f.seconds(4);
        f.window().btnQuitClicked();
        QCOMPARE(f.countDown().lblSeconds->text(), u"00:06"_s);
        f.seconds(5);
        QCOMPARE(f.window().currentContent(), &f.countDown());
        f.seconds(1);
        QCOMPARE(f.window().currentContent(), &f.confirm());
        QVERIFY(f.confirm().btnQuit->isHidden());

        // No way out of the reasons: the window refuses to close, and nothing ends
        // without a reason.
        QVERIFY(!f.window().close());
        QVERIFY(f.window().isVisible());
        f.seconds(60);
        QVERIFY(f.exitStatuses.isEmpty());
    }

    // The reason decides the usage row; "The app is broken" waits for its upload (the
    // post itself is checked on the desktop, it_quit_flow).
    void reasons_data()
    {
        QTest::addColumn<int>("reason");
        QTest::addColumn<QString>("row"); // the usage row's end; empty: no row
        QTest::newRow("emergency") << 1 << ",,,,,,,I've got an emergency,";
        QTest::newRow("broken") << 2 << "";
        QTest::newRow("something else") << 3 << ",,,,,,,Something else,Too strict";
    }

    void reasons()
    {
        QFETCH(int, reason);
        QFETCH(QString, row);

        QuitFixture f;
        f.launchWithWebhook();
        f.window().btnQuitClicked();
        f.seconds(10);
        quittingConfirmVc& confirm = f.confirm();
        f.choose(reason);
        // An emergency locks the list at once and cannot be stopped; the others need a text.
        if (reason == quittingConfirmVc::Emergency) {
            QVERIFY(confirm.btnQuit->isHidden());
        } else {
            QVERIFY(!confirm.btnQuit->isEnabled());
            confirm.textFieldEmail->setText(u"me@example.org"_s);
            confirm.textView->setPlainText(u"Too strict"_s);
            confirm.btnQuit->click();
        }
        QVERIFY(!confirm.popUpBtnReasons->isEnabled());
        f.seconds(4);
        QVERIFY(f.exitStatuses.isEmpty());
        f.seconds(1);

        if (reason == quittingConfirmVc::AppIsBroken) {
            QCOMPARE(f.fakes.http.requests.size(), 1);
            const QJsonObject body = QJsonDocument::fromJson(f.fakes.http.requests[0].body).object();
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
        const QStringList rows = f.quitRows();
        QCOMPARE(rows.size(), row.isEmpty() ? 0 : 1);
        if (!row.isEmpty())
            QVERIFY2(rows.constFirst().endsWith(row), qPrintable(rows.constFirst()));

        // A late answer does not quit a second time.
        f.seconds(FeedbackUpload::kTimeoutMs / 1000 + 5);
        QCOMPARE(f.exitStatuses.size(), 1);
    }
};

QTEST_MAIN(PanelTest)
#include "tst_panel.moc"
