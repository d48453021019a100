#pragma once

#include "RecordFormats.h"

#include <QString>

namespace velmora {

class TextCatalogue;

// Three ways of writing a duration, never interchangeable: the long form on
// buttons and titles, the short form in progress lines, the clock form on
// running counters.

// "59 seconds", "1 minute", "90 minutes". No singular for seconds, no hours.
QString getStringTime(int seconds);
// The short form, getStringTimeFromSeconds(), lives with the record formats
// because the focus summary shows it too.
// MM:SS; whole hours are dropped without a sign.
QString clockText(int secondsRemaining);

QString getstartActivityButtonText(const TextCatalogue& texts, int seconds, const QString& name);
QString getStartBreakActivityTitleText(const TextCatalogue& texts, int seconds, const QString& activityName);

} // namespace velmora
