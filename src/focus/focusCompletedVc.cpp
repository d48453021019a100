#include "focusCompletedVc.h"

#include "Style.h"
#include "TextCatalogue.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora {

focusCompletedVc::focusCompletedVc(const TextCatalogue& texts, QWidget* parent)
    : QDialog(parent, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowStaysOnTopHint)
    , m_texts(texts)
{
    setObjectName(QStringLiteral("focusCompletedVc"));
    setWindowTitle(QStringLiteral("Velmora focus block"));
    setStyleSheet(style::dialogStyleSheet());
    lblTitle = style::title(this, "lblTitle");
    lblSubTitle = style::body(this, "lblSubTitle");
    lblIntentionWas = style::body(this, "lblIntentionWas");
    textViewIntention = style::body(this, "textViewIntention");
    lblQuestionFirst = style::body(this, "lblQuestionFirst");
    lblQuestionSecond = style::body(this, "lblQuestionSecond");
    auto answer = [this](const char* name, QLabel* question) {
        auto* edit = new QPlainTextEdit(this);
        edit->setObjectName(QLatin1String(name));
        edit->setTabChangesFocus(true);
        edit->setFixedHeight(72);
        question->setBuddy(edit);
        return edit;
    };
    textViewAchieve = answer("textViewAchieve", lblQuestionFirst);
    textViewDistractions = answer("textViewDistractions", lblQuestionSecond);
    btnTakeBreak = style::primaryButton(this, "btnTakeBreak");
    btnTakeBreak->setDefault(true);
    connect(btnTakeBreak, &QPushButton::clicked, this, [this] { btnTakeBreakClicked(); });

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(32, 24, 32, 24);
    for (QWidget* w : std::initializer_list<QWidget*>{lblTitle, lblSubTitle, lblIntentionWas,
                                                      textViewIntention, lblQuestionFirst, textViewAchieve,
                                                      lblQuestionSecond, textViewDistractions})
        layout->addWidget(w);
    layout->addWidget(btnTakeBreak, 0, Qt::AlignHCenter);
    resize(520, 480);
}

QString focusCompletedVc::text(const char* key, const QString& fallback) const
{
    return m_texts.text({"focusInfo", "focusCompletedInfo"}, key, fallback);
}

void focusCompletedVc::resetData(const QString& focusModeName, bool shutOff, const QString& intention)
{
    currentFocusModeName = focusModeName;
    fromShutOff = shutOff;
    textViewAchieve->clear();
    textViewDistractions->clear();
    style::setText(lblTitle, text("title", QStringLiteral("You did it!")));
    style::setText(lblQuestionFirst,
                   text("questionFirstText", QStringLiteral("What did you achieve during this time?")));
    style::setText(lblQuestionSecond, text("questionSecondText", QStringLiteral("Any distractions?")));
    style::setText(lblIntentionWas, text("titleIntention", QStringLiteral("Your intention was")));
    textViewAchieve->setAccessibleName(lblQuestionFirst->text());
    textViewDistractions->setAccessibleName(lblQuestionSecond->text());
    style::setText(btnTakeBreak, fromShutOff
                                     ? text("buttonFinishDayText", QStringLiteral("Finish up for the day"))
                                     : text("buttonTakeBreakText", QStringLiteral("Take a 5 minute break")));
    style::setText(
        lblSubTitle,
        fillTemplate(text("subTitle", QStringLiteral("You have successfully completed the focus block - "
                                                     "<FOCUSTYPE>")),
                     {{"<FOCUSTYPE>", focusModeName}}));
    style::setText(textViewIntention, intention);
    textViewAchieve->setFocus();
}

void focusCompletedVc::btnTakeBreakClicked()
{
    if (onTakeBreak)
        onTakeBreak(currentFocusModeName, textViewAchieve->toPlainText(),
                    textViewDistractions->toPlainText());
    hide();
}

} // namespace velmora
