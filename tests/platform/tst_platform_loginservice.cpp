#include "SystemdLoginService.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

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
    const QByteArray m_originalPath = qgetenv("PATH");

    QString path(const QString& relative) const { return m_dir.filePath(relative); }
    QStringList systemctlCalls() const { return contents(path(u"calls"_s)).split(u'\n', Qt::SkipEmptyParts); }

private Q_SLOTS:
    // Only a fake systemctl can be found: it records its arguments and, asked for the
    // state of the user manager, prints $FAKE_SYSTEMD_STATE.
    void init()
    {
        QDir(m_dir.path()).removeRecursively();
        QDir().mkpath(path(u"run"_s));
        QDir().mkpath(path(u"bin"_s));
        QFile script(path(u"bin/systemctl"_s));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\necho \"$*\" >>\"$FAKE_SYSTEMCTL_CALLS\"\n"
                     "case \"$*\" in *is-system-running*) echo \"$FAKE_SYSTEMD_STATE\" ;; esac\n");
        script.close();
        script.setPermissions(script.permissions() | QFile::ExeOwner);
        qputenv("PATH", QFile::encodeName(path(u"bin"_s)));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(path(u"config"_s)));
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(path(u"run"_s)));
        qputenv("FAKE_SYSTEMCTL_CALLS", QFile::encodeName(path(u"calls"_s)));
        qputenv("FAKE_SYSTEMD_STATE", "");
    }

    void cleanupTestCase() { qputenv("PATH", m_originalPath); }

    // Spaces, a specifier and a variable in the program's path reach systemd unharmed, and
    // so does the configuration server this copy was given.
    void installWritesTheUnit()
    {
        const QString unit = path(u"config/systemd/user/velmora.service"_s);
        QVERIFY(SystemdLoginService(u"/opt/My Apps/100%/$v/velmora"_s, QUrl(u"http://h:8/a b%"_s)).install());
        QCOMPARE(SystemdLoginService::unitFilePath(), unit);
        QCOMPARE(contents(unit), uR"([Unit]
Description=Velmora
PartOf=graphical-session.target
After=graphical-session.target
StartLimitIntervalSec=0
ConditionFileIsExecutable=%2

[Service]
ExecStart=%1 --config-server http://h:8/a%%20b%%25
Restart=always
RestartSec=1
RestartPreventExitStatus=64

[Install]
WantedBy=graphical-session.target
)"_s.arg(u"\"/opt/My Apps/100%%/$$v/velmora\""_s, u"/opt/My Apps/100%%/$v/velmora"_s));
        QVERIFY(contents(SystemdLoginService::autostartFilePath())
                    .contains(u"\" --config-server http://h:8/a%%20b%%25\n"_s));
    }

    // The autostart entry is always written; a user manager that answers is given the
    // display and starts the unit, so that the copy outside it can end.
    void autostartAlwaysAndHandOverToAUserManager_data()
    {
        QTest::addColumn<bool>("runtimeDir");
        QTest::addColumn<QByteArray>("state"); // "-": no systemctl at all
        QTest::addColumn<bool>("handsOver");

        QTest::newRow("manager's runtime folder") << true << ""_ba << true;
        QTest::newRow("manager answers degraded") << false << "degraded"_ba << true;
        QTest::newRow("no answer") << false << ""_ba << false;
        QTest::newRow("no systemctl") << false << "-"_ba << false;
    }

    void autostartAlwaysAndHandOverToAUserManager()
    {
        QFETCH(bool, runtimeDir);
        QFETCH(QByteArray, state);
        QFETCH(bool, handsOver);

        if (runtimeDir)
            QDir().mkpath(path(u"run/systemd"_s));
        if (state == "-")
            qputenv("PATH", "/nonexistent");
        qputenv("FAKE_SYSTEMD_STATE", state);

        SystemdLoginService service(u"/opt/My Apps/velmora"_s);
        QVERIFY(service.install());
        QCOMPARE(contents(SystemdLoginService::autostartFilePath()), uR"([Desktop Entry]
Type=Application
Name=Velmora
Exec="/opt/My Apps/velmora"
X-GNOME-Autostart-enabled=true
NoDisplay=true
)"_s);
        QCOMPARE(service.handOverToUserManager(), handsOver);
        const QStringList calls = systemctlCalls();
        QCOMPARE(calls.contains(u"--user start velmora.service"_s), handsOver);
        QCOMPARE(calls.contains(
                     u"--user import-environment DISPLAY XAUTHORITY WAYLAND_DISPLAY XDG_CURRENT_DESKTOP"_s),
                 handsOver);
    }

    void enableAndDisable()
    {
        qputenv("FAKE_SYSTEMD_STATE", "offline");
        SystemdLoginService service(u"/usr/bin/velmora"_s);
        QVERIFY(service.install());
        QFile::remove(path(u"calls"_s));

        service.enable();
        QCOMPARE(systemctlCalls(),
                 (QStringList{u"--user daemon-reload"_s, u"--user enable velmora.service"_s}));
        QFile::remove(path(u"calls"_s));
        service.disable();
        QCOMPARE(systemctlCalls(), QStringList{u"--user disable velmora.service"_s});
        // The next login starts the program again, which enables the unit again.
        QVERIFY(QFile::exists(SystemdLoginService::autostartFilePath()));
    }
};

QTEST_GUILESS_MAIN(TestLoginService)
#include "tst_platform_loginservice.moc"
