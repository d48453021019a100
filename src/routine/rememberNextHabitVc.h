#pragma once

#include "RoutineContext.h"

#include <QStringList>
#include <QWidget>

class QComboBox;
class QLabel;
class QPushButton;

namespace velmora {

class thirdVc;

// Now and then between two habits: which habit comes next? A wrong answer gets
// a friendly correction, and the routine goes on either way.
class rememberNextHabitVc : public QWidget
{
    Q_OBJECT
public:
    rememberNextHabitVc(RoutineContext ctx, thirdVc& progress, QWidget* parent = nullptr);

    void resetData();
    void popupBtnHabitsClicked();
    void btnStartNextHabitClicked();

    QStringList arrRandomPhraseRightChoice;
    QStringList arrRandomPhraseWrongChoice;
    QString questionText;
    int nextHabitIndex = 0;
    QStringList arrHabitNames;

    QLabel* lblTitle = nullptr;
    QLabel* lblDescription = nullptr;
    QLabel* lblQuestion = nullptr;
    QLabel* lblSelectionResult = nullptr;
    QComboBox* popupBtnHabits = nullptr;
    QPushButton* btnStartNextHabit = nullptr;

private:
    const QVector<struct habit>* listOfState() const;
    RoutineContext c;
    thirdVc& m_progress;
};

} // namespace velmora
