#pragma once

#include "PreferencesContext.h"

#include <QWidget>

class QTabWidget;

namespace velmora {

class blockedUrlsVc;
class enterPasswordVc;
class focusPreferencesVc;
class generalVc;
class passwordVc;
class selectJsonVc;
class uninstallVc;

// The preferences window: a tab view, above the lock windows, and behind the
// password when one is set.
class preferencesWindowController : public QWidget
{
    Q_OBJECT
public:
    enum Tab
    {
        General = 0,
        Focus = 1
    };

    explicit preferencesWindowController(PreferencesContext ctx, QWidget* parent = nullptr);

    // Opens the window; one that is already open is left exactly as it is.
    void menuItem_Preferences();
    bool tabView_shouldSelect(int index) const;
    bool isPasswordViewShown() const;
    // Keeps the window above a lock that came up after it.
    void bringToFront();
    // The settings editor, made by the application with what it needs, as the third tab.
    void installSettingsEditor(selectJsonVc* editor);
    // Closing puts the settings editor back to its choice; refused while a schema fetch runs.
    bool windowShouldClose();
    static constexpr int SettingsEditorTab = 2;

    QTabWidget* preferencesTabViewController = nullptr;
    generalVc* generalVcObj = nullptr;
    passwordVc* passwordVcObj = nullptr;
    uninstallVc* uninstallVcObj = nullptr;
    // The focus tabs, present when the context carries the focus types.
    focusPreferencesVc* focusPreferencesVcObj = nullptr;
    blockedUrlsVc* blockedUrlsVcObj = nullptr;
    enterPasswordVc* enterPasswordVcObj = nullptr;
    selectJsonVc* selectJsonVcObj = nullptr;

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void tabView_didSelect(int index);
    void removePasswordView();
    void addFocusTabs();

    PreferencesContext c;
    int m_lastTab = General;
};

} // namespace velmora
