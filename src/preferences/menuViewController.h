#pragma once

#include "PreferencesContext.h"

#include <optional>
#include <QDateTime>
#include <QUrl>
#include <QWidget>

class QLabel;
class QPushButton;
class QVBoxLayout;

namespace velmora {

// What the update server names as the newest release, and where to get it.
struct VersionAnswer
{
    QString latest;
    QString url;
};
// Nothing when the body is no JSON object with a "version" text.
std::optional<VersionAnswer> readVersionAnswer(const QByteArray& body);
// True when `latest` names a later release than `installed`.
bool isNewerRelease(const QString& latest, const QString& installed);

class Http;

// The panel that opens from the tray icon: the focus types, the pomodoro
// window, the program's few commands and the office-mode switch. Rebuilt from
// the run state at every opening. Every row is a button, reached with Tab and
// pressed with Return, and named by what it says.
class menuViewController : public QWidget
{
    Q_OBJECT
public:
    struct Deps
    {
        PreferencesContext ctx;
        Http& http;
        QString packagedSettingsPath;
        // Where the version document lives; empty when none is configured.
        QUrl configServer;
    };
    explicit menuViewController(Deps deps, QWidget* parent = nullptr);

    static constexpr int kFocusRowHeight = 32;

    void viewDidLoad();
    void reloadData();
    // The focus list shows every type without scrolling, and the running
    // block's line while one runs.
    void resetViewHeight();
    int focusModeBoxHeight() const;
    // Opens under the tray icon, or at the pointer when the tray does not say
    // where its icon is.
    void popUp(const QRect& trayIcon, const QPoint& cursor);
    static QPoint placeFor(const QSize& panel, const QRect& trayIcon, const QPoint& cursor,
                           const QRect& screen);

    void btnEnableOfficeModeClicked();
    void enableOfficeMode();
    void addOfficeFriendlyActivityInSettings();
    void checkForUpdates();

    // What the rows lead to, set by the application.
    std::function<void()> onReactivate;
    std::function<void()> onPreferences;
    std::function<void()> onExportStatistics;
    std::function<void()> onQuit;
    std::function<void(int focusIndex)> onFocusRow;
    std::function<void()> onStartPomodoro;
    // When the running block ends; nothing for a block without an end.
    std::function<std::optional<QDateTime>()> focusEndTime;
    // Alerts; tests replace them.
    AskAlert ask;
    InformAlert inform;

    QLabel* boxCheckMark = nullptr;
    QPushButton* boxReactivate = nullptr;
    QPushButton* boxPreferences = nullptr;
    QPushButton* boxExportStatistics = nullptr;
    QPushButton* boxCheckForUpdates = nullptr;
    QPushButton* boxEnableOfficeMode = nullptr;
    QPushButton* boxQuit = nullptr;
    QPushButton* boxStartPomodoroMode = nullptr;
    QWidget* boxFocusMode = nullptr;
    QLabel* lblTitleFocus = nullptr;
    QLabel* lblOn = nullptr;
    // One button per focus type, in list order.
    QList<QPushButton*> focusRows;

protected:
    void closeEvent(QCloseEvent* event) override;
    bool event(QEvent* event) override;

private:
    QString menuText(const char* key, const QString& fallback) const;
    QPushButton* makeRow(const char* objectName);
    void rowClicked(QPushButton* row, const std::function<void()>& action);
    void reloadFocusRows();
    void versionArrived(int status, const QByteArray& body, const QString& error);

    Deps d;
    QVBoxLayout* m_focusList = nullptr;
};

} // namespace velmora
