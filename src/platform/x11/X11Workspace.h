#pragma once

#include "DesktopEntries.h"
#include "Workspace.h"

#include <functional>
#include <QAbstractNativeEventFilter>
#include <QHash>
#include <QList>

struct xcb_connection_t;

namespace velmora {

// The desktop as an EWMH window manager shows it on X11. The active window is
// followed through PropertyNotify on the root window, never by polling; every
// change of it is reported. Off X11 (Wayland, the offscreen platform) there is no
// front application and nothing to hide, while the desktop entries, launching
// and opening addresses still work.
class X11Workspace : public Workspace, public QAbstractNativeEventFilter
{
    Q_OBJECT
public:
    // Needs the QGuiApplication to exist already.
    explicit X11Workspace(QObject* parent = nullptr);
    ~X11Workspace() override;

    Application frontmostApplication() override;
    void hide(const Application& application) override;
    QStringList runningApplications() override;
    QList<Application> installedApplications() override;
    Application applicationFor(const QString& desktopFileOrName) override;
    bool launch(const Application& application) override;
    bool openUrl(const QString& address) override;

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

    // Where the decisions worth keeping (a failed launch, a window manager that
    // does not iconify) are written.
    void setLog(std::function<void(const QString&)> log) { m_log = std::move(log); }
    bool isConnected() const { return m_connection != nullptr; }

    // Who a window belongs to. `claimedPid` is the window's _NET_WM_PID, which any
    // client may write; `realPid` the X server's word for the client that made it
    // (XRes; 0 for a remote client or without XRes).
    struct WindowOwner
    {
        quint32 claimedPid = 0;
        quint32 realPid = 0;
        bool desktopType = false;              // claims to be the desktop, a dock or a notification
        bool ownerShowsOrdinaryWindow = false; // its real process has ordinary windows too
    };
    // Windows never judged: ours, by the real process and never by the claim alone,
    // and the desktop's, whose process shows no ordinary window of its own.
    static bool isExempt(const WindowOwner& owner, quint32 ownPid);
    // The process whose program names the window: the real one where the server
    // tells it.
    static quint32 processOf(const WindowOwner& owner)
    {
        return owner.realPid ? owner.realPid : owner.claimedPid;
    }

private:
    enum Atom
    {
        ActiveWindow,
        ClientList,
        ClientListStacking,
        Supported,
        WmPid,
        WmWindowType,
        TypeDesktop,
        TypeDock,
        TypeNotification,
        WmStateHidden,
        WmChangeState,
        GtkApplicationId,
        KdeDesktopFile,
        Utf8String,
        TypeDialog,
        TypeUtility,
        AtomCount
    };

    quint32 activeWindow() const;
    QList<quint32> windowList(Atom list) const;
    QList<quint32> atomsOf(quint32 window, Atom property) const;
    QByteArray propertyBytes(quint32 window, quint32 property, quint32 type) const;
    quint32 cardinal(quint32 window, Atom property) const;
    // Desktop, dock, notification and our own windows are never anyone's application.
    // `process`, when given, receives the window's process (processOf).
    bool isJudged(quint32 window, quint32* process = nullptr) const;
    bool hasDesktopType(quint32 window) const;
    quint32 realPid(quint32 window) const;
    WindowOwner ownerOf(quint32 window) const;
    bool isDialog(quint32 window) const;
    WindowFacts factsOf(quint32 window, quint32 process) const;
    Application applicationOf(quint32 window, quint32 process);
    void iconify(quint32 window);
    void moveFocusAwayFrom(const Application& application);
    bool windowManagerIconifies();
    void log(const QString& line) const;

    xcb_connection_t* m_connection = nullptr;
    quint32 m_root = 0;
    quint32 m_atoms[AtomCount] = {};
    quint32 m_lastActive = 0;
    int m_iconifies = -1; // unknown until the first hide
    bool m_hasRes = false;
    DesktopEntries m_entries;
    std::function<void(const QString&)> m_log;
};

} // namespace velmora
