#pragma once

#include <QString>

namespace velmora {

// Stored keys. They are part of every user's preferences file and never change,
// spelling included: the last-shown date has no leading "k" on disk.
namespace keys {
inline const QString kUserdefaultsSelectedJson = QStringLiteral("kUserdefaultsSelectedJson");
inline const QString kUserdefaultsFirstRun = QStringLiteral("kUserdefaultsFirstRun");
inline const QString kUserdefaultsFirstRunDate = QStringLiteral("kUserdefaultsFirstRunDate");
inline const QString kUserdefaultsLastHabitShowDate = QStringLiteral("UserdefaultsLastHabitShowDate");
inline const QString kUserdefaultsIsAppEnabled = QStringLiteral("kUserdefaultsIsAppEnabled");
inline const QString kUserdefaults4HourReActivateTime = QStringLiteral("kUserdefaults4HourReActivateTime");
inline const QString kUserdefaultsShowPomodoroView = QStringLiteral("kUserdefaultsShowPomodoroView");
inline const QString kUserdefaultsShutdownAborted = QStringLiteral("kUserdefaultsShutdownAborted");
inline const QString kUserdefaultsEveningHabitsShowedTillDate =
    QStringLiteral("kUserdefaultsEveningHabitsShowedTillDate");
inline const QString kUserdefaultsFocusSummaryShowedTillDate =
    QStringLiteral("kUserdefaultsFocusSummaryShowedTillDate");
inline const QString kUserdefaultsSelectedFolder = QStringLiteral("kUserdefaultsSelectedFolder");
inline const QString kUserdefaultsArrFocusTypes = QStringLiteral("kUserdefaultsArrFocusTypes");
inline const QString kUserdefaultsArrBlockedUrls = QStringLiteral("kUserdefaultsArrBlockedUrls");
inline const QString kUserdefaultsAppPassword = QStringLiteral("kUserdefaultsAppPassword");
inline const QString kUserdefaults24HoursClearPasswordTime =
    QStringLiteral("kUserdefaults24HoursClearPasswordTime");
inline const QString kUserdefaultsPomodoroModeEnabled = QStringLiteral("kUserdefaultsPomodoroModeEnabled");
inline const QString kUserdefaultsOfficeModeEnabled = QStringLiteral("kUserdefaultsOfficeModeEnabled");
inline const QString kUserdefaultsReducedMotion = QStringLiteral("kUserdefaultsReducedMotion");
inline const QString kUserdefaultsPromptToRememberHabit =
    QStringLiteral("kUserdefaultsPromptToRememberHabit");
} // namespace keys

} // namespace velmora
