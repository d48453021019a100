#pragma once

#include "CountDown.h"
#include "quittingWindow.h"
#include "Scheduler.h"

#include <functional>
#include <optional>
#include <QWidget>

class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace velmora {

// The reason for leaving, then five last seconds. There is no way back from
// here: the window cannot be closed, and the list only changes the reason.
class quittingConfirmVc : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kSeconds = 5;
    enum Reason
    {
        SelectReason = 0,
        Emergency = 1,
        AppIsBroken = 2,
        SomethingElse = 3
    };

    explicit quittingConfirmVc(QuitFlowContext ctx, QWidget* parent = nullptr);

    void resetData();
    void popUpBtnReasonsClicked(int index);
    void textDidChange();
    void btnQuitClicked();
    bool isCounting() const;

    // Called once the flow is over.
    std::function<void()> menuItem_Quit;

    QLabel* lblTitle = nullptr;
    QLabel* lblSubTitle = nullptr;
    QComboBox* popUpBtnReasons = nullptr;
    QLabel* lblDescription = nullptr;
    QLabel* lblTimer = nullptr;
    QLabel* lblTitleEmail = nullptr;
    QLineEdit* textFieldEmail = nullptr;
    QPlainTextEdit* textView = nullptr;
    QPushButton* btnQuit = nullptr;
    CountDown countDown;

private:
    QString text(const char* dropDown, const char* key, const QString& fallback) const;
    void showTextEntry(const QString& description);
    void startTimer();
    void timeIsUp();
    void quitOnce();

    QuitFlowContext c;
    bool m_quitCalled = false;
    QString dropDown_1_Description;
    QString dropDown_2_Description;
    QString dropDown_3_Description;
    QString dropDown_2_FinalDescription;
    QString dropDown_3_FinalDescription;
};

} // namespace velmora
