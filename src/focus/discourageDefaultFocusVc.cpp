#include "discourageDefaultFocusVc.h"

#include "Style.h"
#include "TextCatalogue.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora {

discourageDefaultFocusVc::discourageDefaultFocusVc(const TextCatalogue& texts, Scheduler& scheduler)
    : timer(scheduler, this)
    , m_texts(texts)
{
    setObjectName(QStringLiteral("discourageDefaultFocusVc"));
    setStyleSheet(style::dialogStyleSheet());
    lblTitle = style::title(this, "lblTitle");
    lblTimer = style::body(this, "lblTimer");
    btnShutUp = style::primaryButton(this, "btnShutUp");
    btnCancel = style::quietButton(this, "btnCancel");
    btnCancel->setDefault(true);
    connect(btnShutUp, &QPushButton::clicked, this, [this] { btnShutupClicked(); });
    connect(btnCancel, &QPushButton::clicked, this, [this] { btnCancelClicked(); });
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(28, 20, 28, 20);
    layout->addWidget(lblTitle);
    layout->addWidget(lblTimer);
    layout->addWidget(btnCancel);
    layout->addWidget(btnShutUp);
}

QString discourageDefaultFocusVc::text(const char* key, const QString& fallback) const
{
    return m_texts.text({"focusInfo", "discourageDefaultFocusInfo"}, key, fallback);
}

void discourageDefaultFocusVc::presentOn(QWidget* window)
{
    setParent(window, Qt::Sheet | Qt::Dialog);
    setWindowModality(Qt::WindowModal);
    setWindowTitle(QStringLiteral("Velmora"));
    show();
    raise();
    activateWindow();
}

void discourageDefaultFocusVc::resetData()
{
    timer.stop();
    btnShutUp->show();
    btnCancel->show();
    lblTimer->hide();
    style::setText(lblTitle,
                   text("title", QStringLiteral("Are you sure? It's pretty easy to get distracted without "
                                                "using a more restrictive focus mode")));
    style::setText(btnCancel, text("buttonCancelText", QStringLiteral("Bah I guess you're right - CANCEL!")));
    style::setText(btnShutUp, text("buttonShutUpText", QStringLiteral("Shutup I know what I'm doing")));
    btnCancel->setFocus();
}

void discourageDefaultFocusVc::btnShutupClicked()
{
    btnShutUp->hide();
    btnCancel->hide();
    lblTimer->show();
    style::setText(lblTitle, text("titleGoodLuck", QStringLiteral("Ok good luck! (You'll need it 😅)")));
    timer.start(
        kSeconds, [this](const QString& remaining) { style::setText(lblTimer, remaining); },
        [this] {
            QWidget* window = parentWidget();
            hide();
            if (onTimeServed)
                onTimeServed(window);
        });
}

void discourageDefaultFocusVc::btnCancelClicked()
{
    // Once the count runs there is no way back.
    if (timer.isRunning())
        return;
    QWidget* window = parentWidget();
    hide();
    if (onCancel)
        onCancel(window);
}

void discourageDefaultFocusVc::hideEvent(QHideEvent* event)
{
    timer.stop();
    QDialog::hideEvent(event);
}

} // namespace velmora
