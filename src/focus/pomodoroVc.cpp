#include "pomodoroVc.h"

#include "RunState.h"
#include "Style.h"
#include "TextCatalogue.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora {

pomodoroVc::pomodoroVc(const TextCatalogue& texts, const RunState& state, QWidget* parent)
    : QDialog(parent, Qt::Window | Qt::WindowStaysOnTopHint)
    , m_texts(texts)
    , m_state(state)
{
    setObjectName(QStringLiteral("pomodoroVc"));
    setWindowTitle(QStringLiteral("Velmora pomodoro"));
    setStyleSheet(style::dialogStyleSheet());
    lblTitle = style::title(this, "lblTitle");
    lblQuestionFirst = style::body(this, "lblQuestionFirst");
    textViewAchieve = new QPlainTextEdit(this);
    textViewAchieve->setObjectName(QStringLiteral("textViewAchieve"));
    textViewAchieve->setTabChangesFocus(true);
    textViewAchieve->setFixedHeight(72);
    lblQuestionFirst->setBuddy(textViewAchieve);
    lblQuestionSecond = style::body(this, "lblQuestionSecond");
    popUpBtnFocusType = new QComboBox(this);
    popUpBtnFocusType->setObjectName(QStringLiteral("popUpBtnFocusType"));
    lblQuestionSecond->setBuddy(popUpBtnFocusType);
    btnEditFocusMode = style::quietButton(this, "btnEditFocusMode");
    btnLetsDoIt = style::primaryButton(this, "btnLetsDoIt");
    btnLetsDoIt->setDefault(true);
    connect(btnLetsDoIt, &QPushButton::clicked, this, [this] { btnLetsDoItClicked(); });
    connect(btnEditFocusMode, &QPushButton::clicked, this,
            [this] { onEditFocusModes ? onEditFocusModes() : void(); });

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(btnEditFocusMode);
    buttons->addStretch();
    buttons->addWidget(btnLetsDoIt);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(32, 24, 32, 24);
    layout->addWidget(lblTitle);
    layout->addWidget(lblQuestionFirst);
    layout->addWidget(textViewAchieve);
    layout->addWidget(lblQuestionSecond);
    layout->addWidget(popUpBtnFocusType);
    layout->addLayout(buttons);
    resize(480, 340);
}

QString pomodoroVc::text(const char* key, const QString& fallback) const
{
    return m_texts.text("pomodoroInfo", key, fallback);
}

void pomodoroVc::viewWillAppear()
{
    style::setText(lblTitle, text("title", QStringLiteral("It's time to focus")));
    style::setText(
        lblQuestionFirst,
        text("questionFirstText", QStringLiteral("What do you want to achieve in the next 25 minutes?")));
    style::setText(lblQuestionSecond,
                   text("questionSecondText", QStringLiteral("Which focus mode do you want to use?")));
    style::setText(btnEditFocusMode, text("buttonEditFocusModeText", QStringLiteral("Edit focus modes")));
    style::setText(btnLetsDoIt, text("buttonLetsDoItText", QStringLiteral("Let's do it")));
    textViewAchieve->setAccessibleName(lblQuestionFirst->text());
    popUpBtnFocusType->setAccessibleName(lblQuestionSecond->text());
    textViewAchieve->clear();
    reFillFocusTypeList();
    textViewAchieve->setFocus();
}

void pomodoroVc::reFillFocusTypeList()
{
    const int selected = qMax(0, popUpBtnFocusType->currentIndex());
    popUpBtnFocusType->clear();
    for (const QVariant& item : m_state.arrFocusType)
        popUpBtnFocusType->addItem(item.toMap().value(QStringLiteral("name")).toString());
    popUpBtnFocusType->setCurrentIndex(selected < popUpBtnFocusType->count() ? selected : 0);
}

void pomodoroVc::btnLetsDoItClicked()
{
    if (onLetsDoIt && popUpBtnFocusType->currentIndex() >= 0)
        onLetsDoIt(popUpBtnFocusType->currentIndex());
}

} // namespace velmora
