#include "preferencesWindowController.h"

#include "blockedUrlsVc.h"
#include "DebugLog.h"
#include "enterPasswordVc.h"
#include "focusPreferencesVc.h"
#include "generalVc.h"
#include "PasswordStore.h"
#include "passwordVc.h"
#include "RunState.h"
#include "selectJsonVc.h"
#include "TextCatalogue.h"
#include "uninstallVc.h"

#include <QCloseEvent>
#include <QDebug>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QVBoxLayout>

namespace velmora {

preferencesWindowController::preferencesWindowController(PreferencesContext ctx, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::WindowStaysOnTopHint)
    , c(ctx)
{
    setObjectName(QStringLiteral("preferencesWindow"));
    setWindowTitle(QStringLiteral("Velmora preferences"));
    resize(860, 620);

    preferencesTabViewController = new QTabWidget(this);
    generalVcObj = new generalVc(c, preferencesTabViewController);
    passwordVcObj = new passwordVc(c, preferencesTabViewController);
    uninstallVcObj = new uninstallVc(c, preferencesTabViewController);
    preferencesTabViewController->addTab(generalVcObj, QStringLiteral("General"));
    preferencesTabViewController->addTab(passwordVcObj, QStringLiteral("Password"));
    preferencesTabViewController->addTab(uninstallVcObj, QStringLiteral("Uninstall"));
    addFocusTabs();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(preferencesTabViewController);

    connect(preferencesTabViewController, &QTabWidget::currentChanged, this,
            [this](int index) { tabView_didSelect(index); });
}

// The focus tab sits at its fixed index; the always-blocked addresses follow the password.
void preferencesWindowController::addFocusTabs()
{
    if (!c.focusTypes)
        return;
    const FocusPreferencesContext focus{*c.focusTypes, c.state.arrBlockedUrls, c.preferences, c.texts, c.log,
                                        c.workspace,   c.browserTabs};
    focusPreferencesVcObj = new focusPreferencesVc(focus, preferencesTabViewController);
    blockedUrlsVcObj = new blockedUrlsVc(focus, preferencesTabViewController);
    preferencesTabViewController->insertTab(Focus, focusPreferencesVcObj, QStringLiteral("Focus"));
    preferencesTabViewController->insertTab(preferencesTabViewController->indexOf(passwordVcObj) + 1,
                                            blockedUrlsVcObj, QStringLiteral("Always Blocked"));
}

void preferencesWindowController::menuItem_Preferences()
{
    if (isVisible())
        return;
    show();
    c.log.addLog(QStringLiteral("Showing preferences"));
    if (password::isSet(c.preferences)) {
        preferencesTabViewController->setCurrentIndex(General);
        if (!enterPasswordVcObj) {
            enterPasswordVcObj =
                new enterPasswordVc({c.preferences, c.clock, c.scheduler, c.log, c.texts}, this);
            enterPasswordVcObj->setAutoFillBackground(true);
            // The window gives its keyboard to the field, however it is activated.
            enterPasswordVcObj->setFocusProxy(enterPasswordVcObj->textFieldPassword);
            enterPasswordVcObj->onCorrect = [this] { removePasswordView(); };
            enterPasswordVcObj->onCancel = [this] {
                hide();
                removePasswordView();
            };
        }
        enterPasswordVcObj->setGeometry(rect());
        enterPasswordVcObj->viewWillAppear(false);
        enterPasswordVcObj->show();
        enterPasswordVcObj->raise();
        // Nothing behind the prompt takes the keyboard or the mouse.
        preferencesTabViewController->setEnabled(false);
        enterPasswordVcObj->setFocus();
        c.log.addLog(QStringLiteral("Showing enter password view"));
    } else {
        // A prompt left from an earlier opening has nothing to guard any more.
        removePasswordView();
    }
    bringToFront();
}

void preferencesWindowController::removePasswordView()
{
    if (enterPasswordVcObj)
        enterPasswordVcObj->hide();
    preferencesTabViewController->setEnabled(true);
}

bool preferencesWindowController::isPasswordViewShown() const
{
    return enterPasswordVcObj && !enterPasswordVcObj->isHidden();
}

bool preferencesWindowController::tabView_shouldSelect(int) const
{
    return !(password::isSet(c.preferences) && isPasswordViewShown());
}

void preferencesWindowController::tabView_didSelect(int index)
{
    if (!tabView_shouldSelect(index)) {
        const QSignalBlocker blocker(preferencesTabViewController);
        preferencesTabViewController->setCurrentIndex(m_lastTab);
        return;
    }
    qDebug() << "tab view selection change";
    m_lastTab = index;
    if (index == SettingsEditorTab && selectJsonVcObj)
        selectJsonVcObj->setData();
}

void preferencesWindowController::installSettingsEditor(selectJsonVc* editor)
{
    selectJsonVcObj = editor;
    const QSignalBlocker blocker(preferencesTabViewController);
    preferencesTabViewController->insertTab(
        qMin(int(SettingsEditorTab), preferencesTabViewController->count()), editor,
        QStringLiteral("Settings"));
}

bool preferencesWindowController::windowShouldClose()
{
    if (!selectJsonVcObj)
        return true;
    if (selectJsonVcObj->isGettingSchema)
        return false;
    selectJsonVcObj->resetBox();
    return true;
}

void preferencesWindowController::bringToFront()
{
    if (!isVisible())
        return;
    raise();
    activateWindow();
}

void preferencesWindowController::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (enterPasswordVcObj)
        enterPasswordVcObj->setGeometry(rect());
}

// The title bar hides the window, which lives as long as the program; a request
// to close every window, as a quit makes, is refused.
void preferencesWindowController::closeEvent(QCloseEvent* event)
{
    event->ignore();
    if (event->spontaneous() && windowShouldClose()) {
        hide();
        removePasswordView();
    }
}

} // namespace velmora
