#pragma once

#include "RoutineContext.h"
#include "RunState.h"
#include "Scheduler.h"

#include <functional>
#include <optional>
#include <QWidget>

class QFrame;
class QLabel;
class QPushButton;
class QStackedLayout;

namespace velmora {

class firstViewController;
class logQuantityVc;
class thirdVc;
class timerViewcontroller;

// The content of the main lock window: the one place that says which screen of
// a routine stands in the lock and which run state the program is in. Everyone
// else only fires events at it.
class ViewController : public QWidget
{
    Q_OBJECT

public:
    explicit ViewController(RoutineContext ctx, QWidget* parent = nullptr);
    ~ViewController() override;

    // Routines
    void showFirstTimeVc();
    void showAllMorningHabits();
    void showAllMorningHabitsAbortCancel();
    void showAllEveningHabits();
    void showAllEveningHabitsAbortCancel();
    void startFirstMorningHabit();
    void startFirstEveningHabit();
    void changeMorningHabit();
    void changeEveningHabit();
    void startBreathing();
    void morningHabitOver();
    void eveningHabitOver();
    void activityOver();
    void breathingOver();
    void habitsFinishedUnlockMachine();
    void breathingFinishedUnlockMachine();
    void activityFinishedUnlockMachine();
    void unlockMachine();
    void shutOffMac();
    void showFocusSummaryView();
    void showLogQuantityView();

    // Breaks
    void setActivityTimer();
    void startBreakActivities();
    void startCurrentActivity();
    void changeActivity();
    bool isBreakTimerPending() const;

    // Screens of other subsystems that the lock window shows. The application
    // hands them over; `willAppear` refreshes a screen each time it is placed.
    enum class ExternalScreen
    {
        ShutOff,
        FocusSummary
    };
    void setExternalScreen(ExternalScreen which, QWidget* screen, std::function<void()> willAppear);
    // Places any screen in the container, the one screen shown.
    void placeScreen(QWidget* screen);
    void clearContainer();
    // What the abort button opens; set by the application.
    std::function<void()> onAbortClicked;

    // Return on the lock window acts on the screen on top.
    void handleReturnKey();
    bool isPasswordViewShown() const;
    // The password prompt that lies over the container, set by whoever owns it:
    // whether it is up, and what Return does while it is.
    std::function<bool()> passwordViewShown;
    std::function<void()> passwordReturnKey;

    firstViewController& firstViewControllerObj() { return *m_first; }
    timerViewcontroller& timerViewcontrollerObj() { return *m_timer; }
    thirdVc& thirdVcObj() { return *m_third; }
    logQuantityVc& logQuantityVcObj() { return *m_quantity; }
    QWidget* currentScreen() const;

    QPushButton* btnAbort = nullptr;
    QLabel* lblMessage = nullptr;
    QWidget* containerView = nullptr;
    QFrame* boxContainer = nullptr;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    qreal m_scale = 1.0;
    void showScreen(QWidget* screen);
    void showExternal(ExternalScreen which);
    void showStayFocusedMessage();
    void showOverview(CURRENTSTATE state, int countdown);
    void startHabitAt(CURRENTSTATE state);
    void itemOverCommon();
    void startActivity(const breakActivity& activity);
    bool cancelBreakForReason();
    void buildBreakLists();
    bool isRunningItem() const;

    RoutineContext c;
    QStackedLayout* m_stack = nullptr;
    QWidget* m_empty = nullptr;
    firstViewController* m_first = nullptr;
    timerViewcontroller* m_timer = nullptr;
    thirdVc* m_third = nullptr;
    logQuantityVc* m_quantity = nullptr;
    std::optional<TimerId> breakTimer;
    struct External
    {
        QWidget* screen = nullptr;
        std::function<void()> willAppear;
    };
    External m_shutOffScreen;
    External m_focusSummaryScreen;
};

} // namespace velmora
