#include "NetworkHttp.h"

#include <QElapsedTimer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

using namespace Qt::StringLiterals;
using velmora::HttpReply;
using velmora::NetworkHttp;

namespace {

// A one-file HTTP server on 127.0.0.1 that answers every request the same way.
class FakeServer : public QObject
{
public:
    enum Mode { Answer, Silent, HangUp };

    FakeServer(Mode mode, QByteArray answer = {}) : m_mode(mode), m_answer(std::move(answer))
    {
        m_server.listen(QHostAddress::LocalHost);
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* socket = m_server.nextPendingConnection()) {
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onData(socket); });
            }
        });
    }

    QUrl url(const QString& path) const
    {
        return QUrl(u"http://127.0.0.1:%1%2"_s.arg(m_server.serverPort()).arg(path));
    }

    QByteArray request;

private:
    void onData(QTcpSocket* socket)
    {
        request += socket->readAll();
        const qsizetype headerEnd = request.indexOf("\r\n\r\n");
        if (headerEnd < 0)
            return;
        qsizetype length = 0;
        for (const QByteArray& line : request.left(headerEnd).split('\n')) {
            if (line.toLower().startsWith("content-length:"))
                length = line.mid(15).trimmed().toLongLong();
        }
        if (request.size() < headerEnd + 4 + length)
            return;
        if (m_mode == Answer)
            socket->write(m_answer);
        if (m_mode != Silent)
            socket->disconnectFromHost();
    }

    Mode m_mode;
    QByteArray m_answer;
    QTcpServer m_server;
};

QByteArray answer(int status, const QByteArray& body)
{
    return "HTTP/1.1 " + QByteArray::number(status) + " Whatever\r\nContent-Type: application/json\r\n" +
           "Content-Length: " + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body;
}

} // namespace

class TestHttp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reply_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QByteArray>("response");
        QTest::addColumn<bool>("post");
        QTest::addColumn<int>("expectedStatus");
        QTest::addColumn<QByteArray>("expectedBody");

        const QByteArray json = R"({"version": "1.2", "notes": "é"})";
        QTest::newRow("get 200") << int(FakeServer::Answer) << answer(200, json) << false << 200 << json;
        QTest::newRow("post 200") << int(FakeServer::Answer) << answer(200, "{}") << true << 200 << "{}"_ba;
        QTest::newRow("get 500") << int(FakeServer::Answer) << answer(500, "oops") << false << 500 << "oops"_ba;
        QTest::newRow("post 404") << int(FakeServer::Answer) << answer(404, "") << true << 404 << ""_ba;
        QTest::newRow("hang-up before answering") << int(FakeServer::HangUp) << ""_ba << false << 0 << ""_ba;
        QTest::newRow("cut off within the body")
            << int(FakeServer::Answer) << answer(200, "0123456789").left(80) << false << 0 << ""_ba;
        QTest::newRow("never answers") << int(FakeServer::Silent) << ""_ba << true << 0 << ""_ba;
    }

    void reply()
    {
        QFETCH(int, mode);
        QFETCH(QByteArray, response);
        QFETCH(bool, post);
        QFETCH(int, expectedStatus);
        QFETCH(QByteArray, expectedBody);

        FakeServer server(FakeServer::Mode(mode), response);
        NetworkHttp http;
        QObject context;
        QList<HttpReply> replies;
        const auto done = [&](const HttpReply& reply) { replies << reply; };
        const int timeoutMs = 300;
        QElapsedTimer clock;
        clock.start();
        if (post)
            http.postJson(server.url(u"/feedback"_s), R"({"text": "hi"})", timeoutMs, &context, done);
        else
            http.get(server.url(u"/config.json"_s), timeoutMs, &context, done);

        QTRY_COMPARE_WITH_TIMEOUT(replies.size(), 1, 5000);
        QCOMPARE(replies[0].status, expectedStatus);
        QCOMPARE(replies[0].body, expectedBody);
        QCOMPARE(replies[0].error.isEmpty(), expectedStatus != 0);
        if (mode == FakeServer::Silent)
            QVERIFY2(clock.elapsed() >= timeoutMs - 20, qPrintable(QString::number(clock.elapsed())));
        if (post) {
            QVERIFY(server.request.startsWith("POST /feedback "));
            QVERIFY(server.request.contains("\r\nContent-Type: application/json\r\n"));
            QVERIFY(server.request.endsWith("\r\n\r\n{\"text\": \"hi\"}"));
        }

        // Whatever the connection does afterwards, the callback has had its one run.
        QTest::qWait(timeoutMs + 50);
        QCOMPARE(replies.size(), 1);
    }

    void closedPortAnswersStatusZero()
    {
        QTcpServer closed;
        QVERIFY(closed.listen(QHostAddress::LocalHost));
        const quint16 port = closed.serverPort();
        closed.close();

        NetworkHttp http;
        QObject context;
        QList<HttpReply> replies;
        http.get(QUrl(u"http://127.0.0.1:%1/"_s.arg(port)), 2000, &context,
                 [&](const HttpReply& reply) { replies << reply; });
        QTRY_COMPARE(replies.size(), 1);
        QCOMPARE(replies[0].status, 0);
        QVERIFY(!replies[0].error.isEmpty());
    }

    void noCallbackAfterTheContextIsGone()
    {
        FakeServer server(FakeServer::Silent);
        NetworkHttp http;
        auto context = std::make_unique<QObject>();
        int calls = 0;
        http.get(server.url(u"/"_s), 50, context.get(), [&](const HttpReply&) { ++calls; });
        QTRY_VERIFY(!server.request.isEmpty());
        context.reset();
        QTest::qWait(150);
        QCOMPARE(calls, 0);
    }
};

QTEST_GUILESS_MAIN(TestHttp)
#include "tst_platform_http.moc"
