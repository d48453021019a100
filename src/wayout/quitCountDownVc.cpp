#include "quitCountDownVc.h"

#include "DebugLog.h"
#include "DurationTexts.h"
#include "enterPasswordVc.h"
#include "PasswordStore.h"
#include "Style.h"
#include "TextCatalogue.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora {

quitCountDownVc::quitCountDownVc(QuitFlowContext ctx, QWidget* parent)
    : QWidget(parent)
    , countDown(ctx.scheduler, this)
    , c(ctx)
{
    setObjectName(QStringLiteral("quitCountDownVc"));
    lblTitle = style::title(this, "lblTitle");
    lblSubtile = style::body(this, "lblSubtile");
    lblMessage = style::body(this, "lblMessage");
    lblPleaseEmail = style::body(this, "lblPleaseEmail");
    lblEmailId = style::body(this, "lblEmailId");
    lblEmailId->setTextInteractionFlags(Qt::TextSelectableByMouse);
    lblSeconds = style::title(this, "lblSeconds");
    lblSeconds->setProperty("role", QStringLiteral("clock"));
    btnCancelAbort = style::primaryButton(this, "btnCancelAbort");

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(32, 24, 32, 24);
    layout->setSpacing(14);
    layout->addWidget(lblTitle);
    layout->addWidget(lblSubtile);
    layout->addWidget(lblMessage);
    auto* email = new QHBoxLayout;
    email->addStretch();
    email->addWidget(lblPleaseEmail);
    email->addWidget(lblEmailId);
    email->addStretch();
    layout->addLayout(email);
    layout->addWidget(lblSeconds);
    layout->addWidget(btnCancelAbort, 0, Qt::AlignCenter);

    connect(btnCancelAbort, &QPushButton::clicked, this, [this] { btnCancelAbortClicked(); });
}

void quitCountDownVc::resetData()
{
    const TextCatalogue& t = c.texts;
    lblTitle->setText(t.text("quitInfo", "quittingTitle", QStringLiteral("Quitting..")));
    lblSubtile->setText(
        t.text({"quitInfo", "quittingCountDownInfo"}, "subTitle",
               QStringLiteral(
                   "Are you sure you want to give up on your habits? Please take 10 seconds to reflect on "
                   "whether you are serious about quitting.")));
    lblMessage->setText(
        t.text({"quitInfo", "quittingCountDownInfo"}, "message",
               QStringLiteral(
                   "While you wait, reflect on why you’re doing this. If it was because your morning routine "
                   "was too ambitious, perhaps scale it back to only be a few minutes long so that it’s "
                   "easier to do it than not do it. If you’re aborting because the app is broken, really "
                   "sorry!!")));
    lblPleaseEmail->setText(
        t.text({"quitInfo", "quittingCountDownInfo"}, "pleaseEmailText", QStringLiteral("Please email")));
    lblEmailId->setText(t.emailID);
    btnCancelAbort->setText(t.text({"quitInfo", "quittingCountDownInfo"}, "buttonQuitCancelText",
                                   QStringLiteral("I didn’t mean it. Let me do my habits!")));

    countDown.stop();
    lblSeconds->setText(clockText(kSeconds));

    if (!password::isSet(c.preferences)) {
        if (enterPasswordVcObj)
            enterPasswordVcObj->hide();
        startTimer();
        return;
    }
    if (!enterPasswordVcObj) {
        enterPasswordVcObj = new enterPasswordVc({c.preferences, c.clock, c.scheduler, c.log, c.texts}, this);
        enterPasswordVcObj->setAutoFillBackground(true);
        enterPasswordVcObj->onCorrect = [this] { startTimer(); };
        enterPasswordVcObj->onCancel = [this] {
            if (onClose)
                onClose();
        };
    }
    enterPasswordVcObj->setGeometry(rect());
    enterPasswordVcObj->viewWillAppear(false);
    enterPasswordVcObj->show();
    enterPasswordVcObj->raise();
    c.log.addLog(QStringLiteral("Showing enter password view from quit"));
}

void quitCountDownVc::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (enterPasswordVcObj)
        enterPasswordVcObj->setGeometry(rect());
}

bool quitCountDownVc::isPasswordViewShown() const
{
    return enterPasswordVcObj && !enterPasswordVcObj->isHidden();
}

bool quitCountDownVc::isCounting() const
{
    return countDown.isRunning();
}

void quitCountDownVc::startTimer()
{
    countDown.start(
        kSeconds, [this](const QString& text) { lblSeconds->setText(text); },
        [this] {
            if (onFinished)
                onFinished();
        });
}

void quitCountDownVc::btnCancelAbortClicked()
{
    countDown.stop();
    if (onClose)
        onClose();
}

} // namespace velmora
