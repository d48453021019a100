#pragma once

#include "RoutineContext.h"
#include "Scheduler.h"

#include <optional>
#include <QWidget>

class QLabel;
class QListWidget;
class QPushButton;

namespace velmora {

class ViewController;

// The first screen of a routine: a greeting, the habits to come and a short
// countdown for mental rehearsal before the start button comes up. On the very
// first run it is the welcome screen and sets up the intro item.
class firstViewController : public QWidget
{
    Q_OBJECT
public:
    firstViewController(RoutineContext ctx, ViewController& main, QWidget* parent = nullptr);

    // Fills the screen for the current state; called each time it is shown.
    void viewWillAppear();
    void startTimer(int duration);
    void performTimerCount();
    void btnStartFirstHabitClicked();

    bool isFirstTime = false;
    bool isTimerGoingOn = false;
    int currentTimer = 0;
    int totalDuration = 0;

    QLabel* lbltimer = nullptr;
    QLabel* lblBeforeYouStart = nullptr;
    QLabel* lblSubTitle = nullptr;
    QLabel* lblTitle = nullptr;
    QListWidget* tblViewHabits = nullptr;
    QLabel* imgView = nullptr;
    QPushButton* btnStartFirstHabit = nullptr;

private:
    void fillWelcome();
    void fillRoutine(bool morning);
    void setImageLayout(int height, int top, int bottom);

    RoutineContext c;
    ViewController& m_main;
    std::optional<TimerId> timer;
};

} // namespace velmora
