#pragma once

#include "RoutineContext.h"

#include <functional>
#include <optional>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

namespace velmora {

class FeedbackUpload;
class ViewController;
class abortDoneVc;
class abortingCantHandleVc;
class abortingConfirmVc;
class abortingCountDownVc;
class enterPasswordVc;
class shutOffTimeVc;

// The ways out of the lock window: giving up a routine (password, ten seconds,
// a reason, its outcome) and the night lock's emergency unlock. Owns their
// screens and places them in the lock window's container.
class WayOut : public QObject
{
    Q_OBJECT
public:
    WayOut(RoutineContext ctx, ViewController& main, FeedbackUpload& upload, QString packagedSettingsPath,
           std::function<void()> quitAndRestartApp, QObject* parent = nullptr);
    ~WayOut() override;

    void btnAbortClicked();
    void abortCancel();
    void showPasswordView();
    void showAbortStartView();
    void showAbortConfirmationView();
    void showAbortStartSmallVc(bool isAnyHabitRemoved);
    void showAbortDisableMorningRoutineVc();
    void showAbortDoneView();
    void emergencyStartDone();
    void disableApp();

    bool isPasswordViewShown() const;

    abortingCountDownVc& abortingCountDownVcObj() { return *m_countDown; }
    abortingConfirmVc& abortingConfirmVcObj() { return *m_confirm; }
    abortingCantHandleVc& abortingCantHandleVcObj() { return *m_cantHandle; }
    abortDoneVc& abortDoneVcObj() { return *m_done; }
    shutOffTimeVc& shutOffTimeVcObj() { return *m_shutOff; }
    enterPasswordVc& enterPasswordVcObj() { return *m_password; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void placeAbortScreen(QWidget* screen);
    void hidePasswordView();
    void passwordCorrect();
    void passwordCancelled();
    void emergencyChosen();
    void appBrokenChosen(const QString& email, const QString& feedback);
    void startSmallChosen();
    void somethingElseChosen(const QString& feedback);
    void cantHandleAnswered(const QString& feedback);
    void addAbortRow(const QString& reason, const QString& feedback = {});

    RoutineContext c;
    ViewController& m_main;
    FeedbackUpload& m_upload;
    QString m_packagedSettingsPath;
    std::function<void()> m_quitAndRestartApp;

    abortingCountDownVc* m_countDown = nullptr;
    abortingConfirmVc* m_confirm = nullptr;
    abortingCantHandleVc* m_cantHandle = nullptr;
    abortDoneVc* m_done = nullptr;
    shutOffTimeVc* m_shutOff = nullptr;
    enterPasswordVc* m_password = nullptr;
    QPointer<ViewController> m_mainAlive;
    // The page the paused habit was playing, to play again on the way back.
    std::optional<QUrl> m_pausedUrl;
};

} // namespace velmora
