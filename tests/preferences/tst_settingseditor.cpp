#include "AppFixture.h"
#include "preferencesWindowController.h"
#include "selectJsonVc.h"

#include <QJsonDocument>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QtTest>

using namespace velmora;
using namespace velmora::test;

namespace {
const QString kValid = QStringLiteral(R"({"morningHabits": [{"name": "Water", "durationSeconds": 30}],
  "eveningHabits": [], "breakActivities": [], "breakAfterMinutes": 45, "startTime": "07:00"})");
const QString kCannotValidate = QStringLiteral("Your settings can not be validated.");
const QString kNotValid = QStringLiteral("Sorry it seems like your settings aren’t valid.");
const QString kValidated = QStringLiteral("Your settings have been validated and will be applied now.");
} // namespace

class tst_settingseditor : public QObject
{
    Q_OBJECT
    std::unique_ptr<AppFixture> f;
    QStringList alerts; // message, then details

    // The program with Preferences → Settings open; a configuration server when asked.
    selectJsonVc& open(bool server = false)
    {
        f = std::make_unique<AppFixture>();
        f->fakes.preferences.setValue(QStringLiteral("kUserdefaultsSelectedJson"), kValid);
        if (server)
            f->catalogue = "{\"deployment\": {\"configServer\": \"http:/"
                           "/127.0.0.1:9/\"}}";
        f->launch(at(23, QTime(12, 0)));
        while (!f->fakes.http.requests.isEmpty()) // the catalogue: the packaged one will do
            f->fakes.http.answer(HttpReply{404, {}, {}});
        alerts.clear();
        auto& window = f->app->preferencesWindowControllerObj();
        window.selectJsonVcObj->inform = [this](const QString& message, const QString& details) {
            alerts << message << details;
        };
        window.menuItem_Preferences();
        window.preferencesTabViewController->setCurrentIndex(preferencesWindowController::SettingsEditorTab);
        return *window.selectJsonVcObj;
    }
    QString stored() const
    {
        return *f->fakes.preferences.string(QStringLiteral("kUserdefaultsSelectedJson"));
    }

private Q_SLOTS:
    void advancedFace_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("expectStored");
        QTest::addColumn<QString>("expectInView");
        QTest::addColumn<QStringList>("expectAlert"); // message, then what the details hold

        QString curly = kValid;
        curly.replace(QStringLiteral("\"Water\""), QStringLiteral("“Water”"));
        QString wrong = kValid;
        wrong.replace(QStringLiteral("30}"), QStringLiteral("\"30\"}"))
            .replace(QStringLiteral("45"), QStringLiteral("0"));
        const QString broken = QStringLiteral("{\"morningHabits\": [\n  {\"name\": \"Water\",}\n]}");
        QTest::newRow("valid, stored as typed") << kValid + u' ' << true << kValid + u' ' << QStringList();
        QTest::newRow("smart quotes made plain") << curly << true << kValid << QStringList();
        QTest::newRow("parse failure keeps the text") << broken << false << broken << QStringList();
        QTest::newRow("schema errors listed by path")
            << wrong << false << wrong
            << QStringList{kNotValid, QStringLiteral("breakAfterMinutes: "),
                           QStringLiteral("morningHabits[0].durationSeconds: ")};
        QTest::newRow("an array is checked as an empty object")
            << QStringLiteral("[1]") << false << QStringLiteral("[1]") << QStringList{kNotValid};
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
        QCOMPARE(f->fakes.launcher.restarts, expectStored ? 1 : 0);
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
        QTest::newRow("not JSON") << QVariant(QStringLiteral("{morning")) << kNotValid;
        QTest::newRow("not text") << QVariant(42) << kNotValid;
    }
    void pageMessage()
    {
        QFETCH(QVariant, body);
        QFETCH(QString, expectAlert);
        selectJsonVc& editor = open();
        editor.messageHandler->postMessage(QStringLiteral("setting_saved"), body);
        QVERIFY2(alerts.value(0).startsWith(expectAlert), qPrintable(alerts.join(u'|')));
        const bool saved = expectAlert == kValidated;
        const QJsonDocument pretty(QJsonDocument::fromJson(kValid.toUtf8()));
        QCOMPARE(stored(), saved ? QString::fromUtf8(pretty.toJson(QJsonDocument::Indented)) : kValid);
        QCOMPARE(f->fakes.launcher.restarts, saved ? 1 : 0);
    }

    // A configured server's schema decides; one that fails it lets nothing be stored.
    void schemaFromServer_data()
    {
        QTest::addColumn<HttpReply>("reply");
        QTest::addColumn<bool>("viaPage");
        QTest::addColumn<QString>("expectDetails"); // null: the document is stored
        const QString unreadable = QStringLiteral("The settings schema cannot be read");
        QTest::newRow("hangs until the time-out")
            << HttpReply{0, {}, QStringLiteral("Operation timed out")} << false << QString("");
        QTest::newRow("garbage") << HttpReply{200, "<html>502 Bad Gateway</html>", {}} << false
                                 << QString("");
        QTest::newRow("not found, from the page") << HttpReply{404, {}, {}} << true << QString("");
        QTest::newRow("schema valijson cannot parse")
            << HttpReply{200, R"({"type": 12})", {}} << false << unreadable;
        QTest::newRow("remote reference, from the page") << HttpReply{200,
                                                                      "{\"$ref\": \"http:/"
                                                                      "/127.0.0.1:9/other.json\"}",
                                                                      {}}
                                                         << true << unreadable;
        QTest::newRow("references in a loop")
            << HttpReply{200, "{\"$ref\": \"\\u0023\"}", {}} << false << unreadable;
        QTest::newRow("multipleOf 0, from the page")
            << HttpReply{200, R"({"properties": {"breakAfterMinutes": {"multipleOf": 0}}})", {}} << true
            << unreadable;
        QTest::newRow("the server's own rules")
            << HttpReply{200, R"({"required": ["eveningHabits"]})", {}} << false << QString();
    }
    void schemaFromServer()
    {
        QFETCH(HttpReply, reply);
        QFETCH(bool, viaPage);
        QFETCH(QString, expectDetails);
        selectJsonVc& editor = open(true);
        auto& window = f->app->preferencesWindowControllerObj();
        if (viaPage) {
            editor.messageHandler->postMessage(QStringLiteral("setting_saved"), kValid);
        } else {
            editor.btnAdvanced->click();
            editor.textViewJson->setPlainText(kValid);
            editor.btnSave->click();
        }
        QCOMPARE(f->fakes.http.requests.size(), 1);
        QCOMPARE(f->fakes.http.requests[0].url.path(), QStringLiteral("/config/settings-schema.json"));
        QVERIFY(f->fakes.http.requests[0].timeoutMs <= 60'000);
        QVERIFY(editor.isGettingSchema && !editor.btnSave->isEnabled());
        QVERIFY(!window.windowShouldClose()); // while it runs the window stays open
        QVERIFY(window.isVisible());

        f->fakes.http.answer(reply);
        QVERIFY(!editor.isGettingSchema);
        QCOMPARE(f->fakes.launcher.restarts, expectDetails.isNull() ? 1 : 0);
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
};

QTEST_MAIN(tst_settingseditor)
#include "tst_settingseditor.moc"
