#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

namespace velmora {

// One application as the desktop knows it. `name` is the lower-cased
// desktop-file id without ".desktop" ("google-chrome"), or the lower-cased
// WM_CLASS class of a window that has no desktop entry. `desktopFile` is the
// entry's full path, empty when there is none.
struct Application
{
    QString name;
    QString displayName;
    QString desktopFile;
    QString iconName;
    // Filled for the front application where the window system tells: the process
    // that owns the active window (0 when unknown), whether that window is a dialog
    // of the application (a file chooser, a print dialog), and whether the
    // application is a web browser.
    qint64 pid = 0;
    bool dialog = false;
    bool webBrowser = false;

    bool isValid() const { return !name.isEmpty(); }
    bool operator==(const Application&) const = default;
};

// The desktop's applications and windows: which one is in front, hiding one,
// launching one, opening an address.
class Workspace : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~Workspace() override = default;

    // The application of the active window. Invalid when nothing is active or the
    // active window is the desktop, a dock, a notification or one of our own.
    virtual Application frontmostApplication() = 0;
    // Iconifies every top-level window of the application.
    virtual void hide(const Application& application) = 0;
    // Names of the applications that have a window in the client list.
    virtual QStringList runningApplications() = 0;
    // Applications with a desktop entry shown in menus, sorted by display name.
    virtual QList<Application> installedApplications() = 0;
    // The installed application of a desktop file, or of a name as the settings
    // document spells it ("Google Chrome", "google-chrome"); invalid when none.
    virtual Application applicationFor(const QString& desktopFileOrName) = 0;
    virtual bool launch(const Application& application) = 0;
    // Opens the address with the desktop's default handler.
    virtual bool openUrl(const QString& address) = 0;

Q_SIGNALS:
    // The active window changed to another application (frontApplicationChanged).
    void frontApplicationChanged();
};

} // namespace velmora
