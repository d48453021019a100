// The browser bridge's own input: how frames are cut, and what the program's
// socket does with a host that sends rubbish.
#include "LocalBrowserTabs.h"
#include "NativeFrames.h"

#include <QLocalSocket>
#include <QTemporaryDir>
#include <QtTest>

using namespace velmora;
using namespace Qt::StringLiterals;
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
        QTest::addColumn<int>("skipped"); // over the reader's limit of 16 bytes

        QTest::newRow("one frame") << frame("{\"a\":1}") << 1 << 0;
        QTest::newRow("two in one read") << frame("{}") + frame("[]") << 2 << 0;
        QTest::newRow("empty frame") << header(0) << 1 << 0;
        QTest::newRow("at the limit is no error") << frame(QByteArray(16, 'x')) << 1 << 0;
        QTest::newRow("oversized is skipped, the next is read")
            << frame(QByteArray(17, 'x')) + frame("{}") << 1 << 1;
        QTest::newRow("good frame then a huge one") << frame("{}") + header(0xffffffffu) + "abc" << 1 << 1;
    }
    void cuttingFrames()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, frames);
        QFETCH(int, skipped);
        // Whole, and byte by byte: the same frames come out.
        for (const bool trickle : {false, true}) {
            frames::FrameReader reader(16);
            int count = 0;
            int over = 0;
            QByteArray out;
            for (qsizetype i = 0; i < bytes.size(); i += trickle ? 1 : bytes.size()) {
                reader.feed(bytes.mid(i, trickle ? 1 : bytes.size()));
                for (Status status; (status = reader.next(&out)) != Status::NeedMore;)
                    ++(status == Status::Frame ? count : over);
            }
            QCOMPARE(count, frames);
            QCOMPARE(over, skipped);
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
        QCOMPARE(QFileInfo(m_runtime.path() + u"/velmora"_s).permissions() & 0x0077, 0);
    }

    void badInputIsRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("logLine");
        QTest::addColumn<bool>("closed"); // the stream cannot be trusted any more
        QTest::newRow("not JSON") << frame("<script>") << "not a JSON object" << false;
        QTest::newRow("second announcement")
            << frame("{\"kind\":\"host\",\"browser\":\"firefox\"}") << "refused a host announcement" << false;
        QTest::newRow("flood") << frame("{}").repeated(8) << "too many messages" << false;
        QTest::newRow("oversized") << header(frames::MaxFrameBytes + 1) << "over the size limit" << false;
        QTest::newRow("hangs half-way") << header(100) + "{"
                                        << "half-sent" << true;
    }
    void badInputIsRefused()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, logLine);
        QFETCH(bool, closed);
        QLocalSocket* host = connectHost();
        QVERIFY(host);
        QTRY_COMPARE(m_tabs->connectedBrowsers().size(), 1);
        host->write(bytes);
        QTRY_VERIFY(logged(logLine));
        QTRY_COMPARE(host->state(), closed ? QLocalSocket::UnconnectedState : QLocalSocket::ConnectedState);
        QCOMPARE(m_tabs->connectedBrowsers().size(), closed ? 0 : 1);
    }

    // Where the manifests go and what they allow, the browser tests show with real
    // browsers; here a browser that is not installed gets no folder of ours.
    void noManifestForABrowserNotInstalled()
    {
        QTemporaryDir home;
        QDir(home.path()).mkpath(u".mozilla"_s);
        m_tabs->writeHostManifests(home.path(), home.path() + u"/.config"_s, u"/opt/velmora/host"_s);
        QVERIFY(QFileInfo::exists(home.path() + u"/.mozilla/native-messaging-hosts/app.velmora.host.json"_s));
        QVERIFY(!QFileInfo::exists(home.path() + u"/.config/google-chrome"_s));
        QVERIFY(!QFileInfo::exists(home.path() + u"/.config/chromium"_s));
    }

    // An installed package's manifest wins: no user copy, and an earlier one goes.
    void systemManifestReplacesTheUsersCopy()
    {
        QTemporaryDir home, root;
        const QString user = home.path() + u"/.config/chromium/NativeMessagingHosts/app.velmora.host.json"_s;
        QDir().mkpath(QFileInfo(user).path());
        QFile(user).open(QIODevice::WriteOnly);
        QDir().mkpath(root.path() + u"/etc/chromium/native-messaging-hosts"_s);
        QFile(root.path() + u"/etc/chromium/native-messaging-hosts/app.velmora.host.json"_s)
            .open(QIODevice::WriteOnly);
        m_tabs->setSystemRoot(root.path());
        m_tabs->writeHostManifests(home.path(), home.path() + u"/.config"_s, u"/opt/velmora/host"_s);
        QVERIFY(!QFileInfo::exists(user));
    }
};

QTEST_MAIN(TestBrowserBridge)
#include "tst_platform_browsertabs.moc"
