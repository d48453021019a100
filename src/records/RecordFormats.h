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

// Invalid when the text is not a date of that format. Read by hand: a year's
// usage log is read at every shut-off, and Qt 6.8's format parser takes a
// quarter of a millisecond per date.
inline QDateTime parseRecordDate(QStringView text)
{
    if (text.size() != 19)
        return {};
    int fields[6] = {};
    const int starts[6] = {0, 5, 8, 11, 14, 17};
    const int widths[6] = {4, 2, 2, 2, 2, 2};
    for (int f = 0; f < 6; ++f) {
        for (int i = starts[f]; i < starts[f] + widths[f]; ++i) {
            const char16_t c = text[i].unicode();
            if (c < u'0' || c > u'9')
                return {};
            fields[f] = fields[f] * 10 + (c - u'0');
        }
    }
    if (text[4] != u'-' || text[7] != u'-' || text[10] != u' ' || text[13] != u':' || text[16] != u':')
        return {};
    const QDate date(fields[0], fields[1], fields[2]);
    const QTime time(fields[3], fields[4], fields[5]);
    if (!date.isValid() || !time.isValid())
        return {};
    return QDateTime(date, time);
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
