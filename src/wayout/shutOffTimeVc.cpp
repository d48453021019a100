#include "shutOffTimeVc.h"

#include "PasswordStore.h"
#include "RunState.h"
#include "Style.h"
#include "TextCatalogue.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora {

namespace {

QString hourMinute(const std::optional<Time>& time)
{
    if (!time)
        return {};
    return QStringLiteral("%1:%2")
        .arg(time->hour, 2, 10, QLatin1Char('0'))
        .arg(time->minute, 2, 10, QLatin1Char('0'));
}

} // namespace

shutOffTimeVc::shutOffTimeVc(RoutineContext ctx, QWidget* parent)
    : QWidget(parent)
    , countDown(ctx.scheduler, this)
    , c(ctx)
{
    setObjectName(QStringLiteral("shutOffTimeVc"));
    auto* outer = new QVBoxLayout(this);
    auto* layout = new QVBoxLayout;
    layout->setSpacing(18);
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    row->addLayout(layout, 6);
    row->addStretch(1);
    outer->addStretch();
    outer->addLayout(row);
    outer->addStretch();

    imgViewGif = new QLabel(this);
    imgViewGif->setObjectName(QStringLiteral("imgViewGif"));
    imgViewGif->setAlignment(Qt::AlignCenter);
    lblTitle = style::title(this, "lblTitle");
    lblSubTitle = style::body(this, "lblSubTitle");
    btnGetAccessNow = style::quietButton(this, "btnGetAccessNow");
    lbl2 = style::body(this, "lbl2");
    textView = new QPlainTextEdit(this);
    textView->setObjectName(QStringLiteral("textView"));
    textView->setAccessibleName(QStringLiteral("textView"));
    textView->setMinimumHeight(120);
    textView->setStyleSheet(
        QStringLiteral("background: #2a323b; border: 1px solid #4a545e; border-radius: 8px;"));
    lbltimer = style::title(this, "lbltimer");
    lbltimer->setProperty("role", QStringLiteral("clock"));
    btnUnlock = style::primaryButton(this, "btnUnlock");

    layout->addWidget(imgViewGif);
    layout->addWidget(lblTitle);
    layout->addWidget(lblSubTitle);
    layout->addWidget(lbl2);
    layout->addWidget(textView);
    layout->addWidget(lbltimer);
    layout->addWidget(btnUnlock, 0, Qt::AlignHCenter);
    layout->addWidget(btnGetAccessNow, 0, Qt::AlignHCenter);

    connect(btnGetAccessNow, &QPushButton::clicked, this, &shutOffTimeVc::btnGetAccessNowClicked);
    connect(btnUnlock, &QPushButton::clicked, this, &shutOffTimeVc::btnUnlockClicked);
}

void shutOffTimeVc::resetView()
{
    countDown.stop();
    style::showAnimation(imgViewGif, QStringLiteral("Yawn_small"), c.state.kIsReducedMotion);
    const QString shutOff = hourMinute(c.state.shutOffTime);
    const QString start = hourMinute(c.state.startTime);
    lblTitle->setText(c.texts.text("shutOffTimeInfo", "title", QStringLiteral("Time to wind down")));
    lblSubTitle->setText(fillTemplate(
        c.texts.text(
            "shutOffTimeInfo", "subTitle",
            QStringLiteral("You told me you wanted to stay off your computer from <SHUTOFFTIME> to "
                           "<STARTTIME>. Enjoy your evening and sleep well. Look forward to helping you "
                           "with your morning routine tomorrow.")),
        {{"<SHUTOFFTIME>", shutOff}, {"<STARTTIME>", start}}));
    btnGetAccessNow->setText(
        c.texts.text("shutOffTimeInfo", "buttonAbortText", QStringLiteral("Get access now")));
    textView->clear();
    lbl2->hide();
    textView->hide();
    btnUnlock->hide();
    lbltimer->hide();
    btnGetAccessNow->show();
    step = Resting;
}

void shutOffTimeVc::btnGetAccessNowClicked()
{
    if (password::isSet(c.preferences) && showPasswordView)
        showPasswordView();
    else
        getAccessNowClicked();
}

void shutOffTimeVc::getAccessNowClicked()
{
    btnGetAccessNow->hide();
    textView->show();
    lbl2->show();
    lbltimer->show();
    btnUnlock->show();

    const auto info = [this](const char* key, const QString& fallback) {
        return c.texts.text({"shutOffTimeInfo", "shutOffAbortInfo"}, key, fallback);
    };
    lblTitle->setText(info("title", QStringLiteral("Emergency?")));
    lblSubTitle->setText(
        info("subTitle", QStringLiteral("Are you sure you want to do this? Using your computer "
                                        "late at night could mess up your sleep. Please take 30 "
                                        "seconds to reflect on whether this is really an "
                                        "emergency or whether it can wait.")));
    lbl2->setText(info("shareFeedbackText", QStringLiteral("Feel free to write an explanation here:")));
    // The common Cancel word applies only where the catalogue has this section.
    btnUnlock->setText(c.texts.object({"shutOffTimeInfo"}, "shutOffAbortInfo") ? c.texts.buttonCancelText
                                                                               : QStringLiteral("Cancel"));
    style::stopAnimation(imgViewGif);
    step = Reflecting;
    startTimer(kReflectionSeconds);
}

void shutOffTimeVc::startTimer(int duration)
{
    lbltimer->show();
    countDown.start(
        duration, [this](const QString& text) { lbltimer->setText(text); }, [this] { timerEnded(); });
}

void shutOffTimeVc::timerEnded()
{
    if (step == Reflecting) {
        step = Unlocking;
        // The same button now unlocks; it waits as long as the user likes.
        btnUnlock->setText(c.texts.text({"shutOffTimeInfo", "shutOffAbortInfo"}, "buttonUnlockText",
                                        QStringLiteral("Unlock")));
        lbltimer->hide();
        return;
    }
    if (emergencyStartDone)
        emergencyStartDone();
}

void shutOffTimeVc::btnUnlockClicked()
{
    if (step == Reflecting) {
        // Back to rest; what was typed is dropped.
        if (onCancelled)
            onCancelled();
        countDown.stop();
        return;
    }
    if (step != Unlocking || countDown.isRunning())
        return;
    if (onUnlockClicked)
        onUnlockClicked(textView->toPlainText());
    const QString start = hourMinute(c.state.startTime);
    lblSubTitle->setText(
        fillTemplate(
            c.texts.text({"shutOffTimeInfo", "shutOffAbortDoneInfo"}, "subTitle",
                         QStringLiteral("Sorry to hear that something bad has happened and you absolutely "
                                        "need to use your computer late at night. We’re unlocking your "
                                        "machine now. Your morning routine will still activate at "
                                        "<STARTTIME>. Hope you’re able to catch up on sleep during the "
                                        "day.")),
            {{"<STARTTIME>", start}}) +
        QStringLiteral("\n\n\n") +
        c.texts.text({"shutOffTimeInfo", "shutOffAbortDoneInfo"}, "unlockingText",
                     QStringLiteral("Unlocking in")));
    lbl2->clear();
    startTimer(kUnlockSeconds);
    btnUnlock->hide();
    textView->hide();
}

} // namespace velmora
