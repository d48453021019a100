#include "DurationTexts.h"

#include "TextCatalogue.h"

#include <QLocale>

namespace velmora {

QString getStringTime(int seconds)
{
    if (seconds <= 59)
        return QString::number(seconds) + QStringLiteral(" seconds");
    if (seconds <= 119)
        return QStringLiteral("1 minute");
    return QString::number(seconds / 60) + QStringLiteral(" minutes");
}

QString clockText(int secondsRemaining)
{
    const int r = qMax(0, secondsRemaining) % 3600;
    return QStringLiteral("%1:%2").arg(r / 60, 2, 10, QLatin1Char('0')).arg(r % 60, 2, 10, QLatin1Char('0'));
}

QString getstartActivityButtonText(const TextCatalogue& texts, int seconds, const QString& name)
{
    QString text = texts.startActivityButtonText;
    // The presence test ignores case, the replacement does not: a template that
    // spells "<time>" passes the test and stays as it is.
    if (text.contains(QLatin1String("<TIME>"), Qt::CaseInsensitive))
        text.replace(QLatin1String("<TIME>"), getStringTime(seconds));
    if (text.contains(QLatin1String("<NAME>"), Qt::CaseInsensitive))
        text.replace(QLatin1String("<NAME>"), name);
    return text;
}

QString getStartBreakActivityTitleText(const TextCatalogue& texts, int seconds, const QString& activityName)
{
    return fillTemplate(texts.startBreakActivityTitleText,
                        {{"<TIME>", getStringTime(seconds)}, {"<ACTIVITY>", activityName}});
}

} // namespace velmora
