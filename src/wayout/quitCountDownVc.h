#pragma once

#include "CountDown.h"
#include "quittingWindow.h"
#include "Scheduler.h"

#include <functional>
#include <optional>
#include <QWidget>

class QLabel;
class QPushButton;

namespace velmora {

class enterPasswordVc;

// Ten seconds to think it over, behind the password when one is set. Going back
// is possible until the time is up.
class quitCountDownVc : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kSeconds = 10;

    explicit quitCountDownVc(QuitFlowContext ctx, QWidget* parent = nullptr);

    void resetData();
    void startTimer();
    void btnCancelAbortClicked();
    bool isPasswordViewShown() const;
    // Made on first need.
    enterPasswordVc* passwordView() const { return enterPasswordVcObj; }
    bool isCounting() const;

    std::function<void()> onFinished;
    std::function<void()> onClose;

    QLabel* lblTitle = nullptr;
    QLabel* lblSubtile = nullptr;
    QLabel* lblMessage = nullptr;
    QLabel* lblPleaseEmail = nullptr;
    QLabel* lblEmailId = nullptr;
    QLabel* lblSeconds = nullptr;
    QPushButton* btnCancelAbort = nullptr;
    CountDown countDown;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QuitFlowContext c;
    enterPasswordVc* enterPasswordVcObj = nullptr;
};

} // namespace velmora
