#include "DesktopEntries.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QSet>
#include <QStandardPaths>

#include <algorithm>
#include <gio/gdesktopappinfo.h>

namespace velmora {

namespace {

QString fromUtf8(const char* text)
{
    return text ? QString::fromUtf8(text) : QString();
}

// The Exec program as a full, resolved path; empty when it is not installed.
QString resolvedProgram(GAppInfo* info)
{
    const char* executable = g_app_info_get_executable(info);
    if (!executable || !*executable)
        return {};
    char* found = g_find_program_in_path(executable);
    if (!found)
        return {};
    const QString path = QFileInfo(QString::fromLocal8Bit(found)).canonicalFilePath();
    g_free(found);
    return path;
}

QString idFromRelativePath(const QString& relative)
{
    QString id = relative;
    id.replace(u'/', u'-');
    id.chop(int(qstrlen(".desktop")));
    return id.toLower();
}

} // namespace

DesktopEntries::DesktopEntries(QObject* parent)
    : QObject(parent)
{
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, [this] { m_stale = true; });
}

QStringList DesktopEntries::applicationFolders()
{
    QStringList folders;
    for (const QString& data : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation))
        folders << QDir::cleanPath(data + QStringLiteral("/applications"));
    folders.removeDuplicates();
    return folders;
}

void DesktopEntries::ensureFresh()
{
    if (m_stale)
        rebuild();
}

void DesktopEntries::rebuild()
{
    m_stale = false;
    m_entries.clear();
    m_byId.clear();
    m_byFile.clear();
    const QStringList folders = applicationFolders();
    // An id seen in a more important folder hides the same id further down, even
    // when that entry is hidden or broken: that is how a user removes one.
    QSet<QString> seen;
    QStringList watched;
    const QString own =
        QDir::cleanPath(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                        QStringLiteral("/applications"));
    for (const QString& folder : folders) {
        const QDir root(folder);
        if (!root.exists()) {
            const QString parent = QFileInfo(folder).absolutePath();
            if (QFileInfo(parent).isDir())
                watched << parent; // to notice the folder being made
            continue;
        }
        watched << folder;
        QDirIterator it(folder, {QStringLiteral("*.desktop")}, QDir::Files,
                        QDirIterator::Subdirectories | QDirIterator::FollowSymlinks);
        while (it.hasNext()) {
            const QString file = it.next();
            const QString id = idFromRelativePath(root.relativeFilePath(file));
            if (seen.contains(id))
                continue;
            seen.insert(id);
            GDesktopAppInfo* info = g_desktop_app_info_new_from_filename(QFile::encodeName(file).constData());
            if (!info)
                continue;
            if (g_desktop_app_info_get_is_hidden(info)) {
                g_object_unref(info);
                continue;
            }
            GAppInfo* app = G_APP_INFO(info);
            Entry entry;
            entry.application.name = id;
            entry.application.displayName = fromUtf8(g_app_info_get_name(app));
            entry.application.desktopFile = QFileInfo(file).absoluteFilePath();
            if (GIcon* icon = g_app_info_get_icon(app); icon && G_IS_THEMED_ICON(icon)) {
                const gchar* const* names = g_themed_icon_get_names(G_THEMED_ICON(icon));
                if (names && names[0])
                    entry.application.iconName = QString::fromUtf8(names[0]);
            }
            entry.startupWmClass = fromUtf8(g_desktop_app_info_get_startup_wm_class(info));
            entry.executable = resolvedProgram(app);
            entry.shownInMenus = g_app_info_should_show(app);
            entry.userOwned = folder == own;
            const QStringList categories =
                fromUtf8(g_desktop_app_info_get_categories(info)).split(u';', Qt::SkipEmptyParts);
            entry.application.webBrowser = categories.contains(QStringLiteral("WebBrowser"));
            g_object_unref(info);
            m_byId.insert(id, int(m_entries.size()));
            m_byFile.insert(entry.application.desktopFile, int(m_entries.size()));
            m_entries.append(entry);
        }
        QDirIterator dirs(folder, QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
        while (dirs.hasNext())
            watched << dirs.next();
    }
    watch(watched);
}

void DesktopEntries::watch(const QStringList& folders)
{
    const QStringList old = m_watcher.directories();
    if (!old.isEmpty())
        m_watcher.removePaths(old);
    if (!folders.isEmpty())
        m_watcher.addPaths(folders);
}

const DesktopEntries::Entry* DesktopEntries::byId(const QString& id) const
{
    const auto it = m_byId.constFind(id.toLower());
    return it == m_byId.cend() ? nullptr : &m_entries.at(*it);
}

// Where the window system tells no process (the Wayland window lists), there is
// no program to hold the entry to: the window's own claim is all there is.
bool DesktopEntries::mayName(const Entry& entry, const WindowFacts& window)
{
    return !entry.userOwned || window.processUnknown ||
           (!window.executable.isEmpty() && entry.executable == window.executable);
}

Application DesktopEntries::applicationForWindow(const WindowFacts& window)
{
    ensureFresh();
    for (const QString& toolkitId : {window.gtkApplicationId, window.kdeDesktopFile}) {
        QString id = toolkitId;
        if (id.endsWith(QStringLiteral(".desktop")))
            id.chop(int(qstrlen(".desktop")));
        if (const Entry* entry = id.isEmpty() ? nullptr : byId(id); entry && mayName(*entry, window))
            return entry->application;
    }
    if (!window.wmClass.isEmpty()) {
        for (const Entry& entry : std::as_const(m_entries)) {
            if (entry.startupWmClass.compare(window.wmClass, Qt::CaseInsensitive) == 0 &&
                mayName(entry, window))
                return entry.application;
        }
    }
    for (const QString& wm : {window.wmInstance, window.wmClass}) {
        if (const Entry* entry = wm.isEmpty() ? nullptr : byId(wm); entry && mayName(*entry, window))
            return entry->application;
    }
    if (!window.executable.isEmpty()) {
        // Only a program that belongs to one entry names it: an interpreter or a
        // sandbox launcher runs many.
        const Entry* match = nullptr;
        int count = 0;
        for (const Entry& entry : std::as_const(m_entries)) {
            if (entry.executable == window.executable) {
                match = &entry;
                ++count;
            }
        }
        if (count == 1)
            return match->application;
    }
    Application unnamed;
    const QString named = window.wmClass.isEmpty() ? QFileInfo(window.executable).fileName() : window.wmClass;
    unnamed.name = named.toLower();
    unnamed.displayName = named;
    return unnamed;
}

Application DesktopEntries::applicationFor(const QString& desktopFileOrName)
{
    ensureFresh();
    if (desktopFileOrName.isEmpty())
        return {};
    if (QDir::isAbsolutePath(desktopFileOrName)) {
        const auto it = m_byFile.constFind(QFileInfo(desktopFileOrName).absoluteFilePath());
        if (it != m_byFile.cend())
            return m_entries.at(*it).application;
        // An entry outside the data folders (a focus type written elsewhere) is
        // still named by its file.
        const QFileInfo file(desktopFileOrName);
        if (!file.isFile() || file.suffix() != QStringLiteral("desktop"))
            return {};
        GDesktopAppInfo* info =
            g_desktop_app_info_new_from_filename(QFile::encodeName(file.filePath()).constData());
        if (!info)
            return {};
        Application outside;
        outside.name = file.completeBaseName().toLower();
        outside.displayName = fromUtf8(g_app_info_get_name(G_APP_INFO(info)));
        outside.desktopFile = file.absoluteFilePath();
        g_object_unref(info);
        return outside;
    }
    if (const Entry* entry = byId(desktopFileOrName))
        return entry->application;
    for (const Entry& entry : std::as_const(m_entries)) {
        if (entry.application.displayName.compare(desktopFileOrName, Qt::CaseInsensitive) == 0)
            return entry.application;
    }
    QString hyphenated = desktopFileOrName;
    hyphenated.replace(u' ', u'-');
    if (const Entry* entry = byId(hyphenated))
        return entry->application;
    return {};
}

QList<Application> DesktopEntries::installed()
{
    ensureFresh();
    QList<Application> shown;
    for (const Entry& entry : std::as_const(m_entries)) {
        if (entry.shownInMenus)
            shown << entry.application;
    }
    std::sort(shown.begin(), shown.end(), [](const Application& a, const Application& b) {
        return a.displayName.localeAwareCompare(b.displayName) < 0;
    });
    return shown;
}

bool DesktopEntries::launch(const Application& application, QString* error)
{
    if (application.desktopFile.isEmpty()) {
        if (error)
            *error = QStringLiteral("no desktop entry for %1").arg(application.name);
        return false;
    }
    GDesktopAppInfo* info =
        g_desktop_app_info_new_from_filename(QFile::encodeName(application.desktopFile).constData());
    if (!info) {
        if (error)
            *error = QStringLiteral("unreadable desktop entry %1").arg(application.desktopFile);
        return false;
    }
    GAppLaunchContext* context = g_app_launch_context_new();
    GError* failure = nullptr;
    const bool launched = g_app_info_launch(G_APP_INFO(info), nullptr, context, &failure);
    if (!launched && error)
        *error = failure ? QString::fromUtf8(failure->message) : QStringLiteral("launch failed");
    if (failure)
        g_error_free(failure);
    g_object_unref(context);
    g_object_unref(info);
    return launched;
}

} // namespace velmora
