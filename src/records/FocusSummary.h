#pragma once

#include <optional>
#include <QDateTime>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

namespace velmora {

// One row of a summary table: usage-log column name → field for a focus block,
// or Activity, totalQuantity, average, max, min, totalDuration for a break
// activity.
using SummaryDic = QMap<QString, QString>;

// What the usage log says about today, read back from the file.
struct FocusSummaryData
{
    // Focus blocks written after the boundary, in file order.
    QList<SummaryDic> arrFocusSummaryDic;
    // One entry per break activity name, in the order the names first appear.
    QList<SummaryDic> arrActivitySummaryDic;
    // "<h>h <m>m <s>s" over the focus blocks' durations.
    QString totalFocusTime;
};

// The usage log as rows of fields. The log is never quoted, so this is a plain
// split: at line feeds, then only the text before a line's first semicolon, at
// commas. Fields that are a lone carriage return are dropped; empty fields stay.
QList<QStringList> csv(const QString& data);
// The same for the file's bytes, and for the file; a file that cannot be read
// gives no rows.
QList<QStringList> csvFromBytes(const QByteArray& bytes);
QList<QStringList> readDataFromCSV(const QString& path);

// Reads today's focus blocks and break activities from the usage log. Only rows
// time-stamped strictly after `boundary` (this morning's start time) count.
// Rows whose field count differs from the header's are skipped: that is how a
// row shifted by a comma in free text is kept out.
FocusSummaryData readCsv(const QString& path, const QDateTime& boundary);
// The same for rows already read; the first row is the header.
FocusSummaryData summarize(QList<QStringList> rows, const QDateTime& boundary);

// A whole decimal number as the log holds it: an optional sign and digits,
// nothing around them, within 64 bits.
std::optional<qint64> recordInteger(const QString& text);

QString totalFocusTimeText(qint64 seconds);

} // namespace velmora
