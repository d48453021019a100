// The parts of the ways out that stand alone: the start-small rewrite, the
// stored password and the feedback upload against a webhook that misbehaves.

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

using namespace Qt::Literals::StringLiterals;

using namespace velmora;
using namespace velmora::test;

namespace {

QJsonArray items(int count, int seconds)
{
    QJsonArray out;
    for (int i = 0; i < count; ++i)
        out.append(QJsonObject{{u"name"_s, u"h%1"_s.arg(i)}, {u"durationSeconds"_s, seconds}});
    return out;
}

QList<QJsonValue> durations(const QJsonValue& list)
{
    QList<QJsonValue> out;
    for (const QJsonValue& v : list.toArray())
        out << v.toObject().value(u"durationSeconds"_s);
    return out;
}

// The ports, texts and log the upload and the prompt are made with.
struct Parts : FakePorts
{
    TextCatalogue texts;
    DebugLog log{clock, {}};
};

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

        const auto row = [](const char* name, const QJsonArray& morning, const QJsonArray& evening,
                            const QJsonArray& breaks, int morningCount, QList<QJsonValue> first,
                            bool removed) {
            const QJsonObject document{{u"morningHabits"_s, morning},
                                       {u"eveningHabits"_s, evening},
                                       {u"breakActivities"_s, breaks},
                                       {u"startTime"_s, u"07:00"_s}};
            QTest::newRow(name) << document << morningCount << first << removed;
        };
        const QJsonValue none(QJsonValue::Undefined);
        row("ten habits stay ten, long ones become 30", items(10, 60), items(2, 30), items(4, 31), 10,
            {30, 30, 30}, false);
        row("eleven become the first ten", items(11, 10), items(1, 10), items(1, 10), 10, {10, 10, 10}, true);
        row("an evening removal sets the flag too", items(3, 20), items(12, 45), items(1, 10), 3,
            {20, 30, 10}, true);
        row("a duration that is no whole number stays", {QJsonObject{{u"durationSeconds"_s, 45.5}}}, {},
            {QJsonObject{{u"durationSeconds"_s, u"90"_s}}}, 1, {45.5, none, u"90"_s}, false);
        QTest::newRow("absent lists stay absent") << QJsonObject{{u"morningHabits"_s, items(2, 90)}} << 2
                                                  << QList<QJsonValue>{30, none, none} << false;
    }

    void startSmallRewrites()
    {
        QFETCH(QJsonObject, document);
        QFETCH(int, morningCount);
        QFETCH(QList<QJsonValue>, firstDurations);
        QFETCH(bool, removed);

        const StartSmallResult result = startSmall(document);
        QCOMPARE(result.isAnyHabitRemoved, removed);
        const QJsonArray morning = result.document.value(u"morningHabits"_s).toArray();
        QCOMPARE(morning.size(), morningCount);
        // The kept habits are the first ones, in their order.
        for (int i = 0; i < morning.size(); ++i)
            QCOMPARE(morning[i].toObject().value(u"name"_s),
                     document.value(u"morningHabits"_s).toArray()[i].toObject().value(u"name"_s));
        const char* lists[] = {"morningHabits", "eveningHabits", "breakActivities"};
        for (int i = 0; i < 3; ++i) {
            const QList<QJsonValue> all = durations(result.document.value(QLatin1String(lists[i])));
            QCOMPARE(all.value(0, QJsonValue(QJsonValue::Undefined)), firstDurations[i]);
            for (const QJsonValue& d : all)
                QVERIFY(!d.isDouble() || d.toDouble() <= 30 || d.toDouble() != qRound(d.toDouble()));
        }
        QCOMPARE(result.document.value(u"breakActivities"_s).toArray().size(),
                 document.value(u"breakActivities"_s).toArray().size());
        // No list appears that was not there, and the rest of the document stays.
        QCOMPARE(result.document.keys(), document.keys());
        QCOMPARE(result.document.value(u"startTime"_s), document.value(u"startTime"_s));
    }

    void passwordCheck_data()
    {
        QTest::addColumn<QVariant>("stored"); // invalid: no key at all
        QTest::addColumn<QString>("entered");
        QTest::addColumn<int>("expected");

        using enum password::Check;
        const auto row = [](const char* name, const QVariant& stored, const QString& entered,
                            password::Check c) { QTest::newRow(name) << stored << entered << int(c); };
        const auto encoded = [](const QString& text) {
            return QString::fromLatin1(text.toUtf8().toBase64());
        };
        row("correct", encoded(u"s3cret"_s), u"s3cret"_s, Correct);
        row("case counts", encoded(u"s3cret"_s), u"S3cret"_s, Wrong);
        row("non-ASCII by exact text", encoded(u"grüße✓"_s), u"grüße✓"_s, Correct);
        row("not base64", u"%%not base64%%"_s, u"x"_s, Undecodable);
        row("base64 of no UTF-8", QString::fromLatin1(QByteArray("\xff\xfe\xfd").toBase64()), u"x"_s,
            Undecodable);
        row("not text at all", QVariantList{1, 2}, u"x"_s, Undecodable);
        row("no password", QVariant(), u"x"_s, NotSet);
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
    }

    void uploadDocument()
    {
        Parts f;
        f.texts.webhookUrl = u"https://hooks.example/velmora"_s;
        f.preferences.setValue(keys::kUserdefaultsSelectedJson, uR"({"startTime": "07:00"})"_s);
        f.preferences.setValue(keys::kUserdefaultsFirstRunDate, QDateTime(QDate(2026, 3, 14), QTime(9, 0)));
        FeedbackUpload upload(f.http, f.preferences, f.texts, f.clock, QString(), f.log);

        QObject context;
        bool done = false;
        upload.getAbortJsonToUpload(QString(), u"it froze"_s, u"The app is broken"_s, &context,
                                    [&done] { done = true; });
        QCOMPARE(f.http.requests.size(), 1);
        QCOMPARE(f.http.requests[0].url, QUrl(u"https://hooks.example/velmora"_s));
        const QJsonObject sent = QJsonDocument::fromJson(f.http.requests[0].body).object();
        QCOMPARE(sent.value(u"abortReason"_s).toString(), u"The app is broken"_s);
        QCOMPARE(sent.value(u"settingsJSON"_s).toObject().value(u"startTime"_s).toString(), u"07:00"_s);
        QCOMPARE(sent.value(u"usageStartDate"_s).toString(), u"2026-03-14"_s);
        QCOMPARE(sent.value(u"feedback"_s).toString(), u"it froze"_s);
        // An empty address is sent as it is; no address at all leaves the key out.
        QVERIFY(sent.contains(u"emailAddress"_s));
        QVERIFY(!sent.value(u"macOSVersion"_s).toString().isEmpty());
        QVERIFY(!done);
        f.http.answer({.status = 200, .body = "ok", .error = {}});
        QVERIFY(done);

        const QJsonObject quit = upload.document("quitReason", u"Something else"_s, std::nullopt, {});
        QVERIFY(!quit.contains(u"emailAddress"_s));
        QVERIFY(!quit.contains(u"abortReason"_s));
        QCOMPARE(quit.value(u"quitReason"_s).toString(), u"Something else"_s);
    }

    void uploadAlwaysFinishes_data()
    {
        QTest::addColumn<QString>("webhook");
        QTest::addColumn<int>("status"); // -1: the server never answers
        QTest::addColumn<qint64>("doneAfterMs");

        const QString hook = u"https://hooks.example/x"_s;
        QTest::newRow("server error") << hook << 500 << qint64(0);
        QTest::newRow("never answers") << hook << -1 << qint64(FeedbackUpload::kTimeoutMs);
        QTest::newRow("no webhook") << QString() << -1 << qint64(0);
    }

    void uploadAlwaysFinishes()
    {
        QFETCH(QString, webhook);
        QFETCH(int, status);
        QFETCH(qint64, doneAfterMs);
        Parts f;
        f.texts.webhookUrl = webhook;
        FeedbackUpload upload(f.http, f.preferences, f.texts, f.clock, QString(), f.log, f.scheduler);
        QObject context;
        int done = 0;
        upload.getQuitJsonToUpload(std::nullopt, {}, u"The app is broken"_s, &context, [&done] { ++done; });
        if (status >= 0 && !f.http.requests.isEmpty())
            f.http.answer({.status = status, .body = {}, .error = status ? QString() : u"refused"_s});
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
};

QTEST_MAIN(WayOutUnitsTest)
#include "tst_wayout_units.moc"
