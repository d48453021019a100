#pragma once

#include "FocusSession.h"

#include <QMessageBox>
#include <QPointer>

namespace velmora {

class MediaMonitor;
class Workspace;

// Notices calls at every tick: the tray turns blue while the microphone or a
// camera is in use, a running meeting program brings the suggestion to block
// everything else, and a block started that way ends with the call.
class MeetingWatch : public QObject
{
    Q_OBJECT
public:
    MeetingWatch(FocusContext ctx, FocusSession& session, MediaMonitor& media, Workspace* workspace,
                 QObject* parent = nullptr);
    ~MeetingWatch() override;

    void checkIsMeetingsGoingOn();

    // The suggestion while it is up.
    QMessageBox* alertSuggestFocusMode() const { return m_alert; }
    void blockEverythingElse();
    void keepOtherApps();

    // A suggestion was already made for the present call.
    bool isUserOnMeeting = false;

private:
    void callEnded();
    // The meetings type's index and the matching running program's entry name.
    std::optional<std::pair<int, QString>> runningMeetingProgram();
    void suggest();
    void closeAlert();

    FocusContext c;
    FocusSession& m_session;
    MediaMonitor& m_media;
    Workspace* m_workspace; // none on a desktop we cannot read
    QPointer<QMessageBox> m_alert;
    int m_meetingsIndex = -1;
    bool m_toldNoWorkspace = false;
};

} // namespace velmora
