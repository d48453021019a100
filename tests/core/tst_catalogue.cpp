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

    void packagedCatalogueLoads()
    {
        TextCatalogue texts;
        QVERIFY(texts.loadPackaged(u":/config.json"_s));
        QVERIFY(!texts.loadPackaged(u":/no-such-file.json"_s));
    }

    // Failed downloads: one answer and nothing delivered.
    void failedDownload_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("error");
        QTest::newRow("not JSON") << 200 << QByteArray("<html>") << "";
        QTest::newRow("server error") << 500 << QByteArray(R"({"common": {}})") << "";
        QTest::newRow("network down") << 0 << QByteArray() << "Connection refused";
        QTest::newRow("no server configured: no request") << -1 << QByteArray() << "";
    }

    void failedDownload()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(QString, error);
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
            QCOMPARE(http.requests[0].url, QUrl(u"http://127.0.0.1:8080/base/config/config.json"_s));
            http.answer(HttpReply{status, body, error});
        }
        QCOMPARE(calls, 1);
        QVERIFY(!result);
    }
};

QTEST_GUILESS_MAIN(CatalogueTest)
#include "tst_catalogue.moc"
