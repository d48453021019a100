#pragma once

#include "SettingsRecords.h"

#include <optional>
#include <QDateTime>

namespace velmora {

// The given day at the given time of day. Absent when the calendar cannot make
// that instant (a start time of "25:99" reads as hour 25): the callers treat it
// as a schedule they cannot keep and log it, rather than stop the program.
std::optional<QDateTime> instantOn(const QDate& day, const Time& time);

// Year, month, day of `date` compared with `today`: true when `date` is today or
// any later day.
bool isSameDayOrLater(const QDateTime& date, const QDate& today);

} // namespace velmora
