#pragma once

#include "Scheduler.h"

#include <functional>
#include <optional>
#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;

namespace velmora {

class Clock;
class DebugLog;
class Preferences;
class TextCatalogue;

// The password prompt, laid over whatever it guards: the lock window (an abort,
// the night's emergency unlock), the quit window, the preferences. Each place
// says what follows through the two callbacks.
class enterPasswordVc : public QWidget
{
    Q_OBJECT
public:
    struct Deps
    {
        Preferences& preferences;
        const Clock& clock;
        Scheduler& scheduler;
        const DebugLog& log;
        const TextCatalogue& texts;
    };
    enterPasswordVc(Deps deps, QWidget* parent = nullptr);

    // Fills the prompt. In the lock window no reset can be started and errors
    // show in lblError; elsewhere they show as alerts.
    void viewWillAppear(bool inLockWindow);
    void btnOkClicked();
    void btnCancelClicked();
    void btnResetPasswordClicked();

    std::function<void()> onCorrect;
    std::function<void()> onCancel;
    // The yes/no question and the notice of a reset; tests replace them.
    std::function<bool(const QString& title, const QString& text)> confirm;
    std::function<void(const QString& title, const QString& text)> inform;

    bool isCurrentViewInMainWindow = false;
    QLabel* lblTitle = nullptr;
    QLineEdit* textFieldPassword = nullptr;
    QLabel* lblError = nullptr;
    QPushButton* btnOk = nullptr;
    QPushButton* btnCancel = nullptr;
    QPushButton* btnResetPassword = nullptr;

private:
    Deps d;
    std::optional<TimerId> timerCheckClearPasswordTime;
};

} // namespace velmora
