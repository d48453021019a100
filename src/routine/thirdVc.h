#pragma once

#include "RoutineContext.h"
#include "SettingsRecords.h"

#include <optional>
#include <QWidget>

class QFrame;
class QLabel;
class QPushButton;

namespace velmora {

class ViewController;
class rememberNextHabitVc;

// The screen between two items: says that an item is done, shows how far the
// routine has come, writes the item's usage row, and offers the one button that
// moves on. It also announces a break and its first activity.
class thirdVc : public QWidget
{
    Q_OBJECT
public:
    thirdVc(RoutineContext ctx, ViewController& main, QWidget* parent = nullptr);

    void morningHabitFinished(int index);
    void eveningHabitFinished(int index);
    void activityFinished(int index);
    void breathingFinished();
    void startBreakActivity();
    void btnMainClicked();

    int lastHabitIndex = -1;
    int lastActivityIndex = -1;
    int randomIntToRememberNextHabit = 0;
    std::optional<activityChoice> currentActivityChoice;

    QFrame* boxBg = nullptr;
    QFrame* boxBreathingFinished = nullptr;
    QLabel* lblTitle = nullptr;
    QLabel* lblSubTitle = nullptr;
    QLabel* lblProgress = nullptr;
    QLabel* imgViewGif = nullptr;
    QPushButton* btnMain = nullptr;

    rememberNextHabitVc& getRememberNextHabitVcObj();
    bool isQuizShown() const;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void habitFinished(int index, bool morning);
    void recordHabit(const habit& h, bool morning);
    QString progressLine(const QVector<habit>& list, int index) const;
    void chooseHabitButton(const QVector<habit>& list);
    void removeQuiz();
    void showQuiz();
    void setMainButton(const QString& title);
    QString activityDisplayName(const breakActivity& activity);
    const QVector<breakActivity>& activityListInUse() const;
    void playSound(const char* name);

    RoutineContext c;
    ViewController& m_main;
    rememberNextHabitVc* rememberNextHabitVcObj = nullptr;
};

} // namespace velmora
