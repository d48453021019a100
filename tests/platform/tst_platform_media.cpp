#include "PulseMediaMonitor.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QElapsedTimer>
#include <QLocalServer>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;
using velmora::PulseMediaMonitor;

struct LoginInhibitor
{
    QString what, who, why, mode;
    uint uid = 0, pid = 0;
};
Q_DECLARE_METATYPE(LoginInhibitor)

QDBusArgument& operator<<(QDBusArgument& argument, const LoginInhibitor& i)
{
    argument.beginStructure();
    argument << i.what << i.who << i.why << i.mode << i.uid << i.pid;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, LoginInhibitor& i)
{
    argument.beginStructure();
    argument >> i.what >> i.who >> i.why >> i.mode >> i.uid >> i.pid;
    argument.endStructure();
    return argument;
}

namespace {

class FakeLogind : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")
public Q_SLOTS:
    QList<LoginInhibitor> ListInhibitors()
    {
        return {{u"sleep:idle"_s, u"zoom"_s, u"call"_s, u"block"_s, 0, 1},
                {u"sleep"_s, u"backup"_s, u"copying"_s, u"delay"_s, 0, 2}};
    }
};

class FakeGnomeSession : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.SessionManager")
public Q_SLOTS:
    QList<QDBusObjectPath> GetInhibitors()
    {
        return {QDBusObjectPath(u"/org/gnome/SessionManager/Inhibitor1"_s),
                QDBusObjectPath(u"/org/gnome/SessionManager/Inhibitor2"_s),
                QDBusObjectPath(u"/org/gnome/SessionManager/Gone"_s)};
    }
};

class FakeGnomeInhibitor : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.SessionManager.Inhibitor")
public:
    FakeGnomeInhibitor(QString appId, uint flags) : m_appId(std::move(appId)), m_flags(flags) {}
public Q_SLOTS:
    QString GetAppId() { return m_appId; }
    uint GetFlags() { return m_flags; }

private:
    QString m_appId;
    uint m_flags;
};

// Answers with the wrong shape: a list of strings instead of pairs.
class FakeKdeAgent : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.Solid.PowerManagement.PolicyAgent")
public Q_SLOTS:
    QStringList ListInhibitions() { return {u"kde-app"_s}; }
};

struct Process
{
    QString pid; // "own" for this test's own process
    QString name;
    QStringList openFiles;
};

} // namespace

Q_DECLARE_METATYPE(Process)

class TestMedia : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QProcess m_bus;

private Q_SLOTS:
    void initTestCase()
    {
        // The inhibitor test brings its own bus; nothing may reach the user's.
        const QString daemon = QStandardPaths::findExecutable(u"dbus-daemon"_s);
        if (daemon.isEmpty()) {
            qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
            qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent");
            return;
        }
        m_bus.start(daemon, {u"--session"_s, u"--nofork"_s, u"--nopidfile"_s, u"--print-address=1"_s,
                             u"--address=unix:path="_s + m_dir.filePath(u"bus"_s)});
        QVERIFY(m_bus.waitForReadyRead(5000));
        const QByteArray address = m_bus.readLine().trimmed();
        // Both buses are this one: the logind fake lives on it too.
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address);
    }

    void cleanupTestCase()
    {
        m_bus.kill();
        m_bus.waitForFinished();
    }

    void camera_data()
    {
        QTest::addColumn<Process>("process");
        QTest::addColumn<bool>("expected");

        const QString own = u"own"_s;
        QTest::newRow("another program's camera")
            << Process{u"4242"_s, u"zoom"_s, {u"/dev/null"_s, u"/dev/video0"_s}} << true;
        QTest::newRow("our own camera") << Process{own, u"velmora"_s, {u"/dev/video0"_s}} << false;
        QTest::newRow("held by pipewire") << Process{u"77"_s, u"pipewire"_s, {u"/dev/video2"_s}} << false;
        QTest::newRow("held by wireplumber") << Process{u"78"_s, u"wireplumber"_s, {u"/dev/video0"_s}} << false;
        QTest::newRow("no video device")
            << Process{u"4242"_s, u"zoom"_s, {u"/dev/snd/pcmC0D0c"_s, u"socket:[8812]"_s}} << false;
        QTest::newRow("not a process") << Process{u"self2"_s, u"zoom"_s, {u"/dev/video0"_s}} << false;
        QTest::newRow("no file table readable") << Process{u"4242"_s, u"zoom"_s, {}} << false;
    }

    void camera()
    {
        QFETCH(Process, process);
        QFETCH(bool, expected);

        QTemporaryDir proc;
        QDir root(proc.path());
        // An ordinary neighbour in every row.
        QVERIFY(root.mkpath(u"1/fd"_s));
        QVERIFY(QFile::link(u"/dev/null"_s, proc.filePath(u"1/fd/0"_s)));

        const QString pid =
            process.pid == u"own" ? QString::number(QCoreApplication::applicationPid()) : process.pid;
        QVERIFY(root.mkpath(pid));
        QFile comm(proc.filePath(pid + u"/comm"_s));
        QVERIFY(comm.open(QIODevice::WriteOnly));
        comm.write(process.name.toUtf8() + '\n');
        comm.close();
        if (!process.openFiles.isEmpty())
            QVERIFY(root.mkpath(pid + u"/fd"_s));
        for (int fd = 0; fd < process.openFiles.size(); ++fd) {
            QVERIFY(QFile::link(process.openFiles[fd], proc.filePath(u"%1/fd/%2"_s.arg(pid).arg(fd + 3))));
        }

        PulseMediaMonitor monitor(proc.path());
        QCOMPARE(monitor.isACameraOn(), expected);
    }

    void micWithoutServerIsOffAtOnce()
    {
        qputenv("PULSE_SERVER", "unix:/nonexistent/pulse/native");
        PulseMediaMonitor monitor;
        QElapsedTimer clock;
        clock.start();
        QVERIFY(!monitor.isMicOn());
        QVERIFY(!monitor.isMicOn());
        QVERIFY2(clock.elapsed() < 500, qPrintable(QString::number(clock.elapsed())));
    }

    // A server that accepts the connection and then says nothing.
    void micWithSilentServerKeepsItsTimeLimit()
    {
        QLocalServer silent;
        QVERIFY(silent.listen(m_dir.filePath(u"pulse-native"_s)));
        qputenv("PULSE_SERVER", "unix:" + QFile::encodeName(silent.fullServerName()));
        PulseMediaMonitor monitor;
        QElapsedTimer clock;
        clock.start();
        QVERIFY(!monitor.isMicOn());
        const qint64 first = clock.restart();
        QVERIFY2(first >= 900 && first < 2000, qPrintable(QString::number(first)));
        // It is not asked again right away.
        QVERIFY(!monitor.isMicOn());
        QVERIFY(clock.elapsed() < 100);
    }

    void inhibitorsFromTheSessionAndLoginManagers()
    {
        if (m_bus.state() != QProcess::Running)
            QSKIP("dbus-daemon is not installed");
        qDBusRegisterMetaType<LoginInhibitor>();
        qDBusRegisterMetaType<QList<LoginInhibitor>>();

        // The fakes answer from their own thread while the monitor waits on this one.
        QThread thread;
        thread.start();
        QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"fakes"_s);
        QVERIFY(bus.isConnected());
        const QList<std::pair<QString, QObject*>> fakes{
            {u"/org/freedesktop/login1"_s, new FakeLogind},
            {u"/org/gnome/SessionManager"_s, new FakeGnomeSession},
            {u"/org/gnome/SessionManager/Inhibitor1"_s, new FakeGnomeInhibitor(u"/usr/bin/teams-for-linux"_s, 8 | 4)},
            {u"/org/gnome/SessionManager/Inhibitor2"_s, new FakeGnomeInhibitor(u"updater"_s, 4)},
            {u"/org/kde/Solid/PowerManagement/PolicyAgent"_s, new FakeKdeAgent},
        };
        for (const auto& [path, fake] : fakes) {
            fake->moveToThread(&thread);
            QVERIFY(bus.registerObject(path, fake, QDBusConnection::ExportAllSlots));
        }
        for (const char* name : {"org.freedesktop.login1", "org.gnome.SessionManager",
                                 "org.kde.Solid.PowerManagement.PolicyAgent"}) {
            QVERIFY(bus.registerService(QString::fromLatin1(name)));
        }

        PulseMediaMonitor monitor;
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(monitor.displaySleepInhibitors(), (QStringList{u"/usr/bin/teams-for-linux"_s, u"zoom"_s}));
        QVERIFY2(clock.elapsed() < 1000, qPrintable(QString::number(clock.elapsed())));

        bus.unregisterObject(u"/"_s, QDBusConnection::UnregisterTree);
        QDBusConnection::disconnectFromBus(u"fakes"_s);
        for (const auto& [path, fake] : fakes)
            fake->deleteLater();
        thread.quit();
        thread.wait();
    }
};

QTEST_GUILESS_MAIN(TestMedia)
#include "tst_platform_media.moc"
