#include "LockWindows.h"

#include "LockShield.h"
#include "Scheduler.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>

namespace velmora {

static constexpr Qt::WindowFlags kLockFlags =
    Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::NoDropShadowWindowHint;

QList<QScreen*> lockableScreens()
{
    const QList<QScreen*> all = QGuiApplication::screens();
    QList<QScreen*> out;
    for (QScreen* screen : all) {
        const QRect g = screen->geometry();
        bool spansOthers = false;
        for (QScreen* other : all) {
            if (other != screen && g.contains(other->geometry()) && g != other->geometry())
                spansOthers = true;
        }
        bool duplicate = false;
        for (QScreen* kept : out) {
            if (kept->geometry() == g)
                duplicate = true;
        }
        if (!spansOthers && !duplicate)
            out << screen;
    }
    return out;
}

QScreen* firstLockScreen()
{
    const QList<QScreen*> screens = lockableScreens();
    QScreen* primary = QGuiApplication::primaryScreen();
    if (primary && screens.contains(primary))
        return primary;
    return screens.isEmpty() ? primary : screens.first();
}

static void placeOnScreen(QWidget* window, QScreen* screen)
{
    if (!screen)
        return;
    window->winId(); // make the native window so that it can be moved to the screen
    if (QWindow* handle = window->windowHandle())
        handle->setScreen(screen);
    window->setGeometry(screen->geometry());
}

CustomWindow::CustomWindow(QWidget* content, Scheduler& scheduler, LockShield* shield)
    : QWidget(nullptr, kLockFlags)
    , m_scheduler(scheduler)
    , m_shield(shield)
{
    setObjectName(QStringLiteral("mainWindow"));
    setWindowTitle(QStringLiteral("Velmora lock"));
    setAttribute(Qt::WA_DeleteOnClose, false);
    setAutoFillBackground(true);
    QPalette p = palette();
    p.setColor(QPalette::Window, QColor(0x1e, 0x24, 0x2b));
    setPalette(p);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    // The screen decides the size; the content fits itself to it.
    layout->setSizeConstraint(QLayout::SetNoConstraint);
    layout->addWidget(content);
}

void CustomWindow::setframe()
{
    placeOnScreen(this, firstLockScreen());
}

void CustomWindow::setIsVisible(bool visible)
{
    if (!visible) {
        giveUpKeyboard();
        hide();
        if (m_shield)
            m_shield->setLockUp(false);
        return;
    }
    setframe();
    if (m_shield && !m_prepared) {
        m_shield->prepare(this, LockShield::Surface::Lock);
        m_prepared = true;
    }
    if (m_shield)
        m_shield->setLockUp(true);
    showFullScreen();
    raise();
    activateWindow();
    grabKeyboardWhenMapped(40);
}

// X refuses a keyboard grab for a window that is not mapped yet, and a freshly
// shown window is mapped only once the server has answered; so try again for a
// couple of seconds until the grab holds.
void CustomWindow::takeKeyboard()
{
    grabKeyboardWhenMapped(40);
}

void CustomWindow::giveUpKeyboard()
{
    if (QWindow* handle = windowHandle())
        handle->setKeyboardGrabEnabled(false);
    if (m_shield)
        m_shield->setHoldsKeyboard(false);
}

void CustomWindow::grabKeyboardWhenMapped(int attemptsLeft)
{
    if (!isVisible() || !mayTakeKeyboard())
        return;
    QWindow* handle = windowHandle();
    // Where a shield holds the keyboard for the lock, the window system's own grab
    // may not exist at all.
    if (handle && handle->isExposed() && (handle->setKeyboardGrabEnabled(true) || m_shield)) {
        activateWindow();
        if (m_shield)
            m_shield->setHoldsKeyboard(true);
        return;
    }
    if (attemptsLeft > 0)
        m_scheduler.singleShot(50, this, [this, attemptsLeft] { grabKeyboardWhenMapped(attemptsLeft - 1); });
}

void CustomWindow::closeEvent(QCloseEvent* event)
{
    // The window manager's close would lift the lock: refuse it.
    event->ignore();
}

void CustomWindow::changeEvent(QEvent* event)
{
    // A lock that can be minimised is no lock.
    if (event->type() == QEvent::WindowStateChange && isVisible() && (windowState() & Qt::WindowMinimized))
        setWindowState((windowState() & ~Qt::WindowMinimized) | Qt::WindowFullScreen);
    QWidget::changeEvent(event);
}

blankController::blankController(const QString& appName, QWidget* parent)
    : QWidget(parent, kLockFlags | Qt::WindowDoesNotAcceptFocus)
{
    // The main lock window keeps the keyboard; its neighbours never take it.
    setAttribute(Qt::WA_ShowWithoutActivating);
    setWindowTitle(QStringLiteral("Velmora blank"));
    setAutoFillBackground(true);
    QPalette p = palette();
    p.setColor(QPalette::Window, QColor(0x1e, 0x24, 0x2b));
    p.setColor(QPalette::WindowText, QColor(0xd8, 0xde, 0xe6));
    setPalette(p);
    auto* layout = new QVBoxLayout(this);
    lblTitle = new QLabel(appName, this);
    lblTitle->setObjectName(QStringLiteral("lblTitle"));
    lblTitle->setAlignment(Qt::AlignCenter);
    QFont f = lblTitle->font();
    f.setPointSize(36);
    lblTitle->setFont(f);
    layout->addWidget(lblTitle);
}

void blankController::closeEvent(QCloseEvent* event)
{
    event->ignore();
}

LockWindows::LockWindows(CustomWindow& mainWindow, Scheduler& scheduler, const QString& appName,
                         LockShield* shield)
    : m_main(mainWindow)
    , m_scheduler(scheduler)
    , m_appName(appName)
    , m_shield(shield)
{
}

LockWindows::~LockWindows()
{
    for (const auto& window : std::as_const(m_windows))
        delete window.data();
}

void LockWindows::resetWin(QWidget* window)
{
    window->setAttribute(Qt::WA_DeleteOnClose, false);
    window->setWindowFlags(kLockFlags | Qt::WindowDoesNotAcceptFocus);
}

void LockWindows::showExtraWindows()
{
    const QList<QScreen*> screens = lockableScreens();
    if (screens.size() <= 1) {
        hideBlankWindowInSecondaryMonitor();
        return;
    }
    if (m_windows.isEmpty()) {
        QScreen* mainScreen = firstLockScreen();
        for (QScreen* screen : screens) {
            if (screen == mainScreen)
                continue;
            auto* window = new blankController(m_appName);
            resetWin(window);
            placeOnScreen(window, screen);
            if (m_shield)
                m_shield->prepare(window, LockShield::Surface::Blank);
            m_windows << window;
        }
    }
    for (const auto& window : std::as_const(m_windows)) {
        if (window)
            window->lblTitle->setText(m_appName);
        if (window && !window->isVisible())
            window->showFullScreen();
    }
    // The main window stays above its blank neighbours and keeps the keyboard.
    if (m_main.isVisible()) {
        m_main.raise();
        m_main.activateWindow();
    }
    m_scheduler.post(this, [this] {
        setframe();
        if (m_main.isVisible()) {
            m_main.raise();
            m_main.activateWindow();
        }
    });
}

void LockWindows::setframe()
{
    for (const auto& window : std::as_const(m_windows)) {
        if (window && window->screen())
            window->setGeometry(window->screen()->geometry());
    }
}

void LockWindows::hideBlankWindowInSecondaryMonitor()
{
    for (const auto& window : std::as_const(m_windows)) {
        if (window) {
            window->hide();
            window->deleteLater();
        }
    }
    m_windows.clear();
}

void LockWindows::screenChanged()
{
    if (!isMainWindowLodded() || !m_main.isVisible())
        return;
    if (!QGuiApplication::screens().isEmpty())
        m_main.setframe();
    hideBlankWindowInSecondaryMonitor();
    showExtraWindows();
}

} // namespace velmora
