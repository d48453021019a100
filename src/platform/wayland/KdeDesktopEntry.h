#pragma once

#include <QString>
#include <QStringList>

namespace velmora {

// KWin hands its window list only to a program whose desktop entry asks for it
// (X-KDE-Wayland-Interfaces) and whose Exec is the running binary. An installed
// program has its entry from the package; a program run from elsewhere (a build)
// writes velmora-unpackaged.desktop into the first of FOLDERS (the user's),
// atomically, when no velmora*.desktop in FOLDERS already names EXECUTABLE.
// Answers what it did, for the debug log.
QString ensureKdeDesktopEntry(const QString& executable, const QStringList& folders);

} // namespace velmora
