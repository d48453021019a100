#pragma once

#include "DesktopEntries.h"
#include "HotKeys.h"
#include "LockShield.h"
#include "Workspace.h"

#include <QHash>
#include <QMap>

namespace velmora {

class GnomeShellBus;

// The lock through the extension: it covers every monitor with the shell's own
// shield, keeps our lock windows above it with the keyboard, hides every other
// window and holds the shell's key bindings back while the lock is up.
class GnomeLockShield : public LockShield
{
public:
    explicit GnomeLockShield(GnomeShellBus& bus);
    ~GnomeLockShield() override;
    void prepare(QWidget* window, Surface surface) override;
    void setLockUp(bool up) override;
    void setHoldsKeyboard(bool held) override;
    bool holds() const override { return true; }

private:
    void tellAgain();

    GnomeShellBus& m_bus;
    QMetaObject::Connection m_returned;
    QHash<QString, Surface> m_prepared; // by window title
    bool m_up = false;
    bool m_held = true;
};

// Applications as GNOME Shell sees them: the focused window and its changes come
// from the extension, and so does hiding; the desktop entries, launching and
// addresses are the same as everywhere.
class GnomeWorkspace : public Workspace
{
    Q_OBJECT
public:
    using Facts = QMap<QString, QString>;

    explicit GnomeWorkspace(GnomeShellBus& bus, QObject* parent = nullptr);

    Application frontmostApplication() override;
    void hide(const Application& application) override;
    QStringList runningApplications() override;
    QList<Application> installedApplications() override;
    Application applicationFor(const QString& desktopFileOrName) override;
    bool launch(const Application& application) override;
    bool openUrl(const QString& address) override;

    // The application a window belongs to, by what the shell tells about it;
    // invalid for our own windows.
    Application applicationOf(const Facts& window);

private:
    void frontWindowChanged();
    QList<Facts> windows();

    GnomeShellBus& m_bus;
    DesktopEntries m_entries;
    Application m_front;
    bool m_frontKnown = false;
};

// Chords bound in the shell, which reports each press.
class GnomeHotKeys : public HotKeys
{
public:
    explicit GnomeHotKeys(GnomeShellBus& bus);
    ~GnomeHotKeys() override;
    quint32 registerChord(int qtKey, Qt::KeyboardModifiers modifiers, Handler pressed,
                          Handler released) override;
    void unregisterChord(quint32 handle) override;

    // The shell's name of a chord ("<Control><Alt>r"); empty for a key it has no
    // name for.
    static QString accelerator(int qtKey, Qt::KeyboardModifiers modifiers);

private:
    struct Chord
    {
        QString accelerator;
        Handler pressed;
        Handler released;
    };
    void chordPressed(const QString& accelerator);

    GnomeShellBus& m_bus;
    QList<QMetaObject::Connection> m_connections;
    QHash<quint32, Chord> m_chords;
    quint32 m_nextHandle = 1;
};

} // namespace velmora
