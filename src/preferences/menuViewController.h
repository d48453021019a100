#pragma once

#include "PreferencesContext.h"

#include <QUrl>
#include <QWidget>

class QLabel;
class QPushButton;

namespace velmora {

class Http;

// The panel that opens from the tray icon: a small pop-up with the program's
// few commands and the office-mode switch. Rebuilt from the run state at every
// opening.
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

    void viewDidLoad();
    void reloadData();
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

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QString menuText(const char* key, const QString& fallback) const;
    void rowClicked(QPushButton* row, const std::function<void()>& action);
    void versionArrived(int status, const QByteArray& body, const QString& error);

    Deps d;
};

} // namespace velmora
