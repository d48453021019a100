// The tray panel and what its rows open: office mode, the preferences window behind
// its password, the password tab, the settings editor, the uninstall tab, the export
// of the usage log, and the quit flow on the virtual clock (the optional password, ten
// seconds to go back, a reason, five last seconds, and the program leaving for good).

#include "AppFixture.h"
#include "enterPasswordVc.h"
#include "FeedbackUpload.h"
#include "generalVc.h"
#include "menuViewController.h"
#include "PasswordStore.h"
#include "passwordVc.h"
#include "preferencesWindowController.h"
#include "quitCountDownVc.h"
#include "quittingConfirmVc.h"
#include "quittingWindow.h"
#include "selectJsonVc.h"
#include "StatusItem.h"
#include "uninstallVc.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::Literals::StringLiterals;

using namespace velmora;
using namespace velmora::test;

namespace {

QByteArray documentWithBreaks(const char* breaks)
{
    return QByteArray(R"({"morningHabits": [], "eveningHabits": [], "startTime": "07:00",
                         "shutOffTime": "22:00")") +
           (breaks ? QByteArray(", \"breakActivities\": ") + breaks : QByteArray()) + "}";
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
const QString kValidated = u"Your settings have been validated and will be applied now."_s;

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
    void rowsFollowTheState_data()
    {
        QTest::addColumn<bool>("clickable");
        QTest::addColumn<bool>("enabled");
        QTest::addColumn<bool>("officeMode");
        QTest::addColumn<bool>("panelShown");
        QTest::addColumn<bool>("reactivateShown");

        QTest::newRow("activated") << true << true << false << true << false;
        QTest::newRow("deactivated: Reactivate restarts") << true << false << false << true << true;
        QTest::newRow("office mode shows its check mark") << true << true << true << true << false;
        QTest::newRow("before start-up: nothing opens") << false << true << false << false << false;
    }

    void rowsFollowTheState()
    {
        QFETCH(bool, clickable);
        QFETCH(bool, enabled);
        QFETCH(bool, officeMode);
        QFETCH(bool, panelShown);
        QFETCH(bool, reactivateShown);

        AppFixture f;
        f.fakes.preferences.setValue(u"kUserdefaultsIsAppEnabled"_s, enabled);
        if (!enabled)
            f.fakes.preferences.setValue(u"kUserdefaults4HourReActivateTime"_s, at(23, QTime(9, 0)));
        f.fakes.preferences.setValue(u"kUserdefaultsOfficeModeEnabled"_s, officeMode);
        AppDelegate& app = f.launch(at(23, QTime(6, 0)));
        app.statusItem().setClickable(clickable);

        app.togglePopover();
        menuViewController& menu = app.menuViewControllerObj();
        QCOMPARE(menu.isVisible(), panelShown);
        if (!panelShown)
            return;
        QCOMPARE(menu.boxReactivate->isVisible(), reactivateShown);
        QCOMPARE(menu.boxCheckMark->isVisible(), officeMode);
        for (QPushButton* row : {menu.boxPreferences, menu.boxExportStatistics, menu.boxCheckForUpdates,
                                 menu.boxEnableOfficeMode, menu.boxQuit})
            QVERIFY2(row->isVisible(), qPrintable(row->text()));

        // A click on a row closes the panel before the row acts.
        if (!reactivateShown) {
            menu.boxQuit->click();
            QVERIFY(!menu.isVisible());
            return;
        }
        // Reactivate restarts the program activated, its reactivation date gone.
        QVERIFY(app.isReactivationWatchRunning());
        QTest::mouseClick(menu.boxReactivate, Qt::LeftButton);
        QVERIFY(!menu.isVisible());
        QCOMPARE(f.fakes.launcher.restarts, 1);
        QCOMPARE(f.exitStatuses, QList<int>{0});
        QVERIFY(!app.isReactivationWatchRunning());
        QCOMPARE(*f.fakes.preferences.boolean(u"kUserdefaultsIsAppEnabled"_s), true);
        QVERIFY(!f.fakes.preferences.contains(u"kUserdefaults4HourReActivateTime"_s));
        QCOMPARE(f.logCount(u"App Reactivated by user from top menu"_s), 1);
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
        QTest::newRow("yes without a break list: saved as is")
            << documentWithBreaks(nullptr) << true << 1 << true << QStringList();
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
        QStringList told;
        menu.ask = [&](const QString& text, const QString&, const QString&) {
            ++asked;
            [&] { QVERIFY(text.startsWith(u"You don't have any office friendly break activities"_s)); }();
            return answerYes;
        };
        menu.inform = [&](const QString& title, const QString&) { told << title; };
        const int activitiesBefore = app.state().arrAllbreakActivities.size();

        app.togglePopover();
        menu.boxEnableOfficeMode->click();

        QCOMPARE(asked, questions);
        QCOMPARE(told.size(), enabled ? 1 : 0);
        QCOMPARE(app.state().isOfficeModeEnabled, enabled);
        QCOMPARE(f.fakes.preferences.value(u"kUserdefaultsOfficeModeEnabled"_s).toBool(), enabled);

        const bool added = questions == 1 && answerYes;
        QCOMPARE(app.state().arrAllbreakActivities.size(), activitiesBefore + (added ? 1 : 0));
        if (added) {
            const breakActivity& stretch = app.state().arrAllbreakActivities.constLast();
            QCOMPARE(stretch.name, u"Stand up and stretch"_s);
            QCOMPARE(stretch.durationSeconds, 20);
            QVERIFY(stretch.isOfficeFriendly);
        }

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

        // A second click turns it off again, without a question or a notice.
        if (!enabled)
            return;
        app.togglePopover();
        QVERIFY(menu.boxCheckMark->isVisible());
        menu.boxEnableOfficeMode->click();
        QCOMPARE(asked, questions);
        QCOMPARE(told.size(), 1);
        QVERIFY(!app.state().isOfficeModeEnabled);
        QCOMPARE(f.fakes.preferences.value(u"kUserdefaultsOfficeModeEnabled"_s).toBool(), false);
    }

    void checkForUpdates_data()
    {
        QTest::addColumn<QString>("server");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<QString>("told");

        const auto row = [](const char* name, const char* server, int status, const char* answer,
                            const char* told) {
            QTest::newRow(name) << server << status << QByteArray(answer) << told;
        };
        row("no server: the package manager", "", 0, "", "package manager");
        row("a newer version", "http://config.test/base/", 200,
            R"({"version": "0.10.0", "url": "https://get.test/"})",
            "0.10.0 is available; you have 0.9.1.\nhttps://get.test/");
        row("the same version", "http://config.test", 200, R"({"version": "0.9.1"})",
            "0.9.1 is the newest version");
        row("an older version", "http://config.test", 200, R"({"version": "0.9"})",
            "0.9.1 is the newest version");
        row("a server error", "http://config.test", 404, "nope", "did not succeed: the server answered 404");
    }

    void checkForUpdates()
    {
        QFETCH(QString, server);
        QFETCH(int, status);
        QFETCH(QByteArray, answer);
        QFETCH(QString, told);

        QCoreApplication::setApplicationVersion(u"0.9.1"_s);
        FakePorts fakes;
        RunState state;
        DebugLog log(fakes.clock, {});
        TextCatalogue texts;
        const PreferencesContext context{state, fakes.preferences, fakes.clock, fakes.scheduler, log, texts};
        menuViewController menu({context, fakes.http, {}, QUrl(server)});
        QStringList messages;
        menu.inform = [&](const QString&, const QString& text) { messages << text; };

        menu.checkForUpdates();
        if (!server.isEmpty()) {
            QCOMPARE(fakes.http.requests.size(), 1);
            QCOMPARE(fakes.http.requests.constFirst().url.path().endsWith(u"/config/version.json"_s), true);
            QVERIFY(!fakes.http.requests.constFirst().url.path().contains(u"//"_s));
            QVERIFY(messages.isEmpty());
            fakes.http.answer({status, answer, {}});
        }
        QCOMPARE(messages.size(), 1);
        QVERIFY2(messages.constFirst().contains(told), qPrintable(messages.constFirst()));
    }

    void preferencesBehindPassword()
    {
        AppFixture f;
        password::store(f.fakes.preferences, u"grüße"_s);
        AppDelegate& app = f.launch(at(23, QTime(6, 0)));
        preferencesWindowController& window = app.preferencesWindowControllerObj();
        window.preferencesTabViewController->setCurrentIndex(2);
        window.hide();

        app.menuItem_Preferences();
        QVERIFY(window.isVisible());
        QVERIFY(window.isPasswordViewShown());
        QCOMPARE(window.preferencesTabViewController->currentIndex(), 0);
        QCOMPARE(f.logCount(u"Showing enter password view"_s), 1);

        // The tabs stay out of reach, and a second opening changes nothing.
        window.preferencesTabViewController->setCurrentIndex(1);
        QCOMPARE(window.preferencesTabViewController->currentIndex(), 0);
        QVERIFY(!window.tabView_shouldSelect(1));
        app.menuItem_Preferences();
        QCOMPARE(f.logCount(u"Showing preferences"_s), 1);

        enterPasswordVc& prompt = *window.enterPasswordVcObj;
        QCOMPARE(window.focusWidget(), prompt.textFieldPassword); // typing goes to the prompt
        QStringList alerts;
        prompt.inform = [&](const QString& title, const QString&) { alerts << title; };
        prompt.textFieldPassword->setText(u"grüsse"_s);
        prompt.btnOk->click();
        QVERIFY(window.isPasswordViewShown());
        QCOMPARE(alerts.size(), 1);

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

        // Closed by its title bar; the 24-hour reset then removes the password: the next
        // opening shows the tabs, with no stale prompt over them.
        app.menuItem_Preferences();
        QCloseEvent titleBar; // reaches the widget as the window manager's close does
        QCoreApplication::sendEvent(window.windowHandle(), &titleBar);
        QVERIFY(!window.isVisible());
        f.fakes.preferences.remove(keys::kUserdefaultsAppPassword);
        app.menuItem_Preferences();
        QVERIFY(!window.isPasswordViewShown());
        QVERIFY(window.preferencesTabViewController->isEnabled());
    }

    void passwordTab_data()
    {
        QTest::addColumn<QString>("existing"); // empty: none set
        QTest::addColumn<QString>("entered");
        QTest::addColumn<QString>("confirmed");
        QTest::addColumn<QString>("alert");
        QTest::addColumn<QString>("stored");

        const auto row = [](const char* name, const char* existing, const char* entered,
                            const char* confirmed, const char* alert, const char* stored) {
            QTest::newRow(name) << existing << entered << confirmed << alert << stored;
        };
        row("blank password", "", "", "x", "Password cannot be blank.", "");
        row("blank confirmation", "", "x", "", "Confirm password cannot be blank.", "");
        row("no match", "old", "abc", "abd", "Passwords do not match.", "old");
        row("first password", "", "ñandú", "ñandú", "Password successfully set.", "ñandú");
        row("replaced password", "old", "new", "new", "Password successfully changed.", "new");
    }

    void passwordTab()
    {
        QFETCH(QString, existing);
        QFETCH(QString, entered);
        QFETCH(QString, confirmed);
        QFETCH(QString, alert);
        QFETCH(QString, stored);

        FakePorts fakes;
        RunState state;
        DebugLog log(fakes.clock, {});
        TextCatalogue texts;
        if (!existing.isEmpty())
            password::store(fakes.preferences, existing);
        passwordVc tab({state, fakes.preferences, fakes.clock, fakes.scheduler, log, texts});
        QStringList alerts;
        tab.alertforvalidation = [&](const QString& title, const QString&) { alerts << title; };
        tab.textFieldNewPassword->setText(entered);
        tab.textFieldConfirmPassword->setText(confirmed);
        tab.btnChangePassword->click();

        QCOMPARE(alerts, QStringList{alert});
        if (stored.isEmpty())
            QVERIFY(!password::isSet(fakes.preferences));
        else
            QCOMPARE(password::check(fakes.preferences, stored), password::Check::Correct);
        const bool succeeded = alert.startsWith(u"Password successfully"_s);
        QCOMPARE(tab.textFieldNewPassword->text().isEmpty(), succeeded || entered.isEmpty());
        QCOMPARE(tab.btnChangePassword->text(), stored.isEmpty() ? u"Set Password"_s : u"Change Password"_s);
    }

    void uninstall_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::newRow("no changes nothing") << false;
        QTest::newRow("yes leaves for good") << true;
    }

    void uninstall()
    {
        QFETCH(bool, yes);
        AppFixture f;
        AppDelegate& app = f.launch(at(23, QTime(6, 0)));
        const QString usageBefore = AppFixture::readAll(app.usageLog().path());
        // Ordinary quits are refused: the session's, and a close of our windows that
        // does not come from the user's title bar.
        QEvent quit(QEvent::Quit);
        QCoreApplication::sendEvent(qApp, &quit);
        QVERIFY(!quit.isAccepted());
        QVERIFY(!app.terminateFromSelf);
        app.menuItem_Preferences();
        QVERIFY(!app.preferencesWindowControllerObj().close());
        QVERIFY(app.preferencesWindowControllerObj().isVisible());

        uninstallVc& tab = *app.preferencesWindowControllerObj().uninstallVcObj;
        int notices = 0;
        tab.ask = [&](const QString&, const QString& first, const QString&) {
            [&] { QCOMPARE(first, u"Yes"_s); }();
            return yes;
        };
        tab.inform = [&](const QString&, const QString&) { ++notices; };
        tab.btUninstall->click();

        QCOMPARE(notices, yes ? 1 : 0);
        QCOMPARE(f.fakes.loginService.disables, yes ? 1 : 0);
        QCOMPARE(f.exitStatuses, yes ? QList<int>{64} : QList<int>{});
        QCOMPARE(f.logCount(u"App uninstall clicked by user"_s), yes ? 1 : 0);
        QCOMPARE(f.logCount(u"App quit clicked by user"_s), 0);
        QCOMPARE(AppFixture::readAll(app.usageLog().path()), usageBefore);
        QVERIFY(f.fakes.http.requests.isEmpty());
        if (!yes) { // only a quit of the program's own goes through, once
            app.terminateFromSelf = true;
            QVERIFY(app.applicationShouldTerminate());
            QVERIFY(!app.terminateFromSelf);
        }
    }

    void exportStatistics_data()
    {
        QTest::addColumn<QString>("target"); // relative to the test's folder
        QTest::addColumn<bool>("earlierExport");
        QTest::addColumn<bool>("succeeds");

        QTest::newRow("into an empty folder") << "out" << false << true;
        QTest::newRow("replaces an earlier export") << "out" << true << true;
        QTest::newRow("a folder that cannot exist") << "blocker/out" << false << false;
        QTest::newRow("a read-only folder keeps the earlier export") << "locked" << true << false;
    }

    void exportStatistics()
    {
        QFETCH(QString, target);
        QFETCH(bool, earlierExport);
        QFETCH(bool, succeeds);

        AppFixture f;
        AppDelegate& app = f.launch(at(23, QTime(6, 0)));
        app.usageLog().addEntryInCsv({.logType = u"Quit"_s, .abortReason = u"why"_s});
        const QString usage = AppFixture::readAll(app.usageLog().path());
        QVERIFY(usage.contains(u"Quit,"_s));

        const QDir root(f.dir.path());
        write(root.filePath(u"blocker"_s), "a plain file");
        root.mkpath(u"out"_s);
        root.mkpath(u"locked"_s);
        const QString folder = root.filePath(target);
        const QString exported = QDir(folder).filePath(u"vlmrStats.csv"_s);
        if (earlierExport)
            write(exported, "the earlier export\n");
        if (target == u"locked"_s) {
            // Where permissions do not bite (as root), the export's own name is taken
            // by a folder, which no file can replace.
            QFile::remove(exported);
            QDir(folder).mkpath(u"vlmrStats.csv"_s);
            write(QDir(exported).filePath(u"inside"_s), "the earlier export\n");
        }
        auto snapshot = [&] {
            QStringList files;
            QDirIterator it(f.dir.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
            while (it.hasNext()) {
                const QString path = it.next();
                files << path + u'=' + AppFixture::readAll(path);
            }
            files.sort();
            return files;
        };
        const QStringList before = snapshot();

        app.chooseExportFolder = [&](const QString& prompt) {
            [&] { QCOMPARE(prompt, u"Export"_s); }();
            return folder;
        };
        app.menuItem_ExportStatistics();

        if (succeeds) {
            QCOMPARE(AppFixture::readAll(exported), usage);
            QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden), QStringList{"vlmrStats.csv"});
        } else {
            QCOMPARE(snapshot(), before);
        }
        QCOMPARE(AppFixture::readAll(app.usageLog().path()), usage);
        QVERIFY(f.exitStatuses.isEmpty());

        // The prompt names the chooser's accept button, not its window.
        const auto dialog = AppDelegate::exportFolderDialog(u"Export"_s);
        QCOMPARE(dialog->labelText(QFileDialog::Accept), u"Export"_s);
        QCOMPARE(dialog->windowTitle(), u"Export Statistics"_s);

        // Cancelling the chooser does nothing at all.
        app.chooseExportFolder = [](const QString&) { return QString(); };
        const QStringList afterExport = snapshot();
        app.menuItem_ExportStatistics();
        QCOMPARE(snapshot(), afterExport);
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
        QVERIFY(editor.textscrollView->isVisible() && !editor.btnAdvanced->isVisible());
        QVERIFY(QFontInfo(editor.textViewJson->font()).fixedPitch());
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

    // What the page posts: stored pretty-printed after the alert, or refused.
    void pageMessage_data()
    {
        QTest::addColumn<QVariant>("body");
        QTest::addColumn<QString>("expectAlert");
        QTest::newRow("valid") << QVariant(kValid) << kValidated;
        QTest::newRow("not JSON") << QVariant(u"{morning"_s) << kNotValid;
        QTest::newRow("not text") << QVariant(42) << kNotValid;
    }
    void pageMessage()
    {
        QFETCH(QVariant, body);
        QFETCH(QString, expectAlert);
        selectJsonVc& editor = open();
        editor.messageHandler->postMessage(u"setting_saved"_s, body);
        QVERIFY2(alerts.value(0).startsWith(expectAlert), qPrintable(alerts.join(u'|')));
        const bool saved = expectAlert == kValidated;
        const QJsonDocument pretty(QJsonDocument::fromJson(kValid.toUtf8()));
        QCOMPARE(stored(), saved ? QString::fromUtf8(pretty.toJson(QJsonDocument::Indented)) : kValid);
        QCOMPARE(ed->fakes.launcher.restarts, saved ? 1 : 0);
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
        row("hangs until the time-out", {0, {}, u"Operation timed out"_s}, false, QString(""));
        row("garbage", {200, "<html>502 Bad Gateway</html>", {}}, false, QString(""));
        row("not found, from the page", {404, {}, {}}, true, QString(""));
        row("schema valijson cannot parse", {200, R"({"type": 12})", {}}, false, unreadable);
        // Not a raw string: moc would read its two slashes as a comment.
        row("remote reference, from the page", {200, "{\"$ref\": \"http://127.0.0.1:9/other.json\"}", {}},
            true, unreadable);
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
        QVERIFY(window.isVisible());

        ed->fakes.http.answer(reply);
        QVERIFY(!editor.isGettingSchema);
        QCOMPARE(ed->fakes.launcher.restarts, expectDetails.isNull() ? 1 : 0);
        if (!expectDetails.isNull()) {
            QCOMPARE(alerts.value(0), kCannotValidate);
            QVERIFY2(alerts.value(1).left(expectDetails.size()) == expectDetails,
                     qPrintable(alerts.value(1)));
            QCOMPARE(editor.textViewJson->toPlainText(), kValid);
            // Now the window closes, and its editor is back at the choice.
            QVERIFY(window.windowShouldClose());
            QVERIFY(!editor.textscrollView->isVisibleTo(&editor) &&
                    editor.btnEditSettings->isVisibleTo(&editor));
        }
    }

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

QTEST_MAIN(PanelTest)
#include "tst_panel.moc"
