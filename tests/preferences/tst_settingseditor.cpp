#include "AppFixture.h"
#include "preferencesWindowController.h"
#include "selectJsonVc.h"
#include "SettingsValidation.h"

#include <QJsonDocument>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QtTest>

using namespace velmora;
using namespace velmora::test;

namespace {
const QByteArray kValid = R"({"morningHabits": [{"name": "Water", "durationSeconds": 30}],
  "eveningHabits": [], "breakActivities": [], "breakAfterMinutes": 45,
  "startTime": "07:00", "shutOffTime": "22:00"})";
const QString kCannotValidate = QStringLiteral("Your settings can not be validated.");
const QString kNotValid = QStringLiteral("Sorry it seems like your settings aren’t valid.");
} // namespace

class tst_settingseditor : public QObject
{
    Q_OBJECT

    struct Alert
    {
        QString message, details;
    };

    std::unique_ptr<AppFixture> f;
    QList<Alert> alerts;

    // The program with the settings tab open; a server when `server` is set.
    selectJsonVc& open(bool server = false)
    {
        f = std::make_unique<AppFixture>(kValid);
        f->fakes.preferences.setValue(QStringLiteral("kUserdefaultsSelectedJson"), QString::fromUtf8(kValid));
        if (server)
            f->catalogue = "{\"deployment\": {\"configServer\": \"http:/"
                           "/127.0.0.1:9/\"}}";
        f->launch(at(23, QTime(12, 0)));
        while (!f->fakes.http.requests.isEmpty()) // the catalogue: the packaged one will do
            f->fakes.http.answer(HttpReply{404, {}, {}});
        f->fakes.scheduler.flush();
        alerts.clear();
        auto& window = f->app->preferencesWindowControllerObj();
        selectJsonVc& editor = *window.selectJsonVcObj;
        editor.inform = [this](const QString& message, const QString& details) {
            alerts.append({message, details});
        };
        window.menuItem_Preferences();
        window.preferencesTabViewController->setCurrentIndex(preferencesWindowController::SettingsEditorTab);
        return editor;
    }
    QString stored() const
    {
        return f->fakes.preferences.string(QStringLiteral("kUserdefaultsSelectedJson")).value_or(QString());
    }

private Q_SLOTS:
    void tabShowsTheStoredDocumentAndTheChoice()
    {
        selectJsonVc& editor = open();
        QCOMPARE(f->app->preferencesWindowControllerObj().preferencesTabViewController->currentWidget(),
                 &editor);
        QCOMPARE(editor.textViewJson->toPlainText().toUtf8(), kValid);
        QVERIFY(editor.btnEditSettings->isVisible() && editor.btnAdvanced->isVisible());
        QVERIFY(!editor.textscrollView->isVisible() && !editor.customView->isVisible());
        editor.btnAdvanced->click();
        QVERIFY(editor.textscrollView->isVisible() && !editor.btnAdvanced->isVisible());
        QVERIFY(QFontInfo(editor.textViewJson->font()).fixedPitch());
    }

    void advancedSave_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("expectStored"); // empty: nothing is stored
        QTest::addColumn<QString>("expectInView");
        QTest::addColumn<QString>("expectAlert");
        QTest::addColumn<QStringList>("expectDetails");

        const QString valid = QString::fromUtf8(kValid);
        QString curly = valid;
        curly.replace(QStringLiteral("\"Water\""), QStringLiteral("“Water”"));
        QTest::newRow("valid, stored as typed") << valid << valid << valid << QString() << QStringList();
        QTest::newRow("smart quotes made plain") << curly << valid << valid << QString() << QStringList();
        const QString broken = QStringLiteral("{\"morningHabits\": [\n  {\"name\": \"Water\",}\n]}");
        QTest::newRow("parse failure keeps the text")
            << broken << QString() << broken << QString() << QStringList();
        QString wrong = valid;
        wrong.replace(QStringLiteral("\"durationSeconds\": 30"),
                      QStringLiteral("\"durationSeconds\": \"30\""));
        wrong.replace(QStringLiteral("45"), QStringLiteral("0"));
        QTest::newRow("schema errors listed by path")
            << wrong << QString() << wrong << kNotValid
            << QStringList{QStringLiteral("breakAfterMinutes: "),
                           QStringLiteral("morningHabits[0].durationSeconds: ")};
        QTest::newRow("an array is checked as an empty object")
            << QStringLiteral("[1, 2]") << QString() << QStringLiteral("[1, 2]") << kNotValid
            << QStringList{QStringLiteral("Object")};
    }
    void advancedSave()
    {
        QFETCH(QString, typed);
        QFETCH(QString, expectStored);
        QFETCH(QString, expectInView);
        QFETCH(QString, expectAlert);
        QFETCH(QStringList, expectDetails);
        selectJsonVc& editor = open();
        f->fakes.preferences.remove(QStringLiteral("kUserdefaultsSelectedJson"));
        editor.btnAdvanced->click();
        editor.textViewJson->setPlainText(typed);
        editor.btnSave->click();

        QCOMPARE(stored(), expectStored);
        QCOMPARE(f->fakes.launcher.restarts, expectStored.isEmpty() ? 0 : 1);
        QCOMPARE(editor.textViewJson->toPlainText(), expectInView);
        QCOMPARE(alerts.size(), expectAlert.isEmpty() ? 0 : 1);
        if (!expectAlert.isEmpty()) {
            QVERIFY2(alerts[0].message.startsWith(expectAlert), qPrintable(alerts[0].message));
            for (const QString& detail : expectDetails)
                QVERIFY2(alerts[0].details.contains(detail), qPrintable(alerts[0].details));
        }
        QCOMPARE(editor.lblParseError->text().isEmpty(), !typed.contains(QLatin1String(",}")));
        QVERIFY(editor.btnSave->isEnabled());
    }

    // The page's document is stored pretty-printed once the user has read the alert.
    void pageDocumentStoredPrettyPrinted()
    {
        selectJsonVc& editor = open();
        editor.messageHandler->postMessage(QStringLiteral("setting_saved"), QString::fromUtf8(kValid));
        QCOMPARE(alerts.size(), 1);
        QCOMPARE(alerts[0].message,
                 QStringLiteral("Your settings have been validated and will be applied now."));
        const QJsonObject expected = QJsonDocument::fromJson(kValid).object();
        QCOMPARE(stored(), QString::fromUtf8(QJsonDocument(expected).toJson(QJsonDocument::Indented)));
        QCOMPARE(f->fakes.launcher.restarts, 1);
    }

    void pageBodyThatIsNoDocumentIsRefused_data()
    {
        QTest::addColumn<QVariant>("body");
        QTest::newRow("not JSON") << QVariant(QStringLiteral("{morning"));
        QTest::newRow("not text") << QVariant(42);
    }
    void pageBodyThatIsNoDocumentIsRefused()
    {
        QFETCH(QVariant, body);
        selectJsonVc& editor = open();
        editor.messageHandler->postMessage(QStringLiteral("setting_saved"), body);
        QCOMPARE(alerts.size(), 1);
        QVERIFY(alerts[0].message.startsWith(kNotValid));
        QCOMPARE(stored(), QString::fromUtf8(kValid));
        QCOMPARE(f->fakes.launcher.restarts, 0);
    }

    // A configured server that cannot give a usable schema: nothing is stored.
    void schemaFromServer_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("error");
        QTest::addColumn<bool>("viaPage");
        QTest::addColumn<QString>("expectDetails");
        QTest::newRow("hangs until the time-out")
            << 0 << QByteArray() << QStringLiteral("Operation timed out") << false << QString();
        QTest::newRow("garbage") << 200 << QByteArray("<html>502 Bad Gateway</html>") << QString() << false
                                 << QString();
        QTest::newRow("not found, from the page") << 404 << QByteArray() << QString() << true << QString();
        QTest::newRow("schema valijson cannot parse")
            << 200 << QByteArray(R"({"type": 12})") << QString() << false
            << QStringLiteral("The settings schema cannot be read");
        QTest::newRow("remote reference, from the page")
            << 200
            << QByteArray("{\"$ref\": \"http:/"
                          "/127.0.0.1:9/other.json\"}")
            << QString() << true << QStringLiteral("The settings schema cannot be read");
    }
    void schemaFromServer()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(QString, error);
        QFETCH(bool, viaPage);
        QFETCH(QString, expectDetails);
        selectJsonVc& editor = open(true);
        auto& window = f->app->preferencesWindowControllerObj();
        if (viaPage) {
            editor.messageHandler->postMessage(QStringLiteral("setting_saved"), QString::fromUtf8(kValid));
        } else {
            editor.btnAdvanced->click();
            editor.textViewJson->setPlainText(QStringLiteral("{}"));
            editor.btnSave->click();
        }
        QCOMPARE(f->fakes.http.requests.size(), 1);
        QCOMPARE(f->fakes.http.requests[0].url.path(), QStringLiteral("/config/settings-schema.json"));
        QVERIFY(f->fakes.http.requests[0].timeoutMs <= 60'000);
        QVERIFY(editor.isGettingSchema);
        QVERIFY(!editor.btnSave->isEnabled());
        // While it runs the window stays open, as it is.
        QVERIFY(!window.windowShouldClose());
        QVERIFY(window.isVisible());

        f->fakes.http.answer(HttpReply{status, body, error});
        QVERIFY(!editor.isGettingSchema);
        QCOMPARE(alerts.size(), 1);
        QCOMPARE(alerts[0].message, kCannotValidate);
        QVERIFY2(alerts[0].details.startsWith(expectDetails), qPrintable(alerts[0].details));
        QCOMPARE(stored(), QString::fromUtf8(kValid));
        QCOMPARE(f->fakes.launcher.restarts, 0);
        if (!viaPage)
            QCOMPARE(editor.textViewJson->toPlainText(), QStringLiteral("{}"));

        // Now the window closes, and its editor is back at the choice.
        QVERIFY(window.windowShouldClose());
        QVERIFY(!editor.customView->isVisibleTo(&editor) && !editor.textscrollView->isVisibleTo(&editor));
        QVERIFY(editor.btnEditSettings->isVisibleTo(&editor));
    }

    void serverSchemaDecides()
    {
        selectJsonVc& editor = open(true);
        editor.btnAdvanced->click();
        editor.textViewJson->setPlainText(QStringLiteral("{\"anything\": 1}"));
        editor.btnSave->click();
        f->fakes.http.answer(HttpReply{200, R"({"type": "object", "required": ["anything"]})", {}});
        QCOMPARE(alerts.size(), 0);
        QCOMPARE(stored(), QStringLiteral("{\"anything\": 1}"));
        QCOMPARE(f->fakes.launcher.restarts, 1);
    }

    // Every document the packaged schema lets through is one the loader can read.
    void packagedSettingsPassThePackagedSchema()
    {
        auto read = [](const QString& path) {
            QFile file(path);
            file.open(QIODevice::ReadOnly);
            return QJsonDocument::fromJson(file.readAll()).object();
        };
        const SettingsValidation result = validateSettings(read(QStringLiteral(":/settings.json")),
                                                           read(QStringLiteral(":/settings-schema.json")));
        QVERIFY2(result.isValid(), qPrintable(result.describe()));
    }
};

QTEST_MAIN(tst_settingseditor)
#include "tst_settingseditor.moc"
