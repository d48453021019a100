#pragma once

#include "SettingsRecords.h"

#include <optional>
#include <QDateTime>
#include <QHash>
#include <QJsonObject>
#include <QStringList>
#include <QVariantList>
#include <QVector>

namespace velmora {

// What the main lock window is doing.
enum class CURRENTSTATE : quint8
{
    _NOTHING_ = 0,
    _MORNING_HABIT_ = 1,
    _EVENING_HABIT_ = 2,
    _ACTIVITY_ = 3,
    _SHUTOFFMAC_ = 4,
    _BREATHING_ = 5,
    _ABORT_ = 6,
    _FOCUS_SUMMARY_ = 7,
};

// The phase within the state.
enum class ACTION : quint8
{
    _STARTING_ = 0,
    _RUNNING_ = 1,
    _OVER_ = 2,
};

// The run state shared by the subsystems. One instance per application object;
// everything here is touched on the main thread only.
struct RunState
{
    bool isAppEnable = true;
    bool isHabitAlreadyShowed = true;
    bool isAppInitialLodded = false;
    bool isFirstRun = false;
    bool isMainWindowLodded = false;
    bool isPomodoroWindowLodded = false;

    CURRENTSTATE currentState = CURRENTSTATE::_NOTHING_;
    ACTION currentAction = ACTION::_STARTING_;
    CURRENTSTATE lastCurrentState = CURRENTSTATE::_NOTHING_;
    ACTION lastCurrentAction = ACTION::_STARTING_;

    int currentHabitIndex = -1;
    int currentActivityIndex = -1;
    std::optional<habit> currentHabitPlaying;
    std::optional<breakActivity> currentActivityPlaying;
    QHash<QString, activityChoice> lastShownRandomChoiceDic;
    std::optional<QDateTime> lastActivityPerformedTime;

    QVector<habit> arrAllMorningHabits;
    QVector<habit> arrAllEveningHabits;
    QVector<breakActivity> arrAllbreakActivities;
    QVector<breakActivity> arrActivitiesIncludeInEveryBreak;
    QVector<breakActivity> arrActivitiesExcludeInEveryBreak;
    std::optional<habit> introActivity;
    bool isAnyMandatoryActivityIncluded = false;
    bool isMandatoryActivityGoing = false;
    int breakAfterMinutes = 0;
    std::optional<Time> startTime;
    std::optional<Time> shutOffTime;

    bool isOfficeModeEnabled = false;
    bool kIsReducedMotion = false;
    bool isPromptToRememberHabit = true;
    bool isPromptToRememberHabitShowedInLastHabit = false;

    // Focus types: an ordered list of dictionaries; the running block is the
    // type whose "isOn" is true.
    QVariantList arrFocusType;
    QStringList arrBlockedUrls;
};

inline bool isItemTimerState(CURRENTSTATE s)
{
    return s == CURRENTSTATE::_MORNING_HABIT_ || s == CURRENTSTATE::_EVENING_HABIT_ ||
           s == CURRENTSTATE::_ACTIVITY_ || s == CURRENTSTATE::_BREATHING_;
}

} // namespace velmora
