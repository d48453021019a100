#include "KdeDesktopEntry.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace velmora;

// The entry that lets KWin hand over its window list: written only when no entry of
// ours names the running binary, and never over the package's velmora.desktop.
class TstKdeEntry : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void entry_data()
    {
        QTest::addColumn<QString>("packagedExec"); // Exec of the system's velmora.desktop; empty: none
        QTest::addColumn<bool>("written");
        QTest::newRow("no entry anywhere") << QString() << true;
        QTest::newRow("the package names this binary") << QStringLiteral("/opt/bin/velmora --flag") << false;
        QTest::newRow("the package names another binary") << QStringLiteral("/usr/bin/velmora") << true;
    }
    void entry()
    {
        QFETCH(QString, packagedExec);
        QFETCH(bool, written);
        QTemporaryDir home;
        const QString user = home.path() + QStringLiteral("/user");
        const QString system = home.path() + QStringLiteral("/system");
        QDir().mkpath(system);
        const QByteArray packaged = "[Desktop Entry]\nExec=" + packagedExec.toUtf8() + "\n";
        if (!packagedExec.isEmpty()) {
            QFile file(system + QStringLiteral("/velmora.desktop"));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(packaged) > 0);
        }
        ensureKdeDesktopEntry(QStringLiteral("/opt/bin/velmora"), {user, system});

        QFile own(user + QStringLiteral("/velmora-unpackaged.desktop"));
        QCOMPARE(own.exists(), written);
        if (written) {
            QVERIFY(own.open(QIODevice::ReadOnly));
            const QByteArray text = own.readAll();
            QVERIFY(text.contains("\nExec=/opt/bin/velmora\n"));
            QVERIFY(text.contains("\nX-KDE-Wayland-Interfaces=org_kde_plasma_window_management\n"));
        }
        QVERIFY(!QFile::exists(user + QStringLiteral("/velmora.desktop")));
        if (!packagedExec.isEmpty()) {
            QFile file(system + QStringLiteral("/velmora.desktop"));
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(file.readAll(), packaged);
        }
    }
};

QTEST_GUILESS_MAIN(TstKdeEntry)
#include "tst_platform_kdeentry.moc"
