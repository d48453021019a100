#pragma once

#include <functional>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QWidget>

class QLabel;
class QScreen;

namespace velmora {

class LockShield;
class Scheduler;

// The main lock window: frameless, above every other window, on the first
// screen, and holding the keyboard while it is up.
class CustomWindow : public QWidget
{
    Q_OBJECT
public:
    // shield: what the desktop is asked to do for the lock; none where the windows hold by themselves.
    CustomWindow(QWidget* content, Scheduler& scheduler, LockShield* shield = nullptr);
    void setframe();
    // Shows or hides without ever closing: the window lives as long as the program.
    void setIsVisible(bool visible);
    // The lock holds the keyboard, except while one of the program's own windows
    // above it (the quit flow, the preferences) needs typing.
    std::function<bool()> mayTakeKeyboard = [] { return true; };
    void takeKeyboard();
    void giveUpKeyboard();

Q_SIGNALS:
    void keyPressed(QKeyEvent* event);

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void grabKeyboardWhenMapped(int attemptsLeft);

    Scheduler& m_scheduler;
    LockShield* m_shield;
    bool m_prepared = false;
};

// What a blank window shows: the program's name on a dark screen.
class blankController : public QWidget
{
    Q_OBJECT
public:
    blankController(const QString& appName, QWidget* parent = nullptr);
    QLabel* lblTitle = nullptr;

protected:
    void closeEvent(QCloseEvent* event) override;
};

// The screens the lock must cover. Aggregate screens that merely span others (X
// reports the whole framebuffer beside its monitors) are left out.
QList<QScreen*> lockableScreens();
QScreen* firstLockScreen();

// One blank window on each screen but the main lock window's.
class LockWindows : public QObject
{
    Q_OBJECT
public:
    // appName is read each time the windows are shown: the catalogue may change it.
    LockWindows(CustomWindow& mainWindow, Scheduler& scheduler, const QString& appName,
                LockShield* shield = nullptr);
    // The blank windows have no parent: they go with the object that made them.
    ~LockWindows() override;

    void showExtraWindows();
    void hideBlankWindowInSecondaryMonitor();
    void setframe();
    // Follows monitors plugged in and out while the lock is up.
    void screenChanged();

    const QList<QPointer<blankController>>& arrWindows() const { return m_windows; }

    std::function<bool()> isMainWindowLodded = [] { return true; };

private:
    static void resetWin(QWidget* window);

    CustomWindow& m_main;
    Scheduler& m_scheduler;
    const QString& m_appName;
    LockShield* m_shield;
    QList<QPointer<blankController>> m_windows;
};

} // namespace velmora
