#pragma once

#include "CountDown.h"
#include "RoutineContext.h"

#include <functional>
#include <QWidget>

class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace velmora {

// The night's lock. It stays until the morning, unless the user takes the
// emergency path: the password if one is set, thirty seconds of reflection, a
// last click and five seconds of "Unlocking in".
class shutOffTimeVc : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kReflectionSeconds = 30;
    static constexpr int kUnlockSeconds = 5;
    enum Step
    {
        Resting = 0,
        Reflecting = 1,
        Unlocking = 2
    };

    explicit shutOffTimeVc(RoutineContext ctx, QWidget* parent = nullptr);

    void resetView();
    void btnGetAccessNowClicked();
    void getAccessNowClicked();
    void btnUnlockClicked();
    void startTimer(int duration);

    // What the screen cannot do alone: ask for the password, go back to rest
    // (the controller places the screen anew), send the explanation, let go.
    std::function<void()> showPasswordView;
    std::function<void()> onCancelled;
    std::function<void(const QString& feedback)> onUnlockClicked;
    std::function<void()> emergencyStartDone;

    int step = Resting;

    QLabel* lblTitle = nullptr;
    QLabel* lblSubTitle = nullptr;
    QLabel* imgViewGif = nullptr;
    QPushButton* btnGetAccessNow = nullptr;
    QLabel* lbl2 = nullptr;
    QPlainTextEdit* textView = nullptr;
    QLabel* lbltimer = nullptr;
    QPushButton* btnUnlock = nullptr;
    CountDown countDown;

private:
    void timerEnded();

    RoutineContext c;
};

} // namespace velmora
