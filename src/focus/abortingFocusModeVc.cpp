#include "abortingFocusModeVc.h"

#include "RunState.h"
#include "Style.h"
#include "TextCatalogue.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora {

const QStringList abortingFocusModeVc::kReasons{QStringLiteral("Focus mode is not working properly."),
                                                QStringLiteral("I achieved what I wanted to too early."),
                                                QStringLiteral("I have an emergency")};

abortingFocusModeVc::abortingFocusModeVc(const TextCatalogue& texts, const RunState& state,
                                         Scheduler& scheduler, QWidget* parent)
    : QWidget(parent)
    , timer(scheduler, this)
    , m_texts(texts)
    , m_state(state)
{
    setObjectName(QStringLiteral("abortingFocusModeVc"));
    lblTitle = style::title(this, "lblTitle");
    lblQuestionFirst = style::body(this, "lblQuestionFirst");
    popUpBtnAbortReasons = new QComboBox(this);
    popUpBtnAbortReasons->setObjectName(QStringLiteral("popUpBtnAbortReasons"));
    lblQuestionFirst->setBuddy(popUpBtnAbortReasons);
    lblSeconds = style::body(this, "lblSeconds");
    btnCancel = style::quietButton(this, "btnCancel");
    btnAbortFocus = style::primaryButton(this, "btnAbortFocus");
    btnAbortFocus->setDefault(true);
    connect(btnCancel, &QPushButton::clicked, this, [this] { onCancel ? onCancel() : void(); });
    connect(btnAbortFocus, &QPushButton::clicked, this, [this] { btnAbortFocusClicked(); });

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnCancel);
    buttons->addWidget(btnAbortFocus);
    buttons->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblTitle);
    layout->addWidget(lblQuestionFirst);
    layout->addWidget(popUpBtnAbortReasons);
    layout->addWidget(lblSeconds);
    layout->addLayout(buttons);
}

QString abortingFocusModeVc::text(const char* key, const QString& fallback) const
{
    return m_texts.text({"focusInfo", "abortingFocusModeInfo"}, key, fallback);
}

void abortingFocusModeVc::ResetData()
{
    focusName.clear();
    for (const QVariant& item : m_state.arrFocusType) {
        const QVariantMap type = item.toMap();
        if (type.value(QStringLiteral("isOn")).toBool())
            focusName = type.value(QStringLiteral("name")).toString();
    }
    style::setText(lblTitle, fillTemplate(text("title", QStringLiteral("Aborting Focus type - <FOCUSTYPE>")),
                                          {{"<FOCUSTYPE>", focusName}}));
    style::setText(lblQuestionFirst,
                   text("questionText", QStringLiteral("Can you share why you're aborting?")));
    popUpBtnAbortReasons->setAccessibleName(lblQuestionFirst->text());
    popUpBtnAbortReasons->clear();
    popUpBtnAbortReasons->addItems({text("reasonsFirstText", kReasons[0]),
                                    text("reasonsSecondText", kReasons[1]),
                                    text("reasonsThirdText", kReasons[2])});
    style::setText(btnCancel, text("buttonCancelText", QStringLiteral("Cancel")));
    style::setText(btnAbortFocus, text("buttonAbortFocusText", QStringLiteral("Abort Focus")));
    startTimer();
    popUpBtnAbortReasons->setFocus();
}

void abortingFocusModeVc::startTimer()
{
    btnAbortFocus->setEnabled(false);
    lblSeconds->show();
    timer.start(
        kSeconds, [this](const QString& remaining) { style::setText(lblSeconds, remaining); },
        [this] {
            btnAbortFocus->setEnabled(true);
            lblSeconds->hide();
        });
}

// A closed window stops its count; the abort starts over at the next opening.
void abortingFocusModeVc::hideEvent(QHideEvent* event)
{
    timer.stop();
    QWidget::hideEvent(event);
}

void abortingFocusModeVc::btnAbortFocusClicked()
{
    if (btnAbortFocus->isEnabled() && onAbort)
        onAbort(popUpBtnAbortReasons->currentIndex(), focusName);
}

} // namespace velmora
