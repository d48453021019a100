#pragma once

#include <QDateTime>
#include <QString>

namespace velmora {

// Every date in the usage log, the debug log and the sync file is written so.
inline constexpr auto kRecordDateFormat = "yyyy-MM-dd HH:mm:ss";

inline QString formatRecordDate(const QDateTime& date)
{
    return date.toLocalTime().toString(QString::fromLatin1(kRecordDateFormat));
}

// Invalid when the text is not a date of that format.
inline QDateTime parseRecordDate(const QString& text)
{
    return QDateTime::fromString(text, QString::fromLatin1(kRecordDateFormat));
}

// The short form of a duration: "1h 1m 1s", "45s"; units that are 0 are left
// out, so 0 gives the empty text, which is how callers know that nothing is
// left. Progress lines and the focus summary's tables show it.
inline QString getStringTimeFromSeconds(int seconds)
{
    const int h = seconds / 3600;
    const int m = (seconds % 3600) / 60;
    const int s = seconds % 60;
    QString text;
    auto append = [&text](int value, QChar unit) {
        if (value == 0)
            return;
        if (!text.isEmpty())
            text += u' ';
        text += QString::number(value) + unit;
    };
    append(h, u'h');
    append(m, u'm');
    append(s, u's');
    return text;
}

} // namespace velmora
