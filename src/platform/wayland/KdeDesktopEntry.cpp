#include "KdeDesktopEntry.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

namespace velmora {

static const QString kInterfaces = QStringLiteral("org_kde_plasma_window_management");

static QString entryFor(const QString& executable)
{
    return QStringLiteral("[Desktop Entry]\n"
                          "Type=Application\n"
                          "Name=Velmora\n"
                          "Exec=%1\n"
                          "NoDisplay=true\n"
                          "X-KDE-Wayland-Interfaces=%2\n")
        .arg(executable, kInterfaces);
}

// The program an entry's Exec starts, without its arguments.
static QString execProgram(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    bool inMain = false;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.startsWith(QLatin1Char('[')))
            inMain = line == QLatin1String("[Desktop Entry]");
        else if (inMain && line.startsWith(QLatin1String("Exec=")))
            return line.mid(5).section(QLatin1Char(' '), 0, 0);
    }
    return {};
}

QString ensureKdeDesktopEntry(const QString& executable, const QStringList& folders)
{
    if (folders.isEmpty())
        return QStringLiteral("No applications folder for our desktop entry");
    for (const QString& folder : folders) {
        const QStringList entries = QDir(folder).entryList({QStringLiteral("velmora*.desktop")}, QDir::Files);
        for (const QString& name : entries) {
            if (execProgram(folder + QLatin1Char('/') + name) == executable)
                return QStringLiteral("Desktop entry %1/%2 names this program").arg(folder, name);
        }
    }
    // Not velmora.desktop: that id belongs to the installed program, whose entry
    // this one must not hide.
    const QString path = folders.first() + QStringLiteral("/velmora-unpackaged.desktop");
    QDir().mkpath(folders.first());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(entryFor(executable).toUtf8()) < 0 || !file.commit())
        return QStringLiteral("Could not write the desktop entry %1").arg(path);
    return QStringLiteral("Wrote the desktop entry %1 for KWin's window list").arg(path);
}

} // namespace velmora
