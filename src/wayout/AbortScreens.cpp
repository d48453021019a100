#include "AbortScreens.h"

#include "RunState.h"
#include "Style.h"
#include "TextCatalogue.h"

#include <QComboBox>
#include <QFile>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora {

namespace {

QString abortText(const TextCatalogue& texts, std::initializer_list<const char*> groups, const char* key,
                  const char* fallback)
{
    return texts.text(groups, key, QString::fromUtf8(fallback));
}

QString abortingTitle(const TextCatalogue& texts)
{
    return abortText(texts, {"abortInfo"}, "abortingTitle", "Aborting..");
}

// A centred column of limited width, as the routine screens have.
QVBoxLayout* column(QWidget* screen)
{
    auto* outer = new QVBoxLayout(screen);
    auto* inner = new QVBoxLayout;
    inner->setSpacing(18);
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    row->addLayout(inner, 6);
    row->addStretch(1);
    outer->addStretch();
    outer->addLayout(row);
    outer->addStretch();
    return inner;
}

QLineEdit* emailField(QWidget* parent, const char* objectName)
{
    auto* field = new QLineEdit(parent);
    field->setObjectName(QLatin1String(objectName));
    field->setAccessibleName(QLatin1String(objectName));
    field->setStyleSheet(QStringLiteral("font-size: 20px;"));
    return field;
}

QPlainTextEdit* feedbackView(QWidget* parent, const char* objectName)
{
    auto* view = new QPlainTextEdit(parent);
    view->setObjectName(QLatin1String(objectName));
    view->setAccessibleName(QLatin1String(objectName));
    view->setMinimumHeight(120);
    view->setStyleSheet(
        QStringLiteral("background: #2a323b; border: 1px solid #4a545e; border-radius: 8px;"));
    return view;
}

QFrame* box(QWidget* parent, const char* objectName)
{
    auto* frame = new QFrame(parent);
    frame->setObjectName(QLatin1String(objectName));
    auto* layout = new QVBoxLayout(frame);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(12);
    return frame;
}

} // namespace

// --- count-down -------------------------------------------------------------------

abortingCountDownVc::abortingCountDownVc(RoutineContext ctx, QWidget* parent)
    : QWidget(parent)
    , countDown(ctx.scheduler, this)
    , c(ctx)
{
    setObjectName(QStringLiteral("abortingCountDownVc"));
    QVBoxLayout* layout = column(this);
    lblTitle = style::title(this, "lblTitle");
    lblSubtile = style::body(this, "lblSubtile");
    lblMessage = style::body(this, "lblMessage");
    lblPleaseEmail = style::body(this, "lblPleaseEmail");
    lblEmailId = style::body(this, "lblEmailId");
    lblEmailId->setTextInteractionFlags(Qt::TextSelectableByMouse);
    lblSeconds = style::title(this, "lblSeconds");
    lblSeconds->setProperty("role", QStringLiteral("clock"));
    btnCancelAbort = style::primaryButton(this, "btnCancelAbort");
    for (QWidget* w : std::initializer_list<QWidget*>{lblTitle, lblSubtile, lblSeconds, lblMessage,
                                                      lblPleaseEmail, lblEmailId})
        layout->addWidget(w);
    layout->addWidget(btnCancelAbort, 0, Qt::AlignHCenter);
    connect(btnCancelAbort, &QPushButton::clicked, this, &abortingCountDownVc::btnCancelAbortClicked);
}

void abortingCountDownVc::startTimer()
{
    const TextCatalogue& t = c.texts;
    lblTitle->setText(abortingTitle(t));
    lblSubtile->setText(
        abortText(t, {"abortInfo", "abortingCountDownInfo"}, "subTitle",
                  "Are you sure you want to give up on your habits? Please take 10 seconds to "
                  "reflect on whether you are serious about aborting."));
    lblMessage->setText(abortText(
        t, {"abortInfo", "abortingCountDownInfo"}, "message",
        "While you wait, reflect on why you’re doing this. If it was because your morning routine was too "
        "ambitious, perhaps scale it back to only be a few minutes long so that it’s easier to do it than "
        "not do "
        "it. If you’re aborting because the app is broken, really sorry!!"));
    lblPleaseEmail->setText(
        abortText(t, {"abortInfo", "abortingCountDownInfo"}, "pleaseEmailText", "Please email"));
    lblEmailId->setText(t.emailID);
    btnCancelAbort->setText(abortText(t, {"abortInfo", "abortingCountDownInfo"}, "buttonAbortCancelText",
                                      "I didn’t mean it. Let me do my habits!"));
    countDown.start(
        kSeconds, [this](const QString& text) { lblSeconds->setText(text); },
        [this] {
            if (onFinished)
                onFinished();
        });
}

void abortingCountDownVc::btnCancelAbortClicked()
{
    countDown.stop();
    if (onCancel)
        onCancel();
}

// --- reasons --------------------------------------------------------------------------

abortingConfirmVc::abortingConfirmVc(RoutineContext ctx, QWidget* parent)
    : QWidget(parent)
    , countDown(ctx.scheduler, this)
    , c(ctx)
{
    setObjectName(QStringLiteral("abortingConfirmVc"));
    QVBoxLayout* layout = column(this);
    lblTitle = style::title(this, "lblTitle");
    lblSubTitle = style::body(this, "lblSubTitle");
    imgViewGif = new QLabel(this);
    imgViewGif->setObjectName(QStringLiteral("imgViewGif"));
    imgViewGif->setAlignment(Qt::AlignCenter);
    popUpBtnReasons = new QComboBox(this);
    popUpBtnReasons->setObjectName(QStringLiteral("popUpBtnReasons"));
    popUpBtnReasons->setAccessibleName(QStringLiteral("popUpBtnReasons"));
    layout->addWidget(lblTitle);
    layout->addWidget(imgViewGif);
    layout->addWidget(lblSubTitle);
    layout->addWidget(popUpBtnReasons, 0, Qt::AlignHCenter);

    boxEmergency = box(this, "boxEmergency");
    lblDescriptionFirstBox = style::body(boxEmergency, "lblDescriptionFirstBox");
    lblTimerEmergency = style::title(boxEmergency, "lblTimerEmergency");
    boxEmergency->layout()->addWidget(lblDescriptionFirstBox);
    boxEmergency->layout()->addWidget(lblTimerEmergency);

    boxAppBroken = box(this, "boxAppBroken");
    lblDescriptionSecondBox = style::body(boxAppBroken, "lblDescriptionSecondBox");
    lblTitleEmailSecondBox = style::body(boxAppBroken, "lblTitleEmailSecondBox");
    textFieldEmailAppBroken = emailField(boxAppBroken, "textFieldEmailAppBroken");
    textViewAppBroken = feedbackView(boxAppBroken, "textViewAppBroken");
    btnDeactivateAppBroken = style::primaryButton(boxAppBroken, "btnDeactivateAppBroken");
    for (QWidget* w : std::initializer_list<QWidget*>{lblDescriptionSecondBox, textViewAppBroken,
                                                      lblTitleEmailSecondBox, textFieldEmailAppBroken})
        boxAppBroken->layout()->addWidget(w);
    static_cast<QVBoxLayout*>(boxAppBroken->layout())->addWidget(btnDeactivateAppBroken, 0, Qt::AlignHCenter);

    boxHabitsHard = box(this, "boxHabitsHard");
    lblDescriptionThirdBox = style::body(boxHabitsHard, "lblDescriptionThirdBox");
    btnStartSmall_boxHabit = style::primaryButton(boxHabitsHard, "btnStartSmall_boxHabit");
    btnDontWantRoutine_boxHabit = style::quietButton(boxHabitsHard, "btnDontWantRoutine_boxHabit");
    boxHabitsHard->layout()->addWidget(lblDescriptionThirdBox);
    auto* choices = new QHBoxLayout;
    choices->addStretch();
    choices->addWidget(btnDontWantRoutine_boxHabit);
    choices->addWidget(btnStartSmall_boxHabit);
    choices->addStretch();
    static_cast<QVBoxLayout*>(boxHabitsHard->layout())->addLayout(choices);

    boxSomethingElse = box(this, "boxSomethingElse");
    lblDescriptionFourthBox = style::body(boxSomethingElse, "lblDescriptionFourthBox");
    lblTitleEmailFourthBox = style::body(boxSomethingElse, "lblTitleEmailFourthBox");
    textFieldEmail_SomethingELse = emailField(boxSomethingElse, "textFieldEmail_SomethingELse");
    textViewSomethingElse = feedbackView(boxSomethingElse, "textViewSomethingElse");
    btnDeactivate_boxSomethingElse = style::primaryButton(boxSomethingElse, "btnDeactivate_boxSomethingElse");
    for (QWidget* w : std::initializer_list<QWidget*>{lblDescriptionFourthBox, textViewSomethingElse,
                                                      lblTitleEmailFourthBox, textFieldEmail_SomethingELse})
        boxSomethingElse->layout()->addWidget(w);
    static_cast<QVBoxLayout*>(boxSomethingElse->layout())
        ->addWidget(btnDeactivate_boxSomethingElse, 0, Qt::AlignHCenter);

    for (QFrame* b : {boxEmergency, boxAppBroken, boxHabitsHard, boxSomethingElse})
        layout->addWidget(b);

    connect(popUpBtnReasons, &QComboBox::currentIndexChanged, this,
            &abortingConfirmVc::popUpBtnReasonsClicked);
    connect(textViewAppBroken, &QPlainTextEdit::textChanged, this, &abortingConfirmVc::textDidChange);
    connect(textViewSomethingElse, &QPlainTextEdit::textChanged, this, &abortingConfirmVc::textDidChange);
    connect(btnDeactivateAppBroken, &QPushButton::clicked, this, [this] {
        // One upload per abort, however often the button is pressed.
        btnDeactivateAppBroken->setEnabled(false);
        popUpBtnReasons->setEnabled(false);
        if (onAppBroken)
            onAppBroken(textFieldEmailAppBroken->text(), textViewAppBroken->toPlainText());
    });
    connect(btnStartSmall_boxHabit, &QPushButton::clicked, this, [this] {
        if (onStartSmall)
            onStartSmall();
    });
    connect(btnDontWantRoutine_boxHabit, &QPushButton::clicked, this, [this] {
        if (onDontWantRoutine)
            onDontWantRoutine();
    });
    connect(btnDeactivate_boxSomethingElse, &QPushButton::clicked, this, [this] {
        if (onSomethingElse)
            onSomethingElse(textViewSomethingElse->toPlainText());
    });
    fillTexts();
}

void abortingConfirmVc::fillTexts()
{
    const TextCatalogue& t = c.texts;
    const auto info = [&t](const char* dropDown, const char* key, const char* fallback) {
        return abortText(t, {"abortInfo", "abortingConfirmInfo", dropDown}, key, fallback);
    };
    lblTitle->setText(abortingTitle(t));
    lblSubTitle->setText(
        abortText(t, {"abortInfo", "abortingConfirmInfo"}, "subTitle", "Can you share why you're aborting?"));
    allReasons = {
        info("dropDown_0", "title", "Select a reason"),
        info("dropDown_1", "title", "I've got an emergency"),
        info("dropDown_2", "title", "The app is broken"),
        info("dropDown_3", "title", "My habits are too hard - I can't handle them"),
        info("dropDown_4", "title", "Something else"),
    };
    const QSignalBlocker quiet(popUpBtnReasons);
    popUpBtnReasons->clear();
    popUpBtnReasons->addItems(allReasons);

    lblDescriptionFirstBox->setText(
        info("dropDown_1", "description",
             "Uh oh! Hope everything is ok. Restoring access immediately and cancelling "
             "habits for next 4 hours.. Your normal routine will resume after that."));
    lblDescriptionSecondBox->setText(
        info("dropDown_2", "description",
             "Oh no! We're really sorry. We'll deactivate all popups. Can you please "
             "let us know what happened?﹡"));
    lblTitleEmailSecondBox->setText(
        info("dropDown_2", "emailTitle", "Your Email (if you want us to reply):"));
    btnDeactivateAppBroken->setText(info("dropDown_2", "buttonDeactivateText", "Deactivate habit popups"));
    lblDescriptionThirdBox->setText(
        info("dropDown_3", "description",
             "Ah understandable. Would you like to reset your habits to be 30 seconds "
             "each and max 5 minutes? A short morning routine is better than nothing. "
             "You can build from there."));
    btnStartSmall_boxHabit->setText(info("dropDown_3", "buttonStartSmallText", "Yeah - I'll start small"));
    btnDontWantRoutine_boxHabit->setText(
        info("dropDown_3", "buttonDontWantText", "NO I don't want a \nmorning routine at all!"));
    lblDescriptionFourthBox->setText(info("dropDown_4", "description",
                                          "Can you tell us why you want to stop getting habit + break "
                                          "notifications?﹡"));
    lblTitleEmailFourthBox->setText(
        info("dropDown_4", "emailTitle", "Your Email (if you want us to reply):"));
    btnDeactivate_boxSomethingElse->setText(
        info("dropDown_4", "buttonDeactivateText", "Deactivate routine + breaks"));
}

void abortingConfirmVc::showOnly(QFrame* shown)
{
    for (QFrame* b : {boxEmergency, boxAppBroken, boxHabitsHard, boxSomethingElse})
        b->setVisible(b == shown);
}

void abortingConfirmVc::resetData()
{
    countDown.stop();
    fillTexts();
    style::showAnimation(imgViewGif, QStringLiteral("Smile _Small"), c.state.kIsReducedMotion);
    showOnly(nullptr);
    popUpBtnReasons->setEnabled(true);
    {
        const QSignalBlocker quiet(popUpBtnReasons);
        popUpBtnReasons->setCurrentIndex(SelectReason);
    }
    btnDeactivateAppBroken->setEnabled(false);
    btnDeactivate_boxSomethingElse->setEnabled(false);
    lblTimerEmergency->setText(QStringLiteral("00:05"));
}

void abortingConfirmVc::popUpBtnReasonsClicked(int index)
{
    switch (index) {
    case Emergency:
        lblTimerEmergency->setText(QStringLiteral("00:05"));
        showOnly(boxEmergency);
        // From here nothing stops the five seconds.
        popUpBtnReasons->setEnabled(false);
        countDown.start(
            kEmergencySeconds, [this](const QString& text) { lblTimerEmergency->setText(text); },
            [this] {
                if (onEmergencyOver)
                    onEmergencyOver();
            });
        break;
    case AppBroken:
        showOnly(boxAppBroken);
        textViewAppBroken->clear();
        btnDeactivateAppBroken->setEnabled(false);
        textFieldEmailAppBroken->clear();
        break;
    case HabitsHard:
        showOnly(boxHabitsHard);
        break;
    case SomethingElse:
        showOnly(boxSomethingElse);
        textViewSomethingElse->clear();
        btnDeactivate_boxSomethingElse->setEnabled(false);
        textFieldEmail_SomethingELse->clear();
        break;
    default:
        showOnly(nullptr);
        break;
    }
}

void abortingConfirmVc::textDidChange()
{
    // The feedback is compulsory, the address is not; a single blank counts. Once a
    // reason has been sent the list is locked, and an edit must not arm the button again.
    if (!popUpBtnReasons->isEnabled())
        return;
    const int index = popUpBtnReasons->currentIndex();
    if (index == AppBroken)
        btnDeactivateAppBroken->setEnabled(!textViewAppBroken->toPlainText().isEmpty());
    else if (index == SomethingElse)
        btnDeactivate_boxSomethingElse->setEnabled(!textViewSomethingElse->toPlainText().isEmpty());
}

// --- feedback before the end ------------------------------------------------------------

abortingCantHandleVc::abortingCantHandleVc(RoutineContext ctx, QWidget* parent)
    : QWidget(parent)
    , c(ctx)
{
    setObjectName(QStringLiteral("abortingCantHandleVc"));
    QVBoxLayout* layout = column(this);
    lblTitle = style::title(this, "lblTitle");
    lblSubtitle = style::body(this, "lblSubtitle");
    lblDescription = style::body(this, "lblDescription");
    lblDescription2 = style::body(this, "lblDescription2");
    lblDescription2->setTextFormat(Qt::RichText);
    lblDescription3 = style::body(this, "lblDescription3");
    lblTitleEmail = style::body(this, "lblTitleEmail");
    textFieldEmail = emailField(this, "textFieldEmail");
    textViewFeedback = feedbackView(this, "textViewFeedback");
    btnMain = style::primaryButton(this, "btnMain");
    for (QWidget* w :
         std::initializer_list<QWidget*>{lblTitle, lblSubtitle, lblDescription, lblDescription2,
                                         lblDescription3, textViewFeedback, lblTitleEmail, textFieldEmail})
        layout->addWidget(w);
    layout->addWidget(btnMain, 0, Qt::AlignHCenter);
    connect(textViewFeedback, &QPlainTextEdit::textChanged, this, &abortingCantHandleVc::textDidChange);
    connect(btnMain, &QPushButton::clicked, this, &abortingCantHandleVc::btnMainClicked);
}

void abortingCantHandleVc::resetView(bool isAnyHabitRemoved)
{
    textViewFeedback->clear();
    textFieldEmail->clear();
    btnMain->setEnabled(false);

    const TextCatalogue& t = c.texts;
    const char* use = isViewStartingSmall ? "startSmallInfo" : "givingUpInfo";
    const auto info = [&t, use](const char* key, const char* fallback) {
        return abortText(t, {"abortInfo", "abortingConfirmInfo", "dropDown_3", use}, key, fallback);
    };
    lblTitle->setText(abortingTitle(t));
    lblTitleEmail->setText(abortText(t, {"abortInfo", "abortingConfirmInfo", "dropDown_3"}, "emailTitle",
                                     "Your Email (if you want us to reply):"));
    QString changeSettings;
    if (isViewStartingSmall) {
        lblSubtitle->setText(info("subTitle", "Starting small.."));
        lblDescription->setText(
            isAnyHabitRemoved ? info("activityRemovedText", "We’ve reset your habits and break activities "
                                                            "for you. They’re now each only 30 seconds "
                                                            "long which should make it more manageable. We "
                                                            "removed a few activities so that the total "
                                                            "morning routine is 5 minutes long")
                              : info("activityResetText",
                                     "We’ve reset your habits and break activities for you. They’re now "
                                     "each only 30 seconds long which should make it more manageable."));
        changeSettings =
            info("changeSettingsText", "You can alter your settings later from the top toolbar icon <icon>");
        lblDescription3->setText(
            info("shareFeedbackText", "Can you share some feedback about why your habits were too hard?﹡"));
        btnMain->setText(info("buttonTitle", "Start shortened routine"));
    } else {
        lblSubtitle->setText(info("subTitle", "Giving up on your morning routine"));
        lblDescription->setText(info("description", "No problems. You’re in control."));
        changeSettings =
            info("changeSettingsText", "Feel free to reactivate Velmora from top toolbar icon <icon>");
        lblDescription3->setText(info("shareFeedbackText", "Can you share feedback about the app?﹡"));
        btnMain->setText(info("buttonTitle", "Deactivate routine + breaks"));
    }
    // "<icon>" stands for the tray icon itself.
    const QString icon = QFile::exists(QStringLiteral(":/images/clock22.png"))
                             ? QStringLiteral("<img src=\":/images/clock22.png\" height=\"20\">")
                             : QString();
    lblDescription2->setText(changeSettings.toHtmlEscaped().replace(QLatin1String("&lt;icon&gt;"), icon));
}

void abortingCantHandleVc::textDidChange()
{
    btnMain->setEnabled(!textViewFeedback->toPlainText().isEmpty());
}

void abortingCantHandleVc::btnMainClicked()
{
    if (!btnMain->isEnabled())
        return;
    btnMain->setEnabled(false);
    if (onMain)
        onMain(textViewFeedback->toPlainText());
}

// --- done --------------------------------------------------------------------------------

abortDoneVc::abortDoneVc(RoutineContext ctx, QWidget* parent)
    : QWidget(parent)
    , countDown(ctx.scheduler, this)
    , c(ctx)
{
    setObjectName(QStringLiteral("abortDoneVc"));
    QVBoxLayout* layout = column(this);
    lblTitle = style::title(this, "lblTitle");
    lblSubTitle = style::body(this, "lblSubTitle");
    layout->addWidget(lblTitle);
    layout->addWidget(lblSubTitle);
}

void abortDoneVc::startTimer()
{
    const TextCatalogue& t = c.texts;
    lblTitle->setText(abortText(t, {"abortInfo", "abortDoneInfo"}, "title", "Aborted"));
    lblSubTitle->setText(
        abortText(t, {"abortInfo", "abortDoneInfo"}, "subTitle",
                  "You’ve successfully aborted Velmora. The app won’t show habit prompts until "
                  "you activate it again from the menu icon. If you aborted it because of a "
                  "problem with the app, please email ") +
        t.emailID);
    // It only waits; no count is shown.
    countDown.start(kSeconds, {}, [this] {
        if (onFinished)
            onFinished();
    });
}

} // namespace velmora
