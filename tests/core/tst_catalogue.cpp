#include "DebugLog.h"
#include "FakePorts.h"
#include "TextCatalogue.h"

#include <QJsonDocument>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;

using namespace velmora;
using namespace velmora::test;

class CatalogueTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void launchTextsFollowTheCatalogue_data()
    {
        QTest::addColumn<QByteArray>("catalogue");
        QTest::addColumn<QString>("unlock");
        QTest::addColumn<QString>("startButton");
        const auto row = [](const char* name, const char* catalogue, const char* unlock, const char* start) {
            QTest::newRow(name) << QByteArray(catalogue) << unlock << start;
        };
        row("empty object", "{}", "Unlock the machine", "Start <TIME> <NAME>");
        row("only common", R"({"common": {"unlockMachineButtonText": "Go"}})", "Go", "Start <TIME> <NAME>");
        row("group not a dictionary",
            R"({"common": ["x"], "activityInfo": {"startActivityButtonText": "Begin <NAME>"}})",
            "Unlock the machine", "Begin <NAME>");
    }

    void launchTextsFollowTheCatalogue()
    {
        QFETCH(QByteArray, catalogue);
        QFETCH(QString, unlock);
        QFETCH(QString, startButton);
        TextCatalogue texts;
        texts.setConfigjson(QJsonDocument::fromJson(catalogue).object());
        texts.readConfigFile();
        QCOMPARE(texts.unlockMachineButtonText, unlock);
        QCOMPARE(texts.startActivityButtonText, startButton);
    }

    void lookupFallsBackOnEveryMissingStep_data()
    {
        QTest::addColumn<QByteArray>("catalogue");
        QTest::addColumn<QString>("expected");
        QTest::newRow("found") << QByteArray(R"({"focusInfo": {"focusSummaryInfo": {"title": "Today"}}})")
                               << "Today";
        QTest::newRow("sub-group is text")
            << QByteArray(R"({"focusInfo": {"focusSummaryInfo": "x"}})") << "fallback";
        QTest::newRow("value is a number")
            << QByteArray(R"({"focusInfo": {"focusSummaryInfo": {"title": 1}}})") << "fallback";
    }

    void lookupFallsBackOnEveryMissingStep()
    {
        QFETCH(QByteArray, catalogue);
        QFETCH(QString, expected);
        TextCatalogue texts;
        texts.setConfigjson(QJsonDocument::fromJson(catalogue).object());
        QCOMPARE(texts.text({"focusInfo", "focusSummaryInfo"}, "title", u"fallback"_s), expected);
    }

    void packagedCatalogueLoads()
    {
        TextCatalogue texts;
        QVERIFY(texts.loadPackaged(u":/config.json"_s));
        QVERIFY(!texts.loadPackaged(u":/no-such-file.json"_s));
    }

    void templatesReplaceEveryOccurrence()
    {
        QCOMPARE(fillTemplate(u"<NAME> and <NAME>, <TIME>"_s, {{"<NAME>", u"Yoga"_s}}),
                 u"Yoga and Yoga, <TIME>"_s);
    }

    // Failed downloads: one answer, nothing delivered, the reason in the debug log.
    void failedDownload_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("error");
        QTest::addColumn<QString>("logLine");
        QTest::newRow("not JSON") << 200 << QByteArray("<html>") << ""
                                  << "error reading config file: ";
        QTest::newRow("JSON but no object") << 200 << QByteArray("[]") << ""
                                            << "";
        QTest::newRow("server error") << 500 << QByteArray(R"({"common": {}})") << ""
                                      << "";
        QTest::newRow("network down") << 0 << QByteArray() << "Connection refused"
                                      << "error config file: Connection refused";
        QTest::newRow("no server configured: no request") << -1 << QByteArray() << ""
                                                          << "";
    }

    void failedDownload()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(QString, error);
        QFETCH(QString, logLine);
        QTemporaryDir dir;
        FakeClock clock;
        FakeHttp http;
        DebugLog log(clock, dir.filePath(u"log.txt"_s));
        QObject context;
        int calls = 0;
        std::optional<QJsonObject> result;
        const QUrl server = status < 0 ? QUrl() : QUrl(u"http://127.0.0.1:8080/base/"_s);
        getConfigFile(http, server, log, &context, [&](std::optional<QJsonObject> catalogue) {
            ++calls;
            result = catalogue;
        });
        QCOMPARE(http.requests.size(), status < 0 ? 0 : 1);
        if (status >= 0) {
            QCOMPARE(http.requests[0].url, QUrl(u"http://127.0.0.1:8080/config/config.json"_s));
            http.answer(HttpReply{status, body, error});
        }
        QCOMPARE(calls, 1);
        QVERIFY(!result);
        QFile file(log.path());
        file.open(QIODevice::ReadOnly);
        const QString written = QString::fromUtf8(file.readAll());
        if (logLine.isEmpty())
            QVERIFY(written.isEmpty());
        else
            QVERIFY2(written.contains(logLine), qPrintable(written));
    }
};

QTEST_GUILESS_MAIN(CatalogueTest)
#include "tst_catalogue.moc"
