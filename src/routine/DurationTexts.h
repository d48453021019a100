#pragma once

#include <QString>

namespace velmora {

class TextCatalogue;

// Three ways of writing a duration, never interchangeable: the long form on
// buttons and titles, the short form in progress lines, the clock form on
// running counters.

// "59 seconds", "1 minute", "90 minutes". No singular for seconds, no hours.
QString getStringTime(int seconds);
// "1h 1m 1s", "45s"; the empty text for 0, which is how callers know that
// nothing is left.
QString getStringTimeFromSeconds(int seconds);
// MM:SS; whole hours are dropped without a sign.
QString clockText(int secondsRemaining);

QString getstartActivityButtonText(const TextCatalogue& texts, int seconds, const QString& name);
QString getStartBreakActivityTitleText(const TextCatalogue& texts, int seconds, const QString& activityName);

} // namespace velmora
