#include "firstViewController.h"

#include "DurationTexts.h"
#include "JsonValues.h"
#include "RunState.h"
#include "Style.h"
#include "TextCatalogue.h"
#include "ViewController.h"

#include <QJsonArray>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora {

firstViewController::firstViewController(RoutineContext ctx, ViewController& main, QWidget* parent)
    : QWidget(parent)
    , c(ctx)
    , m_main(main)
{
    setObjectName(QStringLiteral("firstViewController"));
    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(18);
    imgView = new QLabel(this);
    imgView->setObjectName(QStringLiteral("imgView"));
    imgView->setAlignment(Qt::AlignCenter);
    lblTitle = style::title(this, "lblTitle");
    lblSubTitle = style::body(this, "lblSubTitle");
    lblBeforeYouStart = style::body(this, "lblBeforeYouStart");
    tblViewHabits = new QListWidget(this);
    tblViewHabits->setObjectName(QStringLiteral("tblViewHabits"));
    tblViewHabits->setFocusPolicy(Qt::NoFocus);
    tblViewHabits->setSelectionMode(QAbstractItemView::NoSelection);
    tblViewHabits->setMaximumWidth(720);
    lbltimer = new QLabel(this);
    lbltimer->setObjectName(QStringLiteral("lbltimer"));
    lbltimer->setProperty("role", QStringLiteral("clock"));
    lbltimer->setAlignment(Qt::AlignCenter);
    btnStartFirstHabit = style::primaryButton(this, "btnStartFirstHabit");
    connect(btnStartFirstHabit, &QPushButton::clicked, this, &firstViewController::btnStartFirstHabitClicked);

    layout->addStretch(1);
    layout->addWidget(imgView);
    layout->addWidget(lblTitle);
    layout->addWidget(lblSubTitle);
    layout->addWidget(lblBeforeYouStart);
    layout->addWidget(tblViewHabits, 1, Qt::AlignHCenter);
    layout->addWidget(lbltimer);
    layout->addWidget(btnStartFirstHabit, 0, Qt::AlignHCenter);
    layout->addStretch(1);
}

void firstViewController::setImageLayout(int height, int top, int bottom)
{
    imgView->setFixedHeight(height);
    imgView->setContentsMargins(0, top, 0, bottom);
}

void firstViewController::viewWillAppear()
{
    lbltimer->hide();
    if (isFirstTime)
        fillWelcome();
    else if (c.state.currentState == CURRENTSTATE::_MORNING_HABIT_)
        fillRoutine(true);
    else if (c.state.currentState == CURRENTSTATE::_EVENING_HABIT_)
        fillRoutine(false);
}

void firstViewController::fillWelcome()
{
    lblBeforeYouStart->hide();
    lblSubTitle->show();
    tblViewHabits->hide();
    style::showAnimation(imgView, QStringLiteral("icon 130"), false);
    setImageLayout(160, 35, 5);

    lblTitle->setText(
        c.texts.text("welcomeInfo", "welcomeMessageHeading", QStringLiteral("Welcome to Velmora")));
    lblSubTitle->setText(c.texts.text("welcomeInfo", "welcomeMessageIntro", lblSubTitle->text()));

    // The catalogue lists the intro items; the first one is played. Anything
    // unusable there brings in the built-in breathing item.
    habit intro;
    intro.name = QStringLiteral("mindful breathing");
    intro.durationSeconds = 60;
    const auto welcome = c.texts.configjson().value(QLatin1String("welcomeInfo"));
    const QJsonValue intros = welcome.toObject().value(QLatin1String("introActivities"));
    QJsonObject first;
    if (intros.isArray() && !intros.toArray().isEmpty())
        first = intros.toArray().first().toObject();
    else if (intros.isObject())
        first = intros.toObject();
    if (!first.isEmpty()) {
        intro.name = json::string(first, "name").value_or(QString());
        intro.durationSeconds = json::integer(first, "durationSeconds").value_or(60);
        intro.urlsArray = json::stringArray(first, "videoUrl").value_or(QStringList());
    }
    c.state.introActivity = intro;
    btnStartFirstHabit->setText(getstartActivityButtonText(c.texts, intro.durationSeconds, intro.name));
    btnStartFirstHabit->setToolTip(btnStartFirstHabit->text());
    btnStartFirstHabit->show();
}

void firstViewController::fillRoutine(bool morning)
{
    lblBeforeYouStart->setText(
        morning ? c.texts.text(
                      "activityInfo", "beforeYouBeginText",
                      QStringLiteral("Before you begin, take 30 seconds to visualise yourself performing "
                                     "each of the habits. This sounds kooky but research indicates that "
                                     "doing a mental rehearsal like this increases the likelihood of you "
                                     "completing the habits and makes the habits more sticky so that "
                                     "even if you don't have access to your computer/this app, you'll "
                                     "still do all the habits"))
                : c.texts.text(
                      "activityInfo", "beforeYouStartText",
                      QStringLiteral("Before you start, take a few moments to reflect on why you want to "
                                     "do these habits. Then visualise yourself beginning the habit "
                                     "sequence. Mentally walk through any of the habits that are going to "
                                     "be harder. This process will help reduce \"limbic friction\", i.e. "
                                     "prime your brain to do the habits no matter what, even if you don't "
                                     "have the app available.")));
    lblBeforeYouStart->show();
    if (morning && !c.state.kIsReducedMotion) {
        setImageLayout(160, 15, 0);
        style::showAnimation(imgView, QStringLiteral("Waking up _ SMall"), false);
    } else {
        style::stopAnimation(imgView);
        setImageLayout(40, 35, 5);
    }
    lblTitle->setText(morning ? c.texts.startMorningHabitTitleText : c.texts.startEveningHabitTitleText);
    const QVector<habit>& list = morning ? c.state.arrAllMorningHabits : c.state.arrAllEveningHabits;
    if (!list.isEmpty()) {
        btnStartFirstHabit->setText(
            getstartActivityButtonText(c.texts, list.first().durationSeconds, list.first().name));
        btnStartFirstHabit->setToolTip(btnStartFirstHabit->text());
    }
    tblViewHabits->clear();
    for (int row = 0; row < list.size(); ++row)
        tblViewHabits->addItem(QStringLiteral("%1.   %2").arg(row + 1).arg(list[row].name));
    tblViewHabits->show();
    lblSubTitle->hide();
}

void firstViewController::startTimer(int duration)
{
    btnStartFirstHabit->hide();
    lbltimer->show();
    if (isTimerGoingOn)
        return; // the count in progress goes on with its old total
    isTimerGoingOn = true;
    currentTimer = 0;
    totalDuration = duration;
    lbltimer->setText(clockText(totalDuration - currentTimer));
    timer = c.scheduler.repeating(1000, this, [this] { performTimerCount(); });
}

void firstViewController::performTimerCount()
{
    ++currentTimer;
    lbltimer->show();
    lbltimer->setText(clockText(totalDuration - currentTimer));
    if (currentTimer < totalDuration)
        return;
    if (timer)
        c.scheduler.cancel(*timer);
    timer.reset();
    btnStartFirstHabit->show();
    lbltimer->hide();
    isTimerGoingOn = false;
}

void firstViewController::btnStartFirstHabitClicked()
{
    if (m_main.isPasswordViewShown())
        return;
    if (isFirstTime)
        m_main.startBreathing();
    else if (c.state.currentState == CURRENTSTATE::_MORNING_HABIT_)
        m_main.startFirstMorningHabit();
    else
        m_main.startFirstEveningHabit();
}

} // namespace velmora
