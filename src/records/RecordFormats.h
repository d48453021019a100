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

} // namespace velmora
