#pragma once

#include <functional>
#include <QWidget>

namespace velmora {

class Clock;
class DebugLog;
class FeedbackUpload;
class Preferences;
class Scheduler;
class TextCatalogue;
class UsageLog;
class quitCountDownVc;
class quittingConfirmVc;

// What the screens of the quit flow share.
struct QuitFlowContext
{
    Preferences& preferences;
    const Clock& clock;
    Scheduler& scheduler;
    const DebugLog& log;
    const UsageLog& usage;
    const TextCatalogue& texts;
    FeedbackUpload& feedback;
};

// The small window of the quit flow: above every other window, the lock windows
// included, and without a way for the user to close it. It shows the count-down
// first and the reasons after it.
class quittingWindow : public QWidget
{
    Q_OBJECT
public:
    explicit quittingWindow(QuitFlowContext ctx, QWidget* parent = nullptr);
    ~quittingWindow() override;

    // The panel's Quit: opens the flow, or leaves a running one where it is.
    void btnQuitClicked();
    void showCountDown();
    void showConfirm();
    // Keeps the window above a lock that came up after it.
    void bringToFront();

    quitCountDownVc& getQuittingCountDownVcObject() { return *m_countDown; }
    quittingConfirmVc& getQuittingConfirmVcObject() { return *m_confirm; }
    QWidget* currentContent() const;

    // The real end of the program; the application supplies it.
    std::function<void()> menuItem_Quit;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QuitFlowContext c;
    quitCountDownVc* m_countDown = nullptr;
    quittingConfirmVc* m_confirm = nullptr;
};

} // namespace velmora
