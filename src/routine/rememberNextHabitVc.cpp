#include "rememberNextHabitVc.h"

#include "DurationTexts.h"
#include "RunState.h"
#include "Style.h"
#include "TextCatalogue.h"
#include "thirdVc.h"

#include <algorithm>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QRandomGenerator>
#include <QVBoxLayout>

namespace velmora {

rememberNextHabitVc::rememberNextHabitVc(RoutineContext ctx, thirdVc& progress, QWidget* parent)
    : QWidget(parent)
    , c(ctx)
    , m_progress(progress)
{
    setObjectName(QStringLiteral("rememberNextHabitVc"));
    auto text = [this](const char* key, const char* fallback) {
        return c.texts.text("rememberNextHabitViewInfo", key, QString::fromUtf8(fallback));
    };
    arrRandomPhraseRightChoice = {
        text("randomPhraseRightChoice1", "Right on!"), text("randomPhraseRightChoice2", "Yeah!"),
        text("randomPhraseRightChoice3", "You got it!"),
        text("randomPhraseRightChoice4",
             "I can just retire now because you know exactly what you're doing 🙂")};
    arrRandomPhraseWrongChoice = {
        text("randomPhraseWrongChoice1", "Almost - it's <CORRECT_HABIT_NAME>"),
        text("randomPhraseWrongChoice2", "Oops not quite - it's <CORRECT_HABIT_NAME>")};
    questionText = text("questionText", "You just completed <LAST_HABIT_NAME>. What habit will you do next?");

    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(18);
    lblTitle = style::title(this, "lblTitle");
    lblTitle->setText(text("title", "What comes next?"));
    lblDescription = style::body(this, "lblDescription");
    lblDescription->setText(text("description",
                                 "I want to make sure you don't become too dependent on me. There will be "
                                 "days where you don't have access "
                                 "to your computer but that doesn't mean you won't do your habits. Think of "
                                 "me as training wheels - I'm "
                                 "here to help you deepen the habits until they become automatic. Let's do a "
                                 "quick exercise to make sure "
                                 "you remember how to stack your habits even when I'm not there."));
    lblQuestion = style::body(this, "lblQuestion");
    popupBtnHabits = new QComboBox(this);
    popupBtnHabits->setObjectName(QStringLiteral("popupBtnHabits"));
    popupBtnHabits->setAccessibleName(QStringLiteral("popupBtnHabits"));
    lblSelectionResult = style::title(this, "lblSelectionResult");
    btnStartNextHabit = style::primaryButton(this, "btnStartNextHabit");
    layout->addStretch();
    layout->addWidget(lblTitle);
    layout->addWidget(lblDescription);
    layout->addWidget(lblQuestion);
    layout->addWidget(popupBtnHabits, 0, Qt::AlignHCenter);
    layout->addWidget(lblSelectionResult);
    layout->addWidget(btnStartNextHabit, 0, Qt::AlignHCenter);
    layout->addStretch();
    connect(popupBtnHabits, &QComboBox::activated, this, &rememberNextHabitVc::popupBtnHabitsClicked);
    connect(btnStartNextHabit, &QPushButton::clicked, this, &rememberNextHabitVc::btnStartNextHabitClicked);
}

const QVector<habit>* rememberNextHabitVc::listOfState() const
{
    if (c.state.currentState == CURRENTSTATE::_EVENING_HABIT_)
        return &c.state.arrAllEveningHabits;
    if (c.state.currentState == CURRENTSTATE::_MORNING_HABIT_)
        return &c.state.arrAllMorningHabits;
    return nullptr;
}

void rememberNextHabitVc::resetData()
{
    lblSelectionResult->hide();
    btnStartNextHabit->hide();
    popupBtnHabits->clear();
    popupBtnHabits->addItem(
        c.texts.text("rememberNextHabitViewInfo", "selectHabitText", QStringLiteral("Select Habit")));
    arrHabitNames.clear();
    const QVector<habit>* list = listOfState();
    if (list) {
        for (const habit& h : *list)
            arrHabitNames << h.name;
        // Fisher–Yates with the routine's own random source.
        for (int i = int(arrHabitNames.size()) - 1; i > 0; --i)
            arrHabitNames.swapItemsAt(i, int(c.random.bounded(quint32(i + 1))));
        popupBtnHabits->addItems(arrHabitNames);
    }
    const bool valid = list && nextHabitIndex > 0 && nextHabitIndex < list->size();
    const QString lastName = valid ? list->at(nextHabitIndex - 1).name : QString();
    lblQuestion->setText(QString(questionText).replace(QLatin1String("<LAST_HABIT_NAME>"), lastName));
    if (valid) {
        const habit& next = list->at(nextHabitIndex);
        btnStartNextHabit->setText(getstartActivityButtonText(c.texts, next.durationSeconds, next.name));
    }
}

void rememberNextHabitVc::popupBtnHabitsClicked()
{
    const int selected = popupBtnHabits->currentIndex();
    if (selected <= 0)
        return;
    const QVector<habit>* list = listOfState();
    const QString chosen = arrHabitNames.value(selected - 1);
    const bool hasRight = list && nextHabitIndex >= 0 && nextHabitIndex < list->size();
    const QString right = hasRight ? list->at(nextHabitIndex).name : QString();
    if (hasRight && selected - 1 < arrHabitNames.size() && chosen == right) {
        lblSelectionResult->setText(
            arrRandomPhraseRightChoice.at(int(c.random.bounded(quint32(arrRandomPhraseRightChoice.size())))));
    } else {
        QString phrase =
            arrRandomPhraseWrongChoice.at(int(c.random.bounded(quint32(arrRandomPhraseWrongChoice.size()))));
        lblSelectionResult->setText(phrase.replace(QLatin1String("<CORRECT_HABIT_NAME>"), right));
    }
    lblSelectionResult->show();
    btnStartNextHabit->show();
}

void rememberNextHabitVc::btnStartNextHabitClicked()
{
    hide();
    m_progress.boxBg->show();
    m_progress.btnMainClicked();
}

} // namespace velmora
