#pragma once

#include "CountDown.h"
#include "RoutineContext.h"

#include <functional>
#include <QStringList>
#include <QWidget>

class QComboBox;
class QFrame;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace velmora {

// The screens of giving up a routine, shown one at a time in the lock window.
// They only show and count; what an answer leads to is the owner's business,
// told through the callbacks.

// Ten seconds to think it over, with the way back always open.
class abortingCountDownVc : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kSeconds = 10;
    explicit abortingCountDownVc(RoutineContext ctx, QWidget* parent = nullptr);

    void startTimer();
    void btnCancelAbortClicked();

    std::function<void()> onFinished;
    std::function<void()> onCancel;

    QLabel* lblTitle = nullptr;
    QLabel* lblSubtile = nullptr;
    QLabel* lblMessage = nullptr;
    QLabel* lblPleaseEmail = nullptr;
    QLabel* lblEmailId = nullptr;
    QLabel* lblSeconds = nullptr;
    QPushButton* btnCancelAbort = nullptr;
    CountDown countDown;

private:
    RoutineContext c;
};

// Why? One of four reasons, each with its own box; there is no way back from here.
class abortingConfirmVc : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kEmergencySeconds = 5;
    enum Reason
    {
        SelectReason = 0,
        Emergency = 1,
        AppBroken = 2,
        HabitsHard = 3,
        SomethingElse = 4
    };
    explicit abortingConfirmVc(RoutineContext ctx, QWidget* parent = nullptr);

    void resetData();
    void popUpBtnReasonsClicked(int index);
    void textDidChange();

    std::function<void()> onEmergencyOver;
    std::function<void(const QString& email, const QString& feedback)> onAppBroken;
    std::function<void()> onStartSmall;
    std::function<void()> onDontWantRoutine;
    std::function<void(const QString& feedback)> onSomethingElse;

    QLabel* lblTitle = nullptr;
    QLabel* lblSubTitle = nullptr;
    QLabel* imgViewGif = nullptr;
    QComboBox* popUpBtnReasons = nullptr;
    QStringList allReasons;

    QFrame* boxEmergency = nullptr;
    QLabel* lblDescriptionFirstBox = nullptr;
    QLabel* lblTimerEmergency = nullptr;

    QFrame* boxAppBroken = nullptr;
    QLabel* lblDescriptionSecondBox = nullptr;
    QLabel* lblTitleEmailSecondBox = nullptr;
    QLineEdit* textFieldEmailAppBroken = nullptr;
    QPlainTextEdit* textViewAppBroken = nullptr;
    QPushButton* btnDeactivateAppBroken = nullptr;

    QFrame* boxHabitsHard = nullptr;
    QLabel* lblDescriptionThirdBox = nullptr;
    QPushButton* btnStartSmall_boxHabit = nullptr;
    QPushButton* btnDontWantRoutine_boxHabit = nullptr;

    QFrame* boxSomethingElse = nullptr;
    QLabel* lblDescriptionFourthBox = nullptr;
    QLabel* lblTitleEmailFourthBox = nullptr;
    QLineEdit* textFieldEmail_SomethingELse = nullptr;
    QPlainTextEdit* textViewSomethingElse = nullptr;
    QPushButton* btnDeactivate_boxSomethingElse = nullptr;

    CountDown countDown;

private:
    void fillTexts();
    void showOnly(QFrame* box);

    RoutineContext c;
};

// Feedback before the last step, in two uses: the shortened routine the user
// agreed to, or no routine at all.
class abortingCantHandleVc : public QWidget
{
    Q_OBJECT
public:
    explicit abortingCantHandleVc(RoutineContext ctx, QWidget* parent = nullptr);

    void resetView(bool isAnyHabitRemoved);
    void textDidChange();
    void btnMainClicked();

    bool isViewStartingSmall = false;
    std::function<void(const QString& feedback)> onMain;

    QLabel* lblTitle = nullptr;
    QLabel* lblSubtitle = nullptr;
    QLabel* lblDescription = nullptr;
    QLabel* lblDescription2 = nullptr;
    QLabel* lblDescription3 = nullptr;
    QLabel* lblTitleEmail = nullptr;
    QLineEdit* textFieldEmail = nullptr;
    QPlainTextEdit* textViewFeedback = nullptr;
    QPushButton* btnMain = nullptr;

private:
    RoutineContext c;
};

// Five quiet seconds before the program lets go.
class abortDoneVc : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kSeconds = 5;
    explicit abortDoneVc(RoutineContext ctx, QWidget* parent = nullptr);

    void startTimer();

    std::function<void()> onFinished;

    QLabel* lblTitle = nullptr;
    QLabel* lblSubTitle = nullptr;
    CountDown countDown;

private:
    RoutineContext c;
};

} // namespace velmora
