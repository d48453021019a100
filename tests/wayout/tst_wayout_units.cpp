// The parts of the ways out that stand alone: the start-small rewrite, the
// stored password, the feedback upload against a webhook that misbehaves, and
// the prompt outside the lock window.

#include "DebugLog.h"
#include "enterPasswordVc.h"
#include "FakePorts.h"
#include "FeedbackUpload.h"
#include "PasswordStore.h"
#include "PreferenceKeys.h"
#include "StartSmall.h"
#include "TextCatalogue.h"

#include <QtTest>
#include <QtWidgets>

using namespace velmora;
using namespace velmora::test;

namespace {

QJsonArray items(int count, int seconds)
{
    QJsonArray out;
    for (int i = 0; i < count; ++i)
        out.append(QJsonObject{{QStringLiteral("name"), QStringLiteral("h%1").arg(i)},
                               {QStringLiteral("durationSeconds"), seconds}});
    return out;
}

QList<QJsonValue> durations(const QJsonValue& list)
{
    QList<QJsonValue> out;
    for (const QJsonValue& v : list.toArray())
        out << v.toObject().value(QStringLiteral("durationSeconds"));
    return out;
}

} // namespace

class WayOutUnitsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void startSmallRewrites_data()
    {
        QTest::addColumn<QJsonObject>("document");
        QTest::addColumn<int>("morningCount");
        QTest::addColumn<QList<QJsonValue>>("firstDurations"); // morning, evening, break: first element each
        QTest::addColumn<bool>("removed");

        const auto doc = [](QJsonArray morning, QJsonArray evening, QJsonArray breaks) {
            return QJsonObject{{QStringLiteral("morningHabits"), morning},
                               {QStringLiteral("eveningHabits"), evening},
                               {QStringLiteral("breakActivities"), breaks}};
        };
        QTest::newRow("ten habits stay ten")
            << doc(items(10, 60), items(2, 30), items(1, 10)) << 10 << QList<QJsonValue>{30, 30, 10} << false;
        QTest::newRow("eleven become the first ten")
            << doc(items(11, 10), items(1, 10), items(1, 10)) << 10 << QList<QJsonValue>{10, 10, 10} << true;
        QTest::newRow("an evening removal sets the flag too")
            << doc(items(3, 20), items(12, 45), items(1, 10)) << 3 << QList<QJsonValue>{20, 30, 10} << true;
        QTest::newRow("a long break activity becomes 30")
            << doc(items(1, 30), items(1, 31), items(4, 120)) << 1 << QList<QJsonValue>{30, 30, 30} << false;
        QTest::newRow("a duration that is no whole number stays")
            << doc(QJsonArray{QJsonObject{{QStringLiteral("durationSeconds"), 45.5}}}, items(0, 0),
                   QJsonArray{QJsonObject{{QStringLiteral("durationSeconds"), QStringLiteral("90")}}})
            << 1 << QList<QJsonValue>{45.5, QJsonValue(QJsonValue::Undefined), QStringLiteral("90")} << false;
    }

    void startSmallRewrites()
    {
        QFETCH(QJsonObject, document);
        QFETCH(int, morningCount);
        QFETCH(QList<QJsonValue>, firstDurations);
        QFETCH(bool, removed);

        const StartSmallResult result = startSmall(document);
        QCOMPARE(result.isAnyHabitRemoved, removed);
        const QJsonArray morning = result.document.value(QStringLiteral("morningHabits")).toArray();
        QCOMPARE(morning.size(), morningCount);
        // The kept habits are the first ones, in their order.
        for (int i = 0; i < morning.size(); ++i)
            QCOMPARE(morning[i].toObject().value(QStringLiteral("name")),
                     document.value(QStringLiteral("morningHabits"))
                         .toArray()[i]
                         .toObject()
                         .value(QStringLiteral("name")));
        const char* lists[] = {"morningHabits", "eveningHabits", "breakActivities"};
        for (int i = 0; i < 3; ++i) {
            const QList<QJsonValue> all = durations(result.document.value(QLatin1String(lists[i])));
            QCOMPARE(all.value(0, QJsonValue(QJsonValue::Undefined)), firstDurations[i]);
            for (const QJsonValue& d : all)
                QVERIFY(!d.isDouble() || d.toDouble() <= 30 || d.toDouble() != qRound(d.toDouble()));
        }
        QCOMPARE(result.document.value(QStringLiteral("breakActivities")).toArray().size(),
                 document.value(QStringLiteral("breakActivities")).toArray().size());
    }

    void startSmallLeavesAbsentListsAbsent()
    {
        const QJsonObject document{{QStringLiteral("morningHabits"), items(2, 90)},
                                   {QStringLiteral("startTime"), QStringLiteral("07:00")}};
        const StartSmallResult result = startSmall(document);
        QVERIFY(!result.document.contains(QStringLiteral("eveningHabits")));
        QVERIFY(!result.document.contains(QStringLiteral("breakActivities")));
        QCOMPARE(result.document.value(QStringLiteral("startTime")).toString(), QStringLiteral("07:00"));
    }

    void passwordCheck_data()
    {
        QTest::addColumn<QVariant>("stored"); // invalid: no key at all
        QTest::addColumn<QString>("entered");
        QTest::addColumn<int>("expected");

        const auto encoded = [](const QString& text) {
            return QVariant(QString::fromLatin1(text.toUtf8().toBase64()));
        };
        QTest::newRow("correct") << encoded(QStringLiteral("s3cret")) << QStringLiteral("s3cret")
                                 << int(password::Check::Correct);
        QTest::newRow("case counts") << encoded(QStringLiteral("s3cret")) << QStringLiteral("S3cret")
                                     << int(password::Check::Wrong);
        QTest::newRow("non-ASCII by exact text")
            << encoded(QStringLiteral("grüße✓")) << QStringLiteral("grüße✓") << int(password::Check::Correct);
        QTest::newRow("not base64") << QVariant(QStringLiteral("%%not base64%%")) << QStringLiteral("x")
                                    << int(password::Check::Undecodable);
        QTest::newRow("base64 of no UTF-8")
            << QVariant(QString::fromLatin1(QByteArray("\xff\xfe\xfd").toBase64())) << QStringLiteral("x")
            << int(password::Check::Undecodable);
        QTest::newRow("not text at all")
            << QVariant(QVariantList{1, 2}) << QStringLiteral("x") << int(password::Check::Undecodable);
        QTest::newRow("no password") << QVariant() << QStringLiteral("x") << int(password::Check::NotSet);
    }

    void passwordCheck()
    {
        QFETCH(QVariant, stored);
        QFETCH(QString, entered);
        QFETCH(int, expected);
        MemoryPreferences preferences;
        if (stored.isValid())
            preferences.setValue(keys::kUserdefaultsAppPassword, stored);
        QCOMPARE(int(password::check(preferences, entered)), expected);
        QCOMPARE(password::isSet(preferences), stored.isValid());

        password::store(preferences, entered);
        QCOMPARE(password::check(preferences, entered), password::Check::Correct);
    }

    void uploadDocument()
    {
        FakePorts f;
        TextCatalogue texts;
        texts.webhookUrl = QStringLiteral("https://hooks.example/velmora");
        DebugLog log(f.clock, {});
        f.preferences.setValue(keys::kUserdefaultsSelectedJson, QStringLiteral(R"({"startTime": "07:00"})"));
        f.preferences.setValue(keys::kUserdefaultsFirstRunDate, QDateTime(QDate(2026, 3, 14), QTime(9, 0)));
        FeedbackUpload upload(f.http, f.preferences, texts, f.clock, QString(), log);

        QObject context;
        bool done = false;
        upload.getAbortJsonToUpload(QString(), QStringLiteral("it froze"),
                                    QStringLiteral("The app is broken"), &context, [&done] { done = true; });
        QCOMPARE(f.http.requests.size(), 1);
        QCOMPARE(f.http.requests[0].url, QUrl(QStringLiteral("https://hooks.example/velmora")));
        QCOMPARE(f.http.requests[0].timeoutMs, FeedbackUpload::kTimeoutMs);
        const QJsonObject sent = QJsonDocument::fromJson(f.http.requests[0].body).object();
        QCOMPARE(sent.value(QStringLiteral("abortReason")).toString(), QStringLiteral("The app is broken"));
        QCOMPARE(sent.value(QStringLiteral("settingsJSON"))
                     .toObject()
                     .value(QStringLiteral("startTime"))
                     .toString(),
                 QStringLiteral("07:00"));
        QCOMPARE(sent.value(QStringLiteral("usageStartDate")).toString(), QStringLiteral("2026-03-14"));
        QCOMPARE(sent.value(QStringLiteral("feedback")).toString(), QStringLiteral("it froze"));
        // An empty address is sent as it is; no address at all leaves the key out.
        QVERIFY(sent.contains(QStringLiteral("emailAddress")));
        QVERIFY(!sent.value(QStringLiteral("macOSVersion")).toString().isEmpty());
        QVERIFY(!done);
        f.http.answer({.status = 200, .body = "ok", .error = {}});
        QVERIFY(done);

        const QJsonObject quit =
            upload.document("quitReason", QStringLiteral("Something else"), std::nullopt, {});
        QVERIFY(!quit.contains(QStringLiteral("emailAddress")));
        QVERIFY(!quit.contains(QStringLiteral("abortReason")));
        QCOMPARE(quit.value(QStringLiteral("quitReason")).toString(), QStringLiteral("Something else"));
    }

    void uploadAlwaysFinishes_data()
    {
        QTest::addColumn<QString>("webhook");
        QTest::addColumn<int>("status"); // -1: the server never answers
        QTest::addColumn<qint64>("doneAfterMs");

        QTest::newRow("server error") << QStringLiteral("https://hooks.example/x") << 500 << qint64(0);
        QTest::newRow("unreachable") << QStringLiteral("https://hooks.example/x") << 0 << qint64(0);
        QTest::newRow("never answers")
            << QStringLiteral("https://hooks.example/x") << -1 << qint64(FeedbackUpload::kTimeoutMs);
        QTest::newRow("no webhook") << QString() << -1 << qint64(0);
        QTest::newRow("not an address") << QStringLiteral("::not a url") << -1 << qint64(0);
    }

    void uploadAlwaysFinishes()
    {
        QFETCH(QString, webhook);
        QFETCH(int, status);
        QFETCH(qint64, doneAfterMs);
        FakePorts f;
        TextCatalogue texts;
        texts.webhookUrl = webhook;
        DebugLog log(f.clock, {});
        FeedbackUpload upload(f.http, f.preferences, texts, f.clock, QString(), log, f.scheduler);
        QObject context;
        int done = 0;
        upload.getQuitJsonToUpload(std::nullopt, {}, QStringLiteral("The app is broken"), &context,
                                   [&done] { ++done; });
        if (status >= 0 && !f.http.requests.isEmpty())
            f.http.answer(
                {.status = status, .body = {}, .error = status ? QString() : QStringLiteral("refused")});
        f.scheduler.advance(doneAfterMs ? doneAfterMs - 1 : 0);
        QCOMPARE(done, doneAfterMs ? 0 : 1);
        f.scheduler.advance(1);
        QCOMPARE(done, 1);
        // A late answer after the time-out changes nothing.
        if (!f.http.requests.isEmpty())
            f.http.answer({.status = 200, .body = "1", .error = {}});
        f.scheduler.advance(FeedbackUpload::kTimeoutMs);
        QCOMPARE(done, 1);
    }

    void promptOutsideTheLock()
    {
        FakePorts f;
        TextCatalogue texts;
        DebugLog log(f.clock, {});
        f.preferences.setValue(keys::kUserdefaultsAppPassword, QStringLiteral("***not base64***"));
        enterPasswordVc prompt({f.preferences, f.clock, f.scheduler, log, texts});
        QStringList alerts;
        prompt.inform = [&alerts](const QString& title, const QString&) { alerts << title; };
        prompt.confirm = [](const QString&, const QString&) { return true; };
        int correct = 0, cancelled = 0;
        prompt.onCorrect = [&correct] { ++correct; };
        prompt.onCancel = [&cancelled] { ++cancelled; };
        prompt.show();
        prompt.viewWillAppear(false);

        // An unreadable password lets nothing through, silently.
        QTest::keyClicks(prompt.textFieldPassword, QStringLiteral("anything"));
        prompt.btnOk->click();
        QCOMPARE(correct, 0);
        QVERIFY(prompt.isVisible());
        prompt.textFieldPassword->clear();
        prompt.btnOk->click();
        QCOMPARE(alerts, QStringList{QStringLiteral("Password cannot be blank.")});

        // The reset is the way out: a day later both keys are gone.
        QVERIFY(prompt.btnResetPassword->isVisible() && prompt.btnResetPassword->isEnabled());
        prompt.btnResetPassword->click();
        QCOMPARE(cancelled, 1);
        QCOMPARE(f.preferences.date(keys::kUserdefaults24HoursClearPasswordTime), f.clock.now().addDays(1));
        prompt.viewWillAppear(false);
        QVERIFY(!prompt.btnResetPassword->isEnabled());
        f.scheduler.advance(24 * 3600 * 1000 - 1);
        QVERIFY(password::isSet(f.preferences));
        f.scheduler.advance(1);
        QVERIFY(!password::isSet(f.preferences));
        QVERIFY(!f.preferences.contains(keys::kUserdefaults24HoursClearPasswordTime));
    }
};

QTEST_MAIN(WayOutUnitsTest)
#include "tst_wayout_units.moc"
