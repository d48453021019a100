#include "quittingConfirmVc.h"

#include "DurationTexts.h"

#include "DebugLog.h"
#include "FeedbackUpload.h"
#include "quitCountDownVc.h"
#include "Style.h"
#include "TextCatalogue.h"
#include "UsageLog.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora {

namespace {
const QString kEmergency = QStringLiteral("I've got an emergency");
const QString kAppIsBroken = QStringLiteral("The app is broken");
const QString kSomethingElse = QStringLiteral("Something else");
} // namespace

quittingConfirmVc::quittingConfirmVc(QuitFlowContext ctx, QWidget* parent)
    : QWidget(parent)
    , countDown(ctx.scheduler, this)
    , c(ctx)
{
    setObjectName(QStringLiteral("quittingConfirmVc"));
    lblTitle = style::title(this, "lblTitle");
    lblSubTitle = style::body(this, "lblSubTitle");
    popUpBtnReasons = new QComboBox(this);
    popUpBtnReasons->setObjectName(QStringLiteral("popUpBtnReasons"));
    popUpBtnReasons->setAccessibleName(QStringLiteral("Reason"));
    lblDescription = style::body(this, "lblDescription");
    lblTimer = style::title(this, "lblTimer");
    lblTimer->setProperty("role", QStringLiteral("clock"));
    lblTitleEmail = style::body(this, "lblTitleEmail");
    textFieldEmail = new QLineEdit(this);
    textFieldEmail->setObjectName(QStringLiteral("textFieldEmail"));
    textFieldEmail->setAccessibleName(QStringLiteral("Email"));
    textView = new QPlainTextEdit(this);
    textView->setObjectName(QStringLiteral("textView"));
    textView->setAccessibleName(QStringLiteral("Feedback"));
    textView->setTabChangesFocus(true);
    textView->setMinimumHeight(120);
    btnQuit = style::primaryButton(this, "btnQuit");

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(32, 24, 32, 24);
    layout->setSpacing(14);
    layout->addWidget(lblTitle);
    layout->addWidget(lblSubTitle);
    layout->addWidget(popUpBtnReasons, 0, Qt::AlignCenter);
    layout->addWidget(lblDescription);
    layout->addWidget(textView);
    layout->addWidget(lblTitleEmail);
    layout->addWidget(textFieldEmail);
    layout->addWidget(lblTimer);
    layout->addWidget(btnQuit, 0, Qt::AlignCenter);
    layout->addStretch();

    connect(popUpBtnReasons, &QComboBox::activated, this,
            [this](int index) { popUpBtnReasonsClicked(index); });
    connect(textView, &QPlainTextEdit::textChanged, this, [this] { textDidChange(); });
    connect(btnQuit, &QPushButton::clicked, this, [this] { btnQuitClicked(); });
}

QString quittingConfirmVc::text(const char* dropDown, const char* key, const QString& fallback) const
{
    return c.texts.text({"quitInfo", "quittingConfirmInfo", dropDown}, key, fallback);
}

void quittingConfirmVc::resetData()
{
    const TextCatalogue& t = c.texts;
    lblTitle->setText(t.text("quitInfo", "quittingTitle", QStringLiteral("Quitting..")));
    lblSubTitle->setText(t.text({"quitInfo", "quittingConfirmInfo"}, "subTitle",
                                QStringLiteral("Can you share why you're quitting?")));
    btnQuit->setText(t.text({"quitInfo", "quittingConfirmInfo"}, "buttonQuitText", QStringLiteral("Quit")));
    lblTitleEmail->setText(t.text({"quitInfo", "quittingConfirmInfo"}, "emailTitle",
                                  QStringLiteral("Your Email (if you want us to reply):")));
    dropDown_1_Description =
        text("dropDown_1", "description",
             QStringLiteral("Uh oh! Hope everything is ok. Restoring access immediately and quitting app."));
    dropDown_2_Description =
        text("dropDown_2", "description",
             QStringLiteral("Oh no! We're really sorry. Can you please let us know what happened?﹡"));
    dropDown_3_Description =
        text("dropDown_3", "description",
             QStringLiteral("Can you tell us why you want to stop getting habit + break notifications?﹡"));
    const QString farewell = QStringLiteral("We hope you will start the habits back soon! See you soon.");
    dropDown_2_FinalDescription = text("dropDown_2", "finalDescription", farewell);
    dropDown_3_FinalDescription = text("dropDown_3", "finalDescription", farewell);

    popUpBtnReasons->clear();
    popUpBtnReasons->addItems({text("dropDown_0", "title", QStringLiteral("Select a reason")),
                               text("dropDown_1", "title", kEmergency),
                               text("dropDown_2", "title", kAppIsBroken),
                               text("dropDown_3", "title", kSomethingElse)});
    popUpBtnReasons->setEnabled(true);
    popUpBtnReasons->setCurrentIndex(SelectReason);
    btnQuit->setEnabled(false);
    lblTimer->setText(clockText(kSeconds));
    for (QWidget* w : std::initializer_list<QWidget*>{textView, btnQuit, lblTimer, lblDescription,
                                                      lblTitleEmail, textFieldEmail})
        w->hide();
    popUpBtnReasons->setFocus();
}

void quittingConfirmVc::popUpBtnReasonsClicked(int index)
{
    switch (index) {
    case Emergency:
        for (QWidget* w : std::initializer_list<QWidget*>{btnQuit, textView, lblTitleEmail, textFieldEmail})
            w->hide();
        lblTimer->setText(clockText(kSeconds));
        lblTimer->show();
        lblDescription->setText(dropDown_1_Description);
        lblDescription->show();
        popUpBtnReasons->setEnabled(false);
        startTimer();
        return;
    case AppIsBroken:
        showTextEntry(dropDown_2_Description);
        return;
    case SomethingElse:
        showTextEntry(dropDown_3_Description);
        return;
    default:
        resetData();
        return;
    }
}

void quittingConfirmVc::showTextEntry(const QString& description)
{
    for (QWidget* w :
         std::initializer_list<QWidget*>{btnQuit, textView, lblDescription, lblTitleEmail, textFieldEmail})
        w->show();
    lblTimer->hide();
    textView->clear();
    textFieldEmail->clear();
    btnQuit->setEnabled(false);
    lblDescription->setText(description);
    textView->setFocus();
}

void quittingConfirmVc::textDidChange()
{
    btnQuit->setEnabled(!textView->toPlainText().isEmpty());
}

void quittingConfirmVc::btnQuitClicked()
{
    for (QWidget* w : std::initializer_list<QWidget*>{btnQuit, textView, lblTitleEmail, textFieldEmail})
        w->hide();
    lblTimer->setText(clockText(kSeconds));
    lblTimer->show();
    lblDescription->setText(popUpBtnReasons->currentIndex() == AppIsBroken ? dropDown_2_FinalDescription
                                                                           : dropDown_3_FinalDescription);
    lblDescription->show();
    popUpBtnReasons->setEnabled(false);
    startTimer();
}

bool quittingConfirmVc::isCounting() const
{
    return countDown.isRunning();
}

void quittingConfirmVc::startTimer()
{
    countDown.start(
        kSeconds, [this](const QString& text) { lblTimer->setText(text); }, [this] { timeIsUp(); });
}

void quittingConfirmVc::timeIsUp()
{
    switch (popUpBtnReasons->currentIndex()) {
    case Emergency:
        c.log.addLog(QStringLiteral("App Quit - I've got an emergency"));
        c.usage.addEntryInCsv({.logType = QStringLiteral("Quit"), .abortReason = kEmergency});
        quitOnce();
        return;
    case AppIsBroken: {
        c.log.addLog(QStringLiteral("App Quit - The app is broken"));
        // The upload promises an answer within its time-out; the flow does not
        // depend on that promise.
        c.scheduler.singleShot(FeedbackUpload::kTimeoutMs + 1000, this, [this] { quitOnce(); });
        c.feedback.getQuitJsonToUpload(textFieldEmail->text(), textView->toPlainText(), kAppIsBroken, this,
                                       [this] { c.scheduler.post(this, [this] { quitOnce(); }); });
        return;
    }
    case SomethingElse:
        c.log.addLog(QStringLiteral("App Quit - Something else"));
        c.usage.addEntryInCsv({.logType = QStringLiteral("Quit"),
                               .abortReason = kSomethingElse,
                               .feedback = textView->toPlainText()});
        quitOnce();
        return;
    default:
        return;
    }
}

void quittingConfirmVc::quitOnce()
{
    if (m_quitCalled)
        return;
    m_quitCalled = true;
    if (menuItem_Quit)
        menuItem_Quit();
}

} // namespace velmora
