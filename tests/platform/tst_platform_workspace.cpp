// The desktop-entry index behind the X11 workspace: how a window and a name in a
// settings document find their application.
#include "DesktopEntries.h"
#include "X11Workspace.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace velmora;
using namespace Qt::StringLiterals;

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
    QString user(const QString& file) const { return m_home.filePath(u"applications/"_s + file); }
    QString system(const QString& file) const { return m_system.filePath(u"applications/"_s + file); }

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_home.path()));
        qputenv("XDG_DATA_DIRS", QFile::encodeName(m_system.path()));
        write(system(u"org.example.Editor.desktop"_s), "Name=Text Editor\nExec=/bin/true\n");
        write(system(u"kde-viewer.desktop"_s), "Name=Viewer\nExec=ls\n");
        // Newer GLib skips an entry whose program is not installed: a program every system has.
        write(system(u"chromium.desktop"_s), "Name=Chromium\nExec=cat %U\nStartupWMClass=chromium\n");
        write(system(u"google-chrome.desktop"_s), "Name=Google Chrome\nExec=cat\n");
        write(system(u"shell-a.desktop"_s), "Name=A\nExec=/bin/sh -c a\n");
        write(system(u"shell-b.desktop"_s), "Name=B\nExec=/bin/sh -c b\n");
        write(system(u"hidden-tool.desktop"_s), "Name=Hidden Tool\nExec=cat\nNoDisplay=true\n");
        write(system(u"removed.desktop"_s), "Name=Removed\nExec=cat\n");
        // The user's own copies outrank the system's.
        write(user(u"removed.desktop"_s), "Name=Removed\nExec=cat\nHidden=true\n");
        write(user(u"google-chrome.desktop"_s), "Name=My Chrome\nExec=cat\n");
        // Entries anyone at the keyboard can write, claiming other programs' windows.
        write(user(u"finder.desktop"_s), "Name=Finder\nExec=cat\nStartupWMClass=Steam\n");
    }

    // A window's names, from the toolkit's own id to the lower-cased class, find one entry.
    void windowToApplication_data()
    {
        QTest::addColumn<WindowFacts>("window");
        QTest::addColumn<QString>("name");
        const auto row = [](const char* name, WindowFacts window, const QString& expected) {
            QTest::newRow(name) << window << expected;
        };
        const QString trueProgram = QFileInfo(u"/bin/true"_s).canonicalFilePath();
        const QString shell = QFileInfo(u"/bin/sh"_s).canonicalFilePath();
        const QString cat = QFileInfo(u"/bin/cat"_s).canonicalFilePath();
        row("toolkit id first", {u"org.example.Editor"_s, {}, u"chromium"_s, u"Chromium"_s, {}},
            u"org.example.editor"_s);
        row("kde desktop file", {{}, u"kde-viewer"_s, u"x"_s, u"X"_s, {}}, u"kde-viewer"_s);
        row("StartupWMClass, any case", {{}, {}, u"chromium-browser"_s, u"CHROMIUM"_s, {}}, u"chromium"_s);
        row("id equals the instance", {{}, {}, u"chromium"_s, u"Chromium-x"_s, {}}, u"chromium"_s);
        row("the user's entry names the window of its own program",
            {{}, {}, u"google-chrome"_s, u"Google-chrome-x"_s, cat}, u"google-chrome"_s);
        row("the user's entry cannot borrow another program's window",
            {{}, {}, u"google-chrome"_s, u"Google-chrome-x"_s, trueProgram}, u"org.example.editor"_s);
        row("the user's StartupWMClass cannot make a window finder", {{}, {}, u"steam"_s, u"Steam"_s, {}},
            u"steam"_s);
        row("nor by the toolkit's id", {u"finder"_s, {}, u"steam"_s, u"Steam"_s, shell}, u"steam"_s);
        row("no WM_CLASS: named by its program", {{}, {}, {}, {}, shell}, QFileInfo(shell).fileName());
        row("program of one entry", {{}, {}, u"ed"_s, u"Ed"_s, trueProgram}, u"org.example.editor"_s);
        row("program of two entries names nothing", {{}, {}, u"sh"_s, u"Sh"_s, shell}, u"sh"_s);
        row("no entry: lower-cased class", {{}, {}, u"xterm"_s, u"XTerm"_s, {}}, u"xterm"_s);
        row("a hidden entry masks the system's", {{}, {}, u"removed"_s, u"Removed"_s, {}}, u"removed"_s);
    }
    void windowToApplication()
    {
        QFETCH(WindowFacts, window);
        QFETCH(QString, name);
        QCOMPARE(DesktopEntries().applicationForWindow(window).name, name);
    }

    // A name in a settings document: a path, an id or the shown name.
    void nameToApplication_data()
    {
        QTest::addColumn<QString>("asked");
        QTest::addColumn<QString>("name");
        const auto row = [](const char* name, const QString& asked, const char* expected) {
            QTest::newRow(name) << asked << QString::fromUtf8(expected);
        };
        row("id, any case", u"Chromium"_s, "chromium");
        row("shown name", u"Text Editor"_s, "org.example.editor");
        row("shown name as hyphens", u"Google Chrome"_s, "google-chrome");
        row("extension not stripped", u"chromium.desktop"_s, "");
        row("unknown", u"Safari"_s, "");
        row("path of a missing file", u"/nowhere/app.desktop"_s, "");
    }
    void nameToApplication()
    {
        QFETCH(QString, asked);
        QFETCH(QString, name);
        QCOMPARE(DesktopEntries().applicationFor(asked).name, name);
    }

    // Which windows are never judged: a window's own claims are checked against the
    // process the X server knows (ours is 10).
    void exemptWindows_data()
    {
        QTest::addColumn<X11Workspace::WindowOwner>("owner");
        QTest::addColumn<bool>("exempt");
        QTest::newRow("ours") << X11Workspace::WindowOwner{10, 10, false, false} << true;
        QTest::newRow("our pid claimed by another program")
            << X11Workspace::WindowOwner{10, 20, false, false} << false;
        QTest::newRow("our pid claimed where the server cannot tell")
            << X11Workspace::WindowOwner{10, 0, false, false} << false;
        QTest::newRow("the desktop's dock") << X11Workspace::WindowOwner{30, 30, true, false} << true;
        QTest::newRow("a program calling one of its windows a dock")
            << X11Workspace::WindowOwner{20, 20, true, true} << false;
    }
    void exemptWindows()
    {
        QFETCH(X11Workspace::WindowOwner, owner);
        QFETCH(bool, exempt);
        QCOMPARE(X11Workspace::isExempt(owner, 10), exempt);
    }

    void anEntryInstalledWhileRunningIsFound()
    {
        DesktopEntries entries;
        QVERIFY(!entries.applicationFor(u"newcomer"_s).isValid());
        write(user(u"tools/newcomer.desktop"_s), "Name=Newcomer\nExec=cat\n");
        QTRY_COMPARE(entries.applicationFor(u"tools-newcomer"_s).displayName, u"Newcomer"_s);
    }
};

QTEST_MAIN(TestWorkspaceEntries)
#include "tst_platform_workspace.moc"
