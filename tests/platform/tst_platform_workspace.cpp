// The desktop-entry index behind the X11 workspace: how a window and a name in a
// settings document find their application.
#include "DesktopEntries.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace velmora;

class TestWorkspaceEntries : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_home;
    QTemporaryDir m_system;

    static void write(const QString& path, const QByteArray& body)
    {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Desktop Entry]\nType=Application\n" + body);
    }
    QString user(const QString& file) const
    {
        return m_home.filePath(QStringLiteral("applications/") + file);
    }
    QString system(const QString& file) const
    {
        return m_system.filePath(QStringLiteral("applications/") + file);
    }

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_home.path()));
        qputenv("XDG_DATA_DIRS", QFile::encodeName(m_system.path()));
        write(system(QStringLiteral("org.example.Editor.desktop")), "Name=Text Editor\nExec=/bin/true\n");
        write(system(QStringLiteral("kde-viewer.desktop")), "Name=Viewer\nExec=ls\n");
        write(system(QStringLiteral("chromium.desktop")),
              "Name=Chromium\nExec=chromium %U\nStartupWMClass=chromium\n");
        write(system(QStringLiteral("google-chrome.desktop")), "Name=Google Chrome\nExec=cat\n");
        write(system(QStringLiteral("shell-a.desktop")), "Name=A\nExec=/bin/sh -c a\n");
        write(system(QStringLiteral("shell-b.desktop")), "Name=B\nExec=/bin/sh -c b\n");
        write(system(QStringLiteral("hidden-tool.desktop")), "Name=Hidden Tool\nExec=cat\nNoDisplay=true\n");
        write(system(QStringLiteral("removed.desktop")), "Name=Removed\nExec=cat\n");
        // The user's own copies outrank the system's.
        write(user(QStringLiteral("removed.desktop")), "Name=Removed\nExec=cat\nHidden=true\n");
        write(user(QStringLiteral("google-chrome.desktop")), "Name=My Chrome\nExec=cat\n");
    }

    void windowToApplication_data()
    {
        QTest::addColumn<QString>("gtk");
        QTest::addColumn<QString>("kde");
        QTest::addColumn<QString>("instance");
        QTest::addColumn<QString>("windowClass");
        QTest::addColumn<QString>("executable");
        QTest::addColumn<QString>("name");

        QTest::newRow("toolkit id first") << "org.example.Editor"
                                          << ""
                                          << "chromium"
                                          << "Chromium"
                                          << ""
                                          << "org.example.editor";
        QTest::newRow("kde desktop file") << ""
                                          << "kde-viewer"
                                          << "x"
                                          << "X"
                                          << ""
                                          << "kde-viewer";
        QTest::newRow("StartupWMClass, any case") << ""
                                                  << ""
                                                  << "chromium-browser"
                                                  << "CHROMIUM"
                                                  << ""
                                                  << "chromium";
        QTest::newRow("id equals the instance") << ""
                                                << ""
                                                << "google-chrome"
                                                << "Google-chrome-x"
                                                << ""
                                                << "google-chrome";
        QTest::newRow("program of one entry")
            << ""
            << ""
            << "ed"
            << "Ed" << QFileInfo(QStringLiteral("/bin/true")).canonicalFilePath() << "org.example.editor";
        QTest::newRow("program of two entries names nothing")
            << ""
            << ""
            << "sh"
            << "Sh" << QFileInfo(QStringLiteral("/bin/sh")).canonicalFilePath() << "sh";
        QTest::newRow("no entry: lower-cased class") << ""
                                                     << ""
                                                     << "xterm"
                                                     << "XTerm"
                                                     << ""
                                                     << "xterm";
        QTest::newRow("a hidden entry masks the system's") << ""
                                                           << ""
                                                           << "removed"
                                                           << "Removed"
                                                           << ""
                                                           << "removed";
    }
    void windowToApplication()
    {
        QFETCH(QString, gtk);
        QFETCH(QString, kde);
        QFETCH(QString, instance);
        QFETCH(QString, windowClass);
        QFETCH(QString, executable);
        QFETCH(QString, name);
        DesktopEntries entries;
        const Application app = entries.applicationForWindow({gtk, kde, instance, windowClass, executable});
        QCOMPARE(app.name, name);
    }

    void nameToApplication_data()
    {
        QTest::addColumn<QString>("asked");
        QTest::addColumn<QString>("name");
        QTest::newRow("full path") << system(QStringLiteral("chromium.desktop")) << "chromium";
        QTest::newRow("id, any case") << "Chromium"
                                      << "chromium";
        QTest::newRow("shown name") << "Text Editor"
                                    << "org.example.editor";
        QTest::newRow("shown name as hyphens") << "Google Chrome"
                                               << "google-chrome";
        QTest::newRow("extension not stripped") << "chromium.desktop"
                                                << "";
        QTest::newRow("unknown") << "Safari"
                                 << "";
        QTest::newRow("path of a missing file") << "/nowhere/app.desktop"
                                                << "";
    }
    void nameToApplication()
    {
        QFETCH(QString, asked);
        QFETCH(QString, name);
        DesktopEntries entries;
        QCOMPARE(entries.applicationFor(asked).name, name);
    }

    void installedAreMenuEntriesByName()
    {
        DesktopEntries entries;
        QStringList shown;
        for (const Application& app : entries.installed())
            shown << app.displayName;
        QCOMPARE(shown, (QStringList{"A", "B", "Chromium", "My Chrome", "Text Editor", "Viewer"}));
    }

    void anEntryInstalledWhileRunningIsFound()
    {
        DesktopEntries entries;
        QVERIFY(!entries.applicationFor(QStringLiteral("newcomer")).isValid());
        write(user(QStringLiteral("tools/newcomer.desktop")), "Name=Newcomer\nExec=cat\n");
        QTRY_COMPARE(entries.applicationFor(QStringLiteral("tools-newcomer")).displayName,
                     QStringLiteral("Newcomer"));
    }
};

QTEST_MAIN(TestWorkspaceEntries)
#include "tst_platform_workspace.moc"
