#include "MeetingWatch.h"

#include "BrowserTabs.h"
#include "DebugLog.h"
#include "FocusHost.h"
#include "FocusTypeList.h"
#include "MediaMonitor.h"
#include "RunState.h"
#include "TextCatalogue.h"
#include "Workspace.h"

#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>

namespace velmora {

MeetingWatch::MeetingWatch(FocusContext ctx, FocusSession& session, MediaMonitor& media, Workspace* workspace,
                           QObject* parent)
    : QObject(parent)
    , c(ctx)
    , m_session(session)
    , m_media(media)
    , m_workspace(workspace)
{
}

MeetingWatch::~MeetingWatch()
{
    delete m_alert;
}

void MeetingWatch::checkIsMeetingsGoingOn()
{
    const bool live = m_media.isMicOn() || m_media.isACameraOn();
    if (!live) {
        callEnded();
        return;
    }
    if (m_session.isFocusModeOn())
        return;
    c.log.addLog(QStringLiteral("Mic/Camera Is On"));
    c.host.setCallLook();
    if (m_alert && m_alert->isVisible())
        return;
    const auto found = runningMeetingProgram();
    if (!found) {
        if (m_meetingsIndex >= 0)
            isUserOnMeeting = false;
        return;
    }
    if (isUserOnMeeting)
        return;
    m_session.appUsedInAutoMeetingFocusMode = found->second;
    isUserOnMeeting = true;
    suggest();
}

void MeetingWatch::callEnded()
{
    if (m_session.isAutoMeetingsModeStarted && m_session.isFocusModeOn())
        m_session.focusModeFinished(false);
    // A question about a call that is over has no answer any more.
    closeAlert();
    if (isUserOnMeeting || c.host.isCallLookShown()) {
        isUserOnMeeting = false;
        c.host.setPlainLook();
    }
    // A block that ran through the call gets its colour back.
    m_session.showRunningTypeLook();
}

std::optional<std::pair<int, QString>> MeetingWatch::runningMeetingProgram()
{
    m_meetingsIndex = c.types.meetingsIndex();
    const QStringList apps = c.types.appsArray(m_meetingsIndex);
    if (m_meetingsIndex < 0 || apps.isEmpty()) {
        m_meetingsIndex = -1;
        return std::nullopt;
    }
    if (!m_workspace) {
        if (!m_toldNoWorkspace)
            c.log.addLog(
                QStringLiteral("The running applications cannot be read here; no meeting suggestion"));
        m_toldNoWorkspace = true;
        return std::nullopt;
    }
    const QStringList running = m_workspace->runningApplications();
    // The same name first; then, for a type written before Debian's Firefox was
    // listed, the same browser under another name ("firefox" for firefox-esr).
    for (const bool sameBrowser : {false, true}) {
        for (const QString& path : std::as_const(apps)) {
            const QFileInfo entry(path);
            const QString name = entry.completeBaseName().toLower();
            const QString family = sameBrowser ? BrowserTabs::familyOfApplication(name) : QString();
            for (const QString& program : running) {
                if (sameBrowser
                        ? !family.isEmpty() && BrowserTabs::familyOfApplication(program.toLower()) == family
                        : program.toLower() == name)
                    return std::pair{m_meetingsIndex, entry.fileName()};
            }
        }
    }
    return std::nullopt;
}

void MeetingWatch::suggest()
{
    auto text = [this](const char* key, const QString& fallback) {
        return c.texts.text({"focusInfo", "suggestFocusInfo"}, key, fallback);
    };
    auto* alert =
        new QMessageBox(QMessageBox::Question, c.texts.appName,
                        text("title", QStringLiteral("It looks like you're in a meeting. Will you need to "
                                                     "use other apps during the meeting? If not, I can "
                                                     "block everything else to help you concentrate.")));
    alert->setObjectName(QStringLiteral("alertSuggestFocusMode"));
    alert->setInformativeText(
        text("subTitle", QStringLiteral("On selecting \"Block everything else\" the app will "
                                        "start \"Meetings\" focus mode.")));
    alert->setWindowFlags(alert->windowFlags() | Qt::WindowStaysOnTopHint);
    alert->setAttribute(Qt::WA_DeleteOnClose);
    QPushButton* block = alert->addButton(text("buttonBlockText", QStringLiteral("Block everything else")),
                                          QMessageBox::AcceptRole);
    QPushButton* keep = alert->addButton(
        text("buttonCancelText", QStringLiteral("It's ok for me to use other apps during this meeting")),
        QMessageBox::RejectRole);
    alert->setDefaultButton(block);
    alert->setEscapeButton(keep);
    connect(block, &QPushButton::clicked, this, [this] { blockEverythingElse(); });
    connect(keep, &QPushButton::clicked, this, [this] { keepOtherApps(); });
    m_alert = alert;
    alert->show();
    alert->raise();
    alert->activateWindow();
}

void MeetingWatch::closeAlert()
{
    if (!m_alert)
        return;
    QMessageBox* alert = m_alert;
    m_alert.clear();
    alert->close();
}

void MeetingWatch::keepOtherApps()
{
    // isUserOnMeeting stays: the question does not come back in this call.
    closeAlert();
}

void MeetingWatch::blockEverythingElse()
{
    closeAlert();
    if (!c.types.isValidRow(m_meetingsIndex) || m_session.isFocusModeOn())
        return;
    const QString app = m_session.appUsedInAutoMeetingFocusMode;
    m_session.start(m_meetingsIndex, std::nullopt, QString(), FocusSession::Origin::Meeting);
    // The start clears the flag; this block is the suggestion's.
    m_session.appUsedInAutoMeetingFocusMode = app;
    m_session.isAutoMeetingsModeStarted = true;
}

} // namespace velmora
