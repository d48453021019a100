#pragma once

#include "FocusSession.h"
#include "MeetingWatch.h"

#include <functional>
#include <memory>

class QDialog;
class QStackedLayout;

namespace velmora {

class abortingFocusModeVc;
class discourageDefaultFocusVc;
class focusCompletedVc;
class pomodoroVc;
class startingFocusModeVc;

// The focus blocks and their windows: the start and abort dialogs (one window),
// the questions at the end, the discouraging sheet and the pomodoro window. The
// application forwards the panel's rows, the tick and the shut-off to it.
class FocusEngine : public QObject, public SessionScreens
{
    Q_OBJECT
public:
    static constexpr qint64 kPomodoroPauseMs = 300'000;

    FocusEngine(FocusContext ctx, MediaMonitor& media, Workspace* workspace, QObject* parent = nullptr);
    ~FocusEngine() override;

    FocusSession& session() { return *m_session; }
    MeetingWatch& meetingWatch() { return *m_meetings; }

    // A row of the panel's focus list.
    void focusRowClicked(int index);
    void showStartingFocusMode(int focusModeIndex, const QString& focusType);
    void showAbortingFocusModeVc();

    // The pomodoro window on its own initiative, with every reason not to.
    void showAutoPomodoroModeView();
    // The pomodoro window because the user asked for it.
    void menuShowPomodoroModeView();
    void pomodoroModeStarted();
    // The list of types changed: the pomodoro pop-up is rebuilt and a start
    // dialog, whose index may be stale, is closed.
    void focusTypesChanged();

    bool isDiscourageDefaultFocusVcVisible() const;
    bool isStartWindowVisible() const;
    bool isPomodoroWindowVisible() const;

    QDialog* startingFocusWindow() const { return m_startWindow; }
    startingFocusModeVc* startingFocusModeVcObj() const { return m_starting; }
    abortingFocusModeVc* abortingFocusModeVcObj() const { return m_aborting; }
    focusCompletedVc* focusCompletedVcObj() const { return m_completed; }
    pomodoroVc* pomodoroVcObj() const { return m_pomodoro; }
    discourageDefaultFocusVc* discourageDefaultFocusVcObj() const { return m_discourage; }

    // The notice that another block runs; tests replace it.
    std::function<void(const QString& text)> inform;

    // SessionScreens
    std::optional<QString> openQuestions() const override;
    void closeQuestions() override;
    void showQuestions(const QString& focusName) override;
    void closePomodoro() override;
    void closeStartWindow() override;

private:
    void buildWindows();
    void showPomodoroWindow();
    void abortClicked(int reasonIndex, const QString& focusName);
    void questionsAnswered(const QString& focusName, const QString& achieved, const QString& distractions);
    void bringUp(QWidget* window);
    bool isDefaultType(int index) const;

    FocusContext c;
    MediaMonitor& m_media;
    std::unique_ptr<FocusSession> m_session;
    std::unique_ptr<MeetingWatch> m_meetings;
    QDialog* m_startWindow = nullptr;
    QStackedLayout* m_startPages = nullptr;
    startingFocusModeVc* m_starting = nullptr;
    abortingFocusModeVc* m_aborting = nullptr;
    focusCompletedVc* m_completed = nullptr;
    pomodoroVc* m_pomodoro = nullptr;
    discourageDefaultFocusVc* m_discourage = nullptr;
    std::optional<TimerId> m_pomodoroPause;
};

} // namespace velmora
