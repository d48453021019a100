#include "quittingWindow.h"

#include "DebugLog.h"
#include "quitCountDownVc.h"
#include "quittingConfirmVc.h"
#include "Style.h"

#include <QCloseEvent>
#include <QStackedLayout>

namespace velmora {

quittingWindow::quittingWindow(QuitFlowContext ctx, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowStaysOnTopHint)
    , c(ctx)
{
    setObjectName(QStringLiteral("quittingWindow"));
    setWindowTitle(QStringLiteral("Velmora quit"));
    setStyleSheet(style::lockStyleSheet() +
                  QStringLiteral("QWidget#quittingWindow { background: #1e242b; }"
                                 "QPlainTextEdit { background: #2a323b; border: 1px solid #4a545e; "
                                 "border-radius: 8px; font-size: 18px; }"));
    setAttribute(Qt::WA_StyledBackground);
    resize(760, 620);

    m_countDown = new quitCountDownVc(c, this);
    m_confirm = new quittingConfirmVc(c, this);
    auto* stack = new QStackedLayout(this);
    stack->addWidget(m_countDown);
    stack->addWidget(m_confirm);

    m_countDown->onFinished = [this] { showConfirm(); };
    m_countDown->onClose = [this] { hide(); };
    m_confirm->menuItem_Quit = [this] {
        if (menuItem_Quit)
            menuItem_Quit();
    };
}

quittingWindow::~quittingWindow() = default;

void quittingWindow::btnQuitClicked()
{
    c.log.addLog(QStringLiteral("menu item Quit clicked by user"));
    if (isVisible()) {
        c.log.addLog(QStringLiteral("Quit window already visible"));
        return;
    }
    c.log.addLog(QStringLiteral("Showing quit window"));
    showCountDown();
    show();
    m_countDown->resetData();
    bringToFront();
}

void quittingWindow::showCountDown()
{
    static_cast<QStackedLayout*>(layout())->setCurrentWidget(m_countDown);
}

void quittingWindow::showConfirm()
{
    static_cast<QStackedLayout*>(layout())->setCurrentWidget(m_confirm);
    m_confirm->resetData();
}

QWidget* quittingWindow::currentContent() const
{
    return static_cast<QStackedLayout*>(layout())->currentWidget();
}

void quittingWindow::bringToFront()
{
    if (!isVisible())
        return;
    raise();
    activateWindow();
}

// Neither the title bar nor a request to close every window ends the flow.
void quittingWindow::closeEvent(QCloseEvent* event)
{
    event->ignore();
}

} // namespace velmora
