#include "NetworkHttp.h"

#include <QElapsedTimer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

using namespace Qt::StringLiterals;
using velmora::HttpReply;
using velmora::NetworkHttp;

namespace {

// Answers every complete request on 127.0.0.1 with the same bytes; with no bytes
// it hangs up, with "silent" it says nothing at all.
class FakeServer : public QObject
{
public:
    explicit FakeServer(QByteArray answer)
        : m_answer(std::move(answer))
    {
        m_server.listen(QHostAddress::LocalHost);
        m_port = m_server.serverPort();
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            QTcpSocket* socket = m_server.nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onData(socket); });
        });
    }

    QUrl url() const { return QUrl(u"http://127.0.0.1:%1/feedback"_s.arg(m_port)); }

    QByteArray request;

private:
    void onData(QTcpSocket* socket)
    {
        request += socket->readAll();
        // The answered requests are GETs, whole once their header is.
        if (!request.endsWith("\r\n\r\n") || m_answer == "silent")
            return;
        socket->write(m_answer);
        socket->disconnectFromHost();
    }

    QByteArray m_answer;
    QTcpServer m_server;
    quint16 m_port = 0;
};

QByteArray answer(int status, const QByteArray& body)
{
    return "HTTP/1.1 " + QByteArray::number(status) +
           " Whatever\r\nContent-Length: " + QByteArray::number(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body;
}

} // namespace

class TestHttp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reply_data()
    {
        QTest::addColumn<QByteArray>("response");
        QTest::addColumn<bool>("post");
        QTest::addColumn<int>("expectedStatus");
        QTest::addColumn<QByteArray>("expectedBody");

        QTest::newRow("get 500") << answer(500, "oops") << false << 500 << "oops"_ba;
        QTest::newRow("cut off within the body")
            << answer(200, "0123456789").chopped(4) << false << 0 << ""_ba;
        QTest::newRow("never answers") << "silent"_ba << true << 0 << ""_ba;
    }

    void reply()
    {
        QFETCH(QByteArray, response);
        QFETCH(bool, post);
        QFETCH(int, expectedStatus);
        QFETCH(QByteArray, expectedBody);

        FakeServer server(response);
        NetworkHttp http;
        QList<HttpReply> replies;
        const auto done = [&](const HttpReply& reply) { replies << reply; };
        const int timeoutMs = 150;
        QElapsedTimer clock;
        clock.start();
        if (post)
            http.postJson(server.url(), R"({"text": "hi"})", timeoutMs, this, done);
        else
            http.get(server.url(), timeoutMs, this, done);

        QTRY_COMPARE_WITH_TIMEOUT(replies.size(), 1, 5000);
        QCOMPARE(replies[0].status, expectedStatus);
        QCOMPARE(replies[0].body, expectedBody);
        QCOMPARE(replies[0].error.isEmpty(), expectedStatus != 0);
        if (response == "silent")
            QVERIFY2(clock.elapsed() >= timeoutMs - 20, qPrintable(QString::number(clock.elapsed())));
        if (post) {
            QVERIFY(server.request.startsWith("POST /feedback "));
            // Header names are not case-sensitive, and later Qt sends them in lower case.
            QVERIFY(server.request.toLower().contains("\r\ncontent-type: application/json\r\n"));
            QVERIFY(server.request.endsWith("\r\n\r\n{\"text\": \"hi\"}"));
        }
        // Whatever the connection does afterwards, the callback has had its one run.
        QTest::qWait(timeoutMs + 50);
        QCOMPARE(replies.size(), 1);
    }

    void noCallbackAfterTheContextIsGone()
    {
        FakeServer server("silent");
        NetworkHttp http;
        auto context = std::make_unique<QObject>();
        int calls = 0;
        http.get(server.url(), 50, context.get(), [&](const HttpReply&) { ++calls; });
        QTRY_VERIFY(!server.request.isEmpty());
        context.reset();
        QTest::qWait(150);
        QCOMPARE(calls, 0);
    }
};

QTEST_GUILESS_MAIN(TestHttp)
#include "tst_platform_http.moc"
