#pragma once

#include "Workspace.h"

#include <QFileSystemWatcher>
#include <QHash>
#include <QObject>
#include <QStringList>
#include <QVector>

namespace velmora {

// What a window tells about the program that made it.
struct WindowFacts
{
    QString gtkApplicationId;    // _GTK_APPLICATION_ID
    QString kdeDesktopFile;      // _KDE_NET_WM_DESKTOP_FILE
    QString wmInstance;          // WM_CLASS, first string
    QString wmClass;             // WM_CLASS, second string
    QString executable;          // /proc/PID/exe, resolved, of the window's real process
    bool processUnknown = false; // the window system does not tell which process made it
};

// The desktop entries of the XDG data folders, indexed by id, file, window class
// and program. The index is built on first use and again after an applications
// folder changes, so that a program installed while we run is known by its name.
class DesktopEntries : public QObject
{
    Q_OBJECT
public:
    struct Entry
    {
        Application application;
        QString startupWmClass;
        QString executable; // the Exec program, resolved through PATH
        bool shownInMenus = false;
        // In the user's own applications folder: anyone at the keyboard can write
        // one, so it names a window only when its program is the window's.
        bool userOwned = false;
    };

    explicit DesktopEntries(QObject* parent = nullptr);

    // The applications folders, most important first ($XDG_DATA_HOME, then
    // $XDG_DATA_DIRS).
    static QStringList applicationFolders();

    // The application of a window, in this order: the id the toolkit set, an entry
    // whose StartupWMClass is the window's class, an entry whose id is the
    // lower-cased instance or class, an entry whose program is the window's.
    // Without an entry the lower-cased class names it, and without a class the
    // program's file name. An entry of the user's own folder found by the window's
    // own claims (its ids and class) counts only when its program is the window's,
    // where the window system tells that program.
    Application applicationForWindow(const WindowFacts& window);
    // By a desktop file's full path, by its id without ".desktop" in any case
    // ("firefox-esr"), by the name shown in menus ("Firefox ESR") or by that name
    // with blanks as hyphens ("Google Chrome" for google-chrome).
    Application applicationFor(const QString& desktopFileOrName);
    QList<Application> installed();
    // Starts the entry's program the way a menu would (field codes, Terminal=).
    bool launch(const Application& application, QString* error);

private:
    void ensureFresh();
    void rebuild();
    void watch(const QStringList& folders);
    const Entry* byId(const QString& id) const;
    static bool mayName(const Entry& entry, const WindowFacts& window);

    QVector<Entry> m_entries;
    QHash<QString, int> m_byId; // lower-cased id without ".desktop"
    QHash<QString, int> m_byFile;
    bool m_stale = true;
    QFileSystemWatcher m_watcher;
};

} // namespace velmora
