// The browser bridge's own input: how frames are cut, and what the program's
// socket does with a host that sends rubbish.
#include "LocalBrowserTabs.h"
#include "NativeFrames.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalSocket>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace velmora;
using Status = frames::FrameReader::Status;

namespace {

QByteArray header(quint32 length)
{
    return QByteArray(reinterpret_cast<const char*>(&length), sizeof length);
}

QByteArray frame(const char* json)
{
    return frames::encode(QByteArray(json));
}

} // namespace

class TestBrowserBridge : public QObject
{
    Q_OBJECT

    QTemporaryDir m_runtime;
    LocalBrowserTabs* m_tabs = nullptr;
    QStringList m_log;

    QLocalSocket* connectHost(const char* browser = "chromium")
    {
        auto* socket = new QLocalSocket(this);
        socket->connectToServer(m_tabs->socketPath());
        if (!socket->waitForConnected(2000))
            return nullptr;
        socket->write(frames::encode(QByteArray("{\"kind\":\"host\",\"browser\":\"") + browser + "\"}"));
        return socket;
    }
    bool logged(const QString& part) const
    {
        return std::any_of(m_log.cbegin(), m_log.cend(),
                           [&](const QString& line) { return line.contains(part); });
    }

private Q_SLOTS:
    void cuttingFrames_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("frames");
        QTest::addColumn<int>("last"); // Status after the frames

        QTest::newRow("one frame") << frame("{\"a\":1}") << 1 << int(Status::NeedMore);
        QTest::newRow("two in one read") << frame("{}") + frame("[]") << 2 << int(Status::NeedMore);
        QTest::newRow("half a length") << QByteArray("\x05\x00", 2) << 0 << int(Status::NeedMore);
        QTest::newRow("truncated body") << header(10) + "{\"a\"" << 0 << int(Status::NeedMore);
        QTest::newRow("empty frame") << header(0) << 1 << int(Status::NeedMore);
        QTest::newRow("at the limit is no error")
            << header(frames::MaxFrameBytes) << 0 << int(Status::NeedMore);
        QTest::newRow("over the limit") << header(frames::MaxFrameBytes + 1) << 0 << int(Status::Oversized);
        QTest::newRow("good frame then oversized")
            << frame("{}") + header(0xffffffffu) << 1 << int(Status::Oversized);
    }
    void cuttingFrames()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, frames);
        QFETCH(int, last);
        // Whole, and byte by byte: the same frames come out.
        for (const bool trickle : {false, true}) {
            frames::FrameReader reader;
            int count = 0;
            Status status = Status::NeedMore;
            QByteArray out;
            for (qsizetype i = 0; i < bytes.size(); i += trickle ? 1 : bytes.size()) {
                reader.feed(bytes.mid(i, trickle ? 1 : bytes.size()));
                while ((status = reader.next(&out)) == Status::Frame)
                    ++count;
                if (status == Status::Oversized)
                    break;
            }
            QCOMPARE(count, frames);
            QCOMPARE(int(status), last);
        }
    }

    void parsingMessages_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("object") << QByteArray("{\"kind\":\"tab\"}") << true;
        QTest::newRow("array") << QByteArray("[1,2]") << false;
        QTest::newRow("not JSON") << QByteArray("<html>") << false;
        QTest::newRow("cut short") << QByteArray("{\"kind\":") << false;
        QTest::newRow("not UTF-8") << QByteArray("{\"k\":\"\xff\xfe\"}") << false;
        QTest::newRow("empty") << QByteArray() << false;
    }
    void parsingMessages()
    {
        QFETCH(QByteArray, json);
        QFETCH(bool, accepted);
        QCOMPARE(frames::parse(json).has_value(), accepted);
    }

    void randomBytesNeverYieldMoreThanTheLimit()
    {
        QRandomGenerator random(9);
        for (int round = 0; round < 200; ++round) {
            frames::FrameReader reader(64);
            QByteArray bytes(int(random.bounded(300)), Qt::Uninitialized);
            for (char& c : bytes)
                c = char(random.bounded(256));
            reader.feed(bytes);
            QByteArray out;
            Status status;
            while ((status = reader.next(&out)) == Status::Frame) {
                QVERIFY(out.size() <= 64);
                frames::parse(out);
            }
        }
    }

    void init()
    {
        m_log.clear();
        m_tabs = new LocalBrowserTabs(this);
        m_tabs->setLog([this](const QString& line) { m_log << line; });
        m_tabs->setLimits(5, 200);
        QVERIFY(m_tabs->listen(m_runtime.path()));
    }
    void cleanup() { delete m_tabs; }

    void socketIsPrivate()
    {
        QCOMPARE(QFileInfo(m_runtime.path() + QStringLiteral("/velmora")).permissions() & 0x0077, 0);
    }

    void tabReportsAndBlockOrders()
    {
        QSignalSpy changed(m_tabs, &BrowserTabs::tabChanged);
        QLocalSocket* host = connectHost();
        QVERIFY(host);
        host->write(frame("{\"kind\":\"tab\",\"event\":\"before\",\"tab\":7,\"url\":\"https://a.test/"
                          "\",\"active\":true,\"focused\":true}"));
        QTRY_COMPARE(changed.size(), 1);
        QCOMPARE(m_tabs->connectedBrowsers(), QStringList{"chromium"});
        QCOMPARE(m_tabs->focusedBrowser(), QStringLiteral("chromium"));
        QCOMPARE(m_tabs->activeTab(QStringLiteral("chromium"))->address, QStringLiteral("https://a.test/"));
        m_tabs->showBlockPage({QStringLiteral("chromium"), 7, {}}, QStringLiteral("?old_url=<b>"));
        QTRY_VERIFY(host->bytesAvailable() > 4);
        frames::FrameReader reader;
        reader.feed(host->readAll());
        QByteArray order;
        QCOMPARE(reader.next(&order), Status::Frame);
        QCOMPARE(frames::parse(order)->value(QStringLiteral("query")).toString(),
                 QStringLiteral("?old_url=<b>"));
    }

    void badInputIsRefusedAndTheConnectionStays_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("logLine");
        QTest::newRow("not JSON") << frame("<script>") << "not a JSON object";
        QTest::newRow("unknown kind") << frame("{\"kind\":\"exec\"}") << "unknown kind";
        QTest::newRow("tab without address")
            << frame("{\"kind\":\"tab\",\"tab\":1}") << "without a tab or an address";
        QTest::newRow("second announcement")
            << frame("{\"kind\":\"host\",\"browser\":\"firefox\"}") << "refused a host announcement";
        QTest::newRow("flood") << frame("{}").repeated(8) << "too many messages";
    }
    void badInputIsRefusedAndTheConnectionStays()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, logLine);
        QLocalSocket* host = connectHost();
        QVERIFY(host);
        host->write(bytes);
        QTRY_VERIFY(logged(logLine));
        QCOMPARE(host->state(), QLocalSocket::ConnectedState);
        QCOMPARE(m_tabs->connectedBrowsers(), QStringList{"chromium"});
    }

    void brokenStreamsAreClosed_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("logLine");
        QTest::newRow("oversized") << header(frames::MaxFrameBytes + 1) << "over the size limit";
        QTest::newRow("hangs half-way") << header(100) + "{"
                                        << "half-sent";
    }
    void brokenStreamsAreClosed()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, logLine);
        QLocalSocket* host = connectHost();
        QVERIFY(host);
        QTRY_COMPARE(m_tabs->connectedBrowsers().size(), 1);
        host->write(bytes);
        QTRY_VERIFY(logged(logLine));
        QTRY_COMPARE(host->state(), QLocalSocket::UnconnectedState);
        QVERIFY(m_tabs->connectedBrowsers().isEmpty());
    }

    void messagesBeforeTheHostSaidWhichBrowserAreRefused()
    {
        auto* socket = new QLocalSocket(this);
        socket->connectToServer(m_tabs->socketPath());
        QVERIFY(socket->waitForConnected(2000));
        socket->write(frame("{\"kind\":\"tab\",\"tab\":1,\"url\":\"https://a.test/\"}"));
        QTRY_VERIFY(logged(QStringLiteral("before the host said")));
    }

    void manifestsGoWhereBrowsersLook()
    {
        QTemporaryDir home;
        QDir(home.path()).mkpath(QStringLiteral(".config/chromium"));
        QDir(home.path()).mkpath(QStringLiteral(".mozilla"));
        m_tabs->writeHostManifests(home.path(), QStringLiteral("/opt/velmora/velmora-browser-host"));
        QFile chromium(home.path() +
                       QStringLiteral("/.config/chromium/NativeMessagingHosts/app.velmora.host.json"));
        QFile firefox(home.path() + QStringLiteral("/.mozilla/native-messaging-hosts/app.velmora.host.json"));
        QVERIFY(chromium.open(QIODevice::ReadOnly) && firefox.open(QIODevice::ReadOnly));
        const QJsonObject c = QJsonDocument::fromJson(chromium.readAll()).object();
        const QJsonObject f = QJsonDocument::fromJson(firefox.readAll()).object();
        QCOMPARE(c.value(QStringLiteral("allowed_origins")).toArray().first().toString(),
                 QStringLiteral("chrome-extension://lhpgjbdeclclangdcipdeabmekkljheh/"));
        QCOMPARE(f.value(QStringLiteral("allowed_extensions")).toArray().first().toString(),
                 QStringLiteral("focus@velmora.app"));
        QCOMPARE(f.value(QStringLiteral("path")).toString(),
                 QStringLiteral("/opt/velmora/velmora-browser-host"));
        QVERIFY(!QFileInfo::exists(home.path() + QStringLiteral("/.config/google-chrome")));
    }
};

QTEST_MAIN(TestBrowserBridge)
#include "tst_platform_browsertabs.moc"
