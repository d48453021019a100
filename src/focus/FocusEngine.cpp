#include "FocusEngine.h"

#include "abortingFocusModeVc.h"
#include "DebugLog.h"
#include "discourageDefaultFocusVc.h"
#include "focusCompletedVc.h"
#include "FocusHost.h"
#include "FocusTypeList.h"
#include "MediaMonitor.h"
#include "pomodoroVc.h"
#include "RunState.h"
#include "startingFocusModeVc.h"
#include "Style.h"
#include "TextCatalogue.h"

#include <QComboBox>
#include <QDialog>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QStackedLayout>

namespace velmora {

FocusEngine::FocusEngine(FocusContext ctx, MediaMonitor& media, Workspace* workspace, QObject* parent)
    : QObject(parent)
    , c(ctx)
    , m_media(media)
{
    m_session = std::make_unique<FocusSession>(c, *this);
    m_meetings = std::make_unique<MeetingWatch>(c, *m_session, media, workspace);
    inform = [this](const QString& text) {
        QMessageBox box(QMessageBox::Information, c.texts.appName, text);
        box.setWindowFlags(box.windowFlags() | Qt::WindowStaysOnTopHint);
        box.exec();
    };
    buildWindows();
}

FocusEngine::~FocusEngine()
{
    delete m_discourage;
    delete m_startWindow;
    delete m_completed;
    delete m_pomodoro;
}

void FocusEngine::buildWindows()
{
    m_startWindow = new QDialog(nullptr, Qt::Window | Qt::WindowStaysOnTopHint);
    m_startWindow->setObjectName(QStringLiteral("startingFocusWindowController"));
    m_startWindow->setWindowTitle(QStringLiteral("Velmora focus"));
    m_startWindow->setStyleSheet(style::dialogStyleSheet());
    m_startPages = new QStackedLayout(m_startWindow);
    m_starting = new startingFocusModeVc(c.texts);
    m_aborting = new abortingFocusModeVc(c.texts, c.state, c.scheduler);
    m_startPages->addWidget(m_starting);
    m_startPages->addWidget(m_aborting);
    m_startWindow->resize(480, 360);
    m_starting->onStart = [this](int index, int minutes, const QString& intention) {
        m_session->start(index, minutes, intention, FocusSession::Origin::Dialog);
    };
    m_aborting->onCancel = [this] { m_startWindow->close(); };
    m_aborting->onAbort = [this](int reason, const QString& name) { abortClicked(reason, name); };

    m_completed = new focusCompletedVc(c.texts);
    m_completed->onTakeBreak = [this](const QString& name, const QString& achieved,
                                      const QString& distractions) {
        questionsAnswered(name, achieved, distractions);
    };

    m_pomodoro = new pomodoroVc(c.texts, c.state);
    m_pomodoro->onLetsDoIt = [this](int index) {
        if (isDiscourageDefaultFocusVcVisible())
            return;
        if (!isDefaultType(index)) {
            pomodoroModeStarted();
            return;
        }
        m_discourage->presentOn(m_pomodoro);
        m_discourage->resetData();
    };
    m_pomodoro->onEditFocusModes = [this] { c.host.showFocusPreferences(); };

    m_discourage = new discourageDefaultFocusVc(c.texts, c.scheduler);
    m_discourage->onTimeServed = [this](QWidget*) {
        if (m_pomodoro->isVisible())
            pomodoroModeStarted();
    };
    m_discourage->onCancel = [this](QWidget* window) {
        if (window == m_startWindow && m_startWindow->isVisible())
            m_startWindow->close();
    };
}

bool FocusEngine::isDefaultType(int index) const
{
    return c.types.isDefault(index);
}

void FocusEngine::bringUp(QWidget* window)
{
    window->show();
    window->raise();
    window->activateWindow();
}

bool FocusEngine::isDiscourageDefaultFocusVcVisible() const
{
    return m_discourage->isVisible();
}

bool FocusEngine::isStartWindowVisible() const
{
    return m_startWindow->isVisible();
}

bool FocusEngine::isPomodoroWindowVisible() const
{
    return m_pomodoro->isVisible();
}

// --- the start and abort dialogs -------------------------------------------------

void FocusEngine::focusRowClicked(int index)
{
    if (!c.types.isValidRow(index)) {
        c.log.addLog(QStringLiteral("No focus type at row %1").arg(index));
        return;
    }
    if (c.types.isOn(index)) {
        showAbortingFocusModeVc();
        return;
    }
    if (m_session->isFocusModeOn()) {
        inform(c.texts.text(
            "focusInfo", "focusAlreadyRunningText",
            QStringLiteral("A focus mode is already running. Please abort the running focus mode "
                           "to start a new one.")));
        return;
    }
    showStartingFocusMode(index, c.types.name(index));
}

void FocusEngine::showStartingFocusMode(int focusModeIndex, const QString& focusType)
{
    c.log.addLog(QStringLiteral("Showing Starting Focus Mode view"));
    m_startPages->setCurrentWidget(m_starting);
    bringUp(m_startWindow);
    closePomodoro();
    m_starting->ResetData(focusModeIndex, focusType);
    if (isDefaultType(focusModeIndex)) {
        m_discourage->presentOn(m_startWindow);
        m_discourage->resetData();
    }
}

void FocusEngine::showAbortingFocusModeVc()
{
    c.log.addLog(QStringLiteral("Showing Abort focus mode view"));
    m_startPages->setCurrentWidget(m_aborting);
    bringUp(m_startWindow);
    m_aborting->ResetData();
}

void FocusEngine::abortClicked(int reasonIndex, const QString& focusName)
{
    if (!m_session->isFocusModeOn()) {
        m_startWindow->close();
        return;
    }
    const bool fromMeeting = m_session->isAutoMeetingsModeStarted;
    const QString app = m_session->appUsedInAutoMeetingFocusMode;
    QString reason;
    if (reasonIndex >= 0 && reasonIndex < abortingFocusModeVc::kReasons.size())
        reason = abortingFocusModeVc::kReasons.at(reasonIndex);
    // The early finish asks its questions like a block whose time ran out.
    if (reasonIndex == 1)
        m_session->focusModeFinished(false);
    else if (reasonIndex == 0 || reasonIndex == 2)
        m_session->focusModeAborted();
    c.log.addLog(QStringLiteral("Focus mode abort clicked with reason - ") + reason);
    c.host.focusPreferencesFollowBlock();
    m_session->writeAbortRow(focusName, reason,
                             fromMeeting ? QStringLiteral("Meeting using {%1}").arg(app) : QString());
    m_startWindow->close();
}

// --- the questions -------------------------------------------------------------

std::optional<QString> FocusEngine::openQuestions() const
{
    if (!m_completed->isVisible())
        return std::nullopt;
    return m_completed->currentFocusModeName;
}

void FocusEngine::closeQuestions()
{
    m_completed->hide();
}

void FocusEngine::showQuestions(const QString& focusName)
{
    m_completed->resetData(focusName, false, m_session->whatToAchieveInFocusBlock);
    bringUp(m_completed);
}

void FocusEngine::questionsAnswered(const QString& focusName, const QString& achieved,
                                    const QString& distractions)
{
    m_session->writeAnsweredRow(focusName, achieved, distractions);
    if (!m_session->isFocusModeStartedFromPomodoroMode)
        return;
    // The five minutes that the button promises; nothing else holds the user to them.
    c.log.addLog(QStringLiteral("pomodoro mode Finished"));
    m_pomodoroPause = c.scheduler.singleShot(kPomodoroPauseMs, this, [this] {
        m_pomodoroPause.reset();
        showAutoPomodoroModeView();
    });
}

// --- pomodoro ------------------------------------------------------------------

void FocusEngine::showAutoPomodoroModeView()
{
    c.log.addLog(QStringLiteral("Initiating Auto Pomodoro Mode View."));
    if (m_session->isFocusModeOn()) {
        c.log.addLog(QStringLiteral("Focus Mode Is On: Pomodoro Mode View cancelled"));
        return;
    }
    if (m_media.isMicOn() || m_media.isACameraOn()) {
        c.log.addLog(QStringLiteral("Mic/Camera Is On: Pomodoro Mode View cancelled"));
        c.host.setCallLook();
        return;
    }
    if (c.host.isPreventUserIdleDisplaySleepOn()) {
        c.log.addLog(QStringLiteral("PreventUserIdleDisplaySleep is On: Pomodoro Mode View cancelled"));
        return;
    }
    if (isStartWindowVisible()) {
        c.log.addLog(QStringLiteral("focusModeStartWindowLodded .Auto Pomodoro Mode View cancelled"));
        return;
    }
    if (c.host.isShutOffTimeGoing()) {
        c.log.addLog(QStringLiteral("This is Shut Off time. Auto Pomodoro Mode View cancelled"));
        return;
    }
    showPomodoroWindow();
}

void FocusEngine::menuShowPomodoroModeView()
{
    c.log.addLog(QStringLiteral("Initiating Pomodoro Mode View."));
    if (m_session->isFocusModeOn()) {
        c.log.addLog(QStringLiteral("Focus Mode Is On."));
        return;
    }
    if (isStartWindowVisible()) {
        c.log.addLog(QStringLiteral("focusModeStartWindowLodded .Pomodoro Mode View cancelled"));
        return;
    }
    showPomodoroWindow();
}

void FocusEngine::showPomodoroWindow()
{
    c.state.isPomodoroWindowLodded = true;
    m_pomodoro->viewWillAppear();
    bringUp(m_pomodoro);
}

void FocusEngine::pomodoroModeStarted()
{
    c.log.addLog(QStringLiteral("pomodoro mode Started"));
    m_session->start(m_pomodoro->popUpBtnFocusType->currentIndex(), pomodoroVc::kMinutes,
                     m_pomodoro->textViewAchieve->toPlainText(), FocusSession::Origin::Pomodoro);
}

void FocusEngine::focusTypesChanged()
{
    if (m_pomodoro->isVisible())
        m_pomodoro->reFillFocusTypeList();
    if (m_startWindow->isVisible() && m_startPages->currentWidget() == m_starting)
        m_startWindow->close();
}

void FocusEngine::closePomodoro()
{
    if (m_pomodoro->isVisible())
        m_pomodoro->hide();
}

void FocusEngine::closeStartWindow()
{
    if (m_startWindow->isVisible())
        m_startWindow->close();
}

} // namespace velmora
