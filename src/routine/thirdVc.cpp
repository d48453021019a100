#include "thirdVc.h"

#include "Clock.h"
#include "DebugLog.h"
#include "DurationTexts.h"
#include "JsonValues.h"
#include "logQuantityVc.h"
#include "Notifier.h"
#include "RecordFormats.h"
#include "rememberNextHabitVc.h"
#include "RoutineRows.h"
#include "RunState.h"
#include "Style.h"
#include "TextCatalogue.h"
#include "timerViewcontroller.h"
#include "UsageLog.h"
#include "ViewController.h"

#include <QFrame>
#include <QJsonArray>
#include <QLabel>
#include <QPushButton>
#include <QRandomGenerator>
#include <QVBoxLayout>

namespace velmora {

thirdVc::thirdVc(RoutineContext ctx, ViewController& main, QWidget* parent)
    : QWidget(parent)
    , c(ctx)
    , m_main(main)
{
    setObjectName(QStringLiteral("thirdVc"));
    auto* outer = new QVBoxLayout(this);
    boxBg = new QFrame(this);
    boxBg->setObjectName(QStringLiteral("boxBg"));
    auto* layout = new QVBoxLayout(boxBg);
    layout->setSpacing(20);
    imgViewGif = new QLabel(boxBg);
    imgViewGif->setObjectName(QStringLiteral("imgViewGif"));
    imgViewGif->setAlignment(Qt::AlignCenter);
    lblTitle = style::title(boxBg, "lblTitle");
    lblProgress = style::body(boxBg, "lblProgress");
    boxBreathingFinished = new QFrame(boxBg);
    boxBreathingFinished->setObjectName(QStringLiteral("boxBreathingFinished"));
    auto* breathingLayout = new QVBoxLayout(boxBreathingFinished);
    lblSubTitle = style::body(boxBreathingFinished, "lblSubTitle");
    lblSubTitle->setTextFormat(Qt::RichText);
    breathingLayout->addWidget(lblSubTitle);
    btnMain = style::primaryButton(boxBg, "btnMain");
    connect(btnMain, &QPushButton::clicked, this, &thirdVc::btnMainClicked);

    layout->addStretch(1);
    layout->addWidget(imgViewGif);
    layout->addWidget(lblTitle);
    layout->addWidget(lblProgress);
    layout->addWidget(boxBreathingFinished);
    layout->addWidget(btnMain, 0, Qt::AlignHCenter);
    layout->addStretch(2);
    outer->addWidget(boxBg);

    boxBreathingFinished->hide();
}

rememberNextHabitVc& thirdVc::getRememberNextHabitVcObj()
{
    if (!rememberNextHabitVcObj) {
        rememberNextHabitVcObj = new rememberNextHabitVc(c, *this, this);
        rememberNextHabitVcObj->hide();
    }
    return *rememberNextHabitVcObj;
}

bool thirdVc::isQuizShown() const
{
    return rememberNextHabitVcObj && rememberNextHabitVcObj->isVisible();
}

void thirdVc::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (rememberNextHabitVcObj)
        rememberNextHabitVcObj->setGeometry(rect());
}

void thirdVc::removeQuiz()
{
    if (rememberNextHabitVcObj)
        rememberNextHabitVcObj->hide();
}

void thirdVc::playSound(const char* name)
{
    c.notifier.playSound(QString::fromLatin1(name));
}

void thirdVc::setMainButton(const QString& title)
{
    btnMain->setText(title);
    btnMain->setToolTip(title);
    btnMain->show();
}

void thirdVc::recordHabit(const habit& h, bool morning)
{
    const CURRENTSTATE state = morning ? CURRENTSTATE::_MORNING_HABIT_ : CURRENTSTATE::_EVENING_HABIT_;
    if (h.logQuantity) {
        m_main.showLogQuantityView();
        m_main.logQuantityVcObj().resetData(h.name, QString::number(h.durationSeconds), h.logQuantityQuestion,
                                            state);
        return;
    }
    addItemRow(c, morning ? QStringLiteral("morning routine") : QStringLiteral("evening routine"), h.name,
               QString::number(h.durationSeconds));
}

QString thirdVc::progressLine(const QVector<habit>& list, int index) const
{
    int total = 0, completed = 0;
    for (int i = 0; i < list.size(); ++i) {
        total += list[i].durationSeconds;
        if (i <= index)
            completed += list[i].durationSeconds;
    }
    const QString done = getStringTimeFromSeconds(completed);
    const QString remaining = getStringTimeFromSeconds(total - completed);
    if (remaining.isEmpty())
        return fillTemplate(c.texts.text("activityInfo", "habitsCompleteText",
                                         QStringLiteral("You have completed <duration> of habits.")),
                            {{"<duration>", done}});
    // "<totalduration>" stands for what remains, whatever its name says.
    return fillTemplate(
        c.texts.text("activityInfo", "habitsProgressText",
                     QStringLiteral("You have completed <duration> of habits - <totalduration> to "
                                    "go. You can do it!")),
        {{"<duration>", done}, {"<totalduration>", remaining}});
}

void thirdVc::chooseHabitButton(const QVector<habit>& list)
{
    bool quiz = false;
    if (c.state.isPromptToRememberHabit) {
        if (!c.state.isPromptToRememberHabitShowedInLastHabit) {
            randomIntToRememberNextHabit = int(c.random.bounded(6));
            quiz = randomIntToRememberNextHabit == 5;
            c.state.isPromptToRememberHabitShowedInLastHabit = quiz;
        } else {
            c.state.isPromptToRememberHabitShowedInLastHabit = false;
        }
    }
    if (quiz) {
        setMainButton(
            c.texts.text("activityInfo", "whatComesNextButtonText", QStringLiteral("What comes next?")));
        return;
    }
    const int next = lastHabitIndex + 1;
    if (next >= list.size()) {
        c.log.addLog(
            QStringLiteral("No habit follows index %1; the button unlocks instead.").arg(lastHabitIndex));
        setMainButton(c.texts.unlockMachineButtonText);
        return;
    }
    setMainButton(getstartActivityButtonText(c.texts, list[next].durationSeconds, list[next].name));
}

void thirdVc::habitFinished(int index, bool morning)
{
    const QVector<habit>& list = morning ? c.state.arrAllMorningHabits : c.state.arrAllEveningHabits;
    boxBg->show();
    removeQuiz();
    lblProgress->show();
    boxBreathingFinished->hide();
    lastHabitIndex = index;
    if (index < 0 || index >= list.size()) {
        c.log.addLog(QStringLiteral("Finished habit %1 is not in the routine; nothing recorded.").arg(index));
        setMainButton(c.texts.unlockMachineButtonText);
        return;
    }
    const habit& h = list[index];
    recordHabit(h, morning);
    lblProgress->setText(progressLine(list, index));

    if (morning && index == list.size() - 1) {
        style::showAnimation(imgViewGif, QStringLiteral("Smile _Small"), c.state.kIsReducedMotion);
        imgViewGif->show();
        lblTitle->setText(fillTemplate(c.texts.lastActivityFinishedText, {{"<ACTIVITY>", h.name}}));
        setMainButton(c.texts.unlockMachineButtonText);
        playSound("afterMorningRoutine");
        return;
    }
    imgViewGif->hide();
    if (morning)
        playSound("everyActivity");
    lblTitle->setText(fillTemplate(c.texts.activityFinishedText, {{"<ACTIVITY>", h.name}}));
    if (!morning)
        playSound("everyActivity");
    chooseHabitButton(list);
}

void thirdVc::morningHabitFinished(int index)
{
    habitFinished(index, true);
}

void thirdVc::eveningHabitFinished(int index)
{
    habitFinished(index, false);
}

void thirdVc::breathingFinished()
{
    lblProgress->hide();
    imgViewGif->hide();
    // The status icon stands where the text says "<icon>".
    const QString end =
        c.texts.text("welcomeInfo", "welcomeEndMessage",
                     QStringLiteral("Hope you feel calmer. You can now personalise your morning "
                                    "routine by clicking on the icon <icon> on the top bar and "
                                    "choosing settings."));
    lblSubTitle->setText(end.toHtmlEscaped().replace(
        QLatin1String("&lt;icon&gt;"), QLatin1String("<img src=\":/images/clock22.png\" height=\"22\">")));
    boxBreathingFinished->show();
    QString name = QStringLiteral("Breathing");
    const QJsonValue intros = c.texts.configjson()
                                  .value(QLatin1String("welcomeInfo"))
                                  .toObject()
                                  .value(QLatin1String("introActivities"));
    if (intros.isArray() || intros.isObject()) {
        const QJsonObject first = intros.isArray() ? intros.toArray().first().toObject() : intros.toObject();
        name = json::string(first, "name").value_or(QString());
    }
    lblTitle->setText(fillTemplate(c.texts.lastActivityFinishedText, {{"<ACTIVITY>", name}}));
    btnMain->setText(c.texts.unlockMachineButtonText);
    btnMain->show();
}

// The name a break shows for an activity. A random-choice activity picks one of
// its alternatives, and avoids the one shown last time when it has a choice.
QString thirdVc::activityDisplayName(const breakActivity& activity)
{
    if (!activity.isRandomChoice)
        return activity.name;
    const auto& choices = activity.choices;
    auto draw = [&]() -> std::optional<activityChoice> {
        if (choices.isEmpty())
            return std::nullopt;
        return choices.at(int(c.random.bounded(quint32(choices.size()))));
    };
    currentActivityChoice = draw();
    if (choices.size() != 1 && c.state.lastShownRandomChoiceDic.contains(activity.name)) {
        const activityChoice last = c.state.lastShownRandomChoiceDic.value(activity.name);
        auto sameAsLast = [&last](const activityChoice& pick) {
            return pick.name == last.name && pick.logQuantityQuestion == last.logQuantityQuestion;
        };
        // Alternatives that all look like the last one would be redrawn for ever.
        const bool anyDifferent = std::any_of(choices.begin(), choices.end(),
                                              [&](const activityChoice& ch) { return !sameAsLast(ch); });
        if (!anyDifferent)
            c.log.addLog(QStringLiteral("All alternatives of %1 are alike; showing the same one again.")
                             .arg(activity.name));
        while (anyDifferent && currentActivityChoice && sameAsLast(*currentActivityChoice))
            currentActivityChoice = draw();
    }
    if (currentActivityChoice)
        c.state.lastShownRandomChoiceDic.insert(activity.name, *currentActivityChoice);
    else
        c.state.lastShownRandomChoiceDic.remove(activity.name);
    return currentActivityChoice ? currentActivityChoice->name : QString();
}

void thirdVc::startBreakActivity()
{
    boxBg->show();
    removeQuiz();
    lblProgress->hide();
    currentActivityChoice.reset();
    imgViewGif->hide();
    boxBreathingFinished->hide();
    lastActivityIndex = -1;
    const QVector<breakActivity>& list = c.state.isMandatoryActivityGoing
                                             ? c.state.arrActivitiesIncludeInEveryBreak
                                             : c.state.arrActivitiesExcludeInEveryBreak;
    if (c.state.currentActivityIndex < 0 || c.state.currentActivityIndex >= list.size()) {
        c.log.addLog(
            QStringLiteral("The break has no activity at index %1.").arg(c.state.currentActivityIndex));
        lblTitle->clear();
        setMainButton(c.texts.unlockMachineButtonText);
        return;
    }
    const breakActivity& activity = list[c.state.currentActivityIndex];
    const QString name = activityDisplayName(activity);
    lblTitle->setText(getStartBreakActivityTitleText(c.texts, activity.durationSeconds, name));
    setMainButton(getstartActivityButtonText(c.texts, activity.durationSeconds, name));
}

const QVector<breakActivity>& thirdVc::activityListInUse() const
{
    return c.state.isAnyMandatoryActivityIncluded && c.state.isMandatoryActivityGoing
               ? c.state.arrActivitiesIncludeInEveryBreak
               : c.state.arrActivitiesExcludeInEveryBreak;
}

void thirdVc::activityFinished(int index)
{
    boxBg->show();
    removeQuiz();
    lblProgress->hide();
    currentActivityChoice.reset();
    boxBreathingFinished->hide();
    imgViewGif->hide();
    lastActivityIndex = index;

    RunState& st = c.state;
    const QVector<breakActivity>& list = activityListInUse();
    const timerViewcontroller& timerScreen = m_main.timerViewcontrollerObj();
    const QString finishedName = timerScreen.currentActicityTitle;
    if (index >= 0 && index < list.size()) {
        const breakActivity& entry = list[index];
        // Without a mandatory list the question falls back to the settings' own order.
        const breakActivity& fallback =
            !st.isAnyMandatoryActivityIncluded && index < st.arrAllbreakActivities.size()
                ? st.arrAllbreakActivities[index]
                : entry;
        const std::optional<QString> question =
            timerScreen.logQuantityQuestion ? timerScreen.logQuantityQuestion : fallback.logQuantityQuestion;
        if (timerScreen.logActivityQuantity) {
            m_main.showLogQuantityView();
            m_main.logQuantityVcObj().resetData(finishedName, QString::number(entry.durationSeconds),
                                                question, CURRENTSTATE::_ACTIVITY_);
        } else {
            addItemRow(c, QStringLiteral("break"), finishedName, QString::number(entry.durationSeconds));
        }
    } else {
        c.log.addLog(
            QStringLiteral("Finished activity %1 is not in the break; nothing recorded.").arg(index));
    }

    const QString lastTitle = fillTemplate(c.texts.lastActivityFinishedText, {{"<ACTIVITY>", finishedName}});
    const QString nextTitle = fillTemplate(c.texts.activityFinishedText, {{"<ACTIVITY>", finishedName}});
    std::optional<breakActivity> next;
    if (st.isAnyMandatoryActivityIncluded && st.isMandatoryActivityGoing) {
        const auto& mandatory = st.arrActivitiesIncludeInEveryBreak;
        if (index < mandatory.size() - 1) {
            next = mandatory[lastActivityIndex + 1];
        } else if (!st.arrActivitiesExcludeInEveryBreak.isEmpty()) {
            const auto& rotating = st.arrActivitiesExcludeInEveryBreak;
            st.currentActivityIndex = int(c.random.bounded(quint32(rotating.size())));
            next = rotating[st.currentActivityIndex];
        }
    }
    if (next) {
        lblTitle->setText(nextTitle);
        const QString name = activityDisplayName(*next);
        setMainButton(getstartActivityButtonText(c.texts, next->durationSeconds, name));
    } else {
        lblTitle->setText(lastTitle);
        setMainButton(c.texts.unlockMachineButtonText);
    }
    playSound("everyActivity");
}

void thirdVc::showQuiz()
{
    boxBg->hide();
    rememberNextHabitVc& quiz = getRememberNextHabitVcObj();
    quiz.nextHabitIndex = lastHabitIndex + 1;
    quiz.setGeometry(rect());
    quiz.show();
    quiz.raise();
    quiz.resetData();
    randomIntToRememberNextHabit = 0;
}

void thirdVc::btnMainClicked()
{
    if (m_main.isPasswordViewShown())
        return;
    lblProgress->hide();
    imgViewGif->hide();
    boxBreathingFinished->hide();
    RunState& st = c.state;
    switch (st.currentState) {
    case CURRENTSTATE::_MORNING_HABIT_:
    case CURRENTSTATE::_EVENING_HABIT_: {
        const bool morning = st.currentState == CURRENTSTATE::_MORNING_HABIT_;
        const auto& list = morning ? st.arrAllMorningHabits : st.arrAllEveningHabits;
        if (lastHabitIndex >= list.size() - 1)
            m_main.habitsFinishedUnlockMachine();
        else if (randomIntToRememberNextHabit == 5)
            showQuiz();
        else if (morning)
            m_main.changeMorningHabit();
        else
            m_main.changeEveningHabit();
        break;
    }
    case CURRENTSTATE::_ACTIVITY_: {
        const bool mandatoryGoing = st.isAnyMandatoryActivityIncluded && st.isMandatoryActivityGoing;
        const bool lastMandatory = lastActivityIndex >= st.arrActivitiesIncludeInEveryBreak.size() - 1;
        if (lastActivityIndex == -1) {
            m_main.startCurrentActivity();
        } else if (mandatoryGoing && !lastMandatory) {
            m_main.changeActivity();
        } else if (mandatoryGoing && !st.arrActivitiesExcludeInEveryBreak.isEmpty()) {
            st.isMandatoryActivityGoing = false;
            m_main.changeActivity();
        } else {
            m_main.activityFinishedUnlockMachine();
        }
        break;
    }
    case CURRENTSTATE::_BREATHING_:
        boxBreathingFinished->hide();
        m_main.breathingFinishedUnlockMachine();
        break;
    default:
        break;
    }
}

} // namespace velmora
