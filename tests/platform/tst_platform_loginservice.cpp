#include "SystemdLoginService.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using velmora::SystemdLoginService;

namespace {

QString contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

class TestLoginService : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QByteArray m_originalPath = qgetenv("PATH");

    QString callLog() const { return m_dir.filePath(u"systemctl.log"_s); }
    QStringList systemctlCalls() const
    {
        return contents(callLog()).split(u'\n', Qt::SkipEmptyParts);
    }

    // A systemctl that records its arguments and, asked for the state of the user
    // manager, prints $FAKE_SYSTEMD_STATE.
    void putFakeSystemctlOnPath(bool present)
    {
        const QString bin = m_dir.filePath(present ? u"bin"_s : u"empty-bin"_s);
        QDir().mkpath(bin);
        if (present) {
            QFile script(bin + u"/systemctl"_s);
            QVERIFY(script.open(QIODevice::WriteOnly));
            script.write("#!/bin/sh\n"
                         "echo \"$*\" >>\"$FAKE_SYSTEMCTL_LOG\"\n"
                         "case \"$*\" in *is-system-running*) echo \"$FAKE_SYSTEMD_STATE\" ;; esac\n");
            script.close();
            script.setPermissions(script.permissions() | QFile::ExeOwner);
        }
        // Only the fake: the machine's own systemctl must never be reached.
        qputenv("PATH", QFile::encodeName(bin) + ":/nonexistent");
    }

private Q_SLOTS:
    void init()
    {
        QDir(m_dir.path()).removeRecursively();
        QDir().mkpath(m_dir.filePath(u"run"_s));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_dir.filePath(u"config"_s)));
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_dir.filePath(u"run"_s)));
        qputenv("FAKE_SYSTEMCTL_LOG", QFile::encodeName(callLog()));
        qunsetenv("FAKE_SYSTEMD_STATE");
        putFakeSystemctlOnPath(true);
    }

    void cleanupTestCase() { qputenv("PATH", m_originalPath); }

    void installWritesTheUnit_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("execStart");

        QTest::newRow("plain path") << u"/usr/bin/velmora"_s << u"/usr/bin/velmora"_s;
        QTest::newRow("spaces, specifier, variable")
            << u"/opt/My Apps/100%/$v/velmora"_s << u"\"/opt/My Apps/100%%/$$v/velmora\""_s;
    }

    void installWritesTheUnit()
    {
        QFETCH(QString, program);
        QFETCH(QString, execStart);

        const QString unit = m_dir.filePath(u"config/systemd/user/velmora.service"_s);
        QDir().mkpath(QFileInfo(unit).absolutePath());
        QFile old(unit);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("[Service]\nExecStart=/old/velmora\nRestart=no\n[Unit]\nDescription=older version, longer text\n");
        old.close();

        SystemdLoginService service(program);
        QVERIFY(service.install());
        QCOMPARE(SystemdLoginService::unitFilePath(), unit);
        QCOMPARE(contents(unit), u"[Unit]\n"
                                 "Description=Velmora\n"
                                 "PartOf=graphical-session.target\n"
                                 "After=graphical-session.target\n"
                                 "StartLimitIntervalSec=0\n"
                                 "\n"
                                 "[Service]\n"
                                 "ExecStart="_s + execStart +
                                     u"\n"
                                     "Restart=always\n"
                                     "RestartSec=1\n"
                                     "RestartPreventExitStatus=64\n"
                                     "\n"
                                     "[Install]\n"
                                     "WantedBy=graphical-session.target\n"_s);
    }

    // The autostart entry is the fallback for sessions without a systemd user manager.
    void autostartOnlyWithoutUserManager_data()
    {
        QTest::addColumn<bool>("runtimeDir");
        QTest::addColumn<bool>("systemctl");
        QTest::addColumn<QString>("state");
        QTest::addColumn<bool>("expectAutostart");

        QTest::newRow("manager's runtime folder") << true << true << QString() << false;
        QTest::newRow("manager answers running") << false << true << u"running"_s << false;
        QTest::newRow("manager answers degraded") << false << true << u"degraded"_s << false;
        QTest::newRow("manager offline") << false << true << u"offline"_s << true;
        QTest::newRow("no answer") << false << true << QString() << true;
        QTest::newRow("no systemctl") << false << false << QString() << true;
    }

    void autostartOnlyWithoutUserManager()
    {
        QFETCH(bool, runtimeDir);
        QFETCH(bool, systemctl);
        QFETCH(QString, state);
        QFETCH(bool, expectAutostart);

        if (runtimeDir)
            QDir().mkpath(m_dir.filePath(u"run/systemd"_s));
        putFakeSystemctlOnPath(systemctl);
        qputenv("FAKE_SYSTEMD_STATE", state.toUtf8());

        SystemdLoginService service(u"/opt/My Apps/velmora"_s);
        QVERIFY(service.install());
        const QString autostart = m_dir.filePath(u"config/autostart/velmora.desktop"_s);
        QCOMPARE(QFile::exists(autostart), expectAutostart);
        if (expectAutostart) {
            QCOMPARE(contents(autostart), u"[Desktop Entry]\n"
                                          "Type=Application\n"
                                          "Name=Velmora\n"
                                          "Exec=\"/opt/My Apps/velmora\"\n"
                                          "X-GNOME-Autostart-enabled=true\n"
                                          "NoDisplay=true\n"_s);
        }
    }

    void enableAndDisable()
    {
        qputenv("FAKE_SYSTEMD_STATE", "offline");
        SystemdLoginService service(u"/usr/bin/velmora"_s);
        QVERIFY(service.install());
        QFile::remove(callLog());

        service.enable();
        QCOMPARE(systemctlCalls(), (QStringList{u"--user daemon-reload"_s, u"--user enable velmora.service"_s}));

        QFile::remove(callLog());
        service.disable();
        QCOMPARE(systemctlCalls(), QStringList{u"--user disable velmora.service"_s});
        QVERIFY(!QFile::exists(SystemdLoginService::autostartFilePath()));
    }
};

QTEST_GUILESS_MAIN(TestLoginService)
#include "tst_platform_loginservice.moc"
