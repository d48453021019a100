#include "FocusSummary.h"

#include "RecordFormats.h"

#include <algorithm>
#include <limits>
#include <QFile>
#include <QHash>
#include <QStringDecoder>
#include <QtNumeric>

namespace velmora {

QList<QStringList> csv(const QString& data)
{
    QList<QStringList> rows;
    const QStringList lines = data.split(u'\n');
    rows.reserve(lines.size());
    for (const QString& line : lines) {
        // Text behind a semicolon is dropped: the log has no quoting, and the
        // columns that matter here never hold one.
        const QString firstPiece = line.section(u';', 0, 0);
        QStringList fields = firstPiece.split(u',');
        fields.removeAll(QStringLiteral("\r"));
        rows.append(fields);
    }
    return rows;
}

QList<QStringList> csvFromBytes(const QByteArray& written)
{
    // A line without its newline is a row whose writing was cut short.
    const QByteArray bytes = written.left(written.lastIndexOf('\n') + 1);
    // The log is written as UTF-8; a byte-order mark of another encoding wins.
    // Invalid bytes become replacement characters, so one damaged row does not
    // hide the rest of the day.
    QStringDecoder decoder(QStringConverter::encodingForData(bytes).value_or(QStringConverter::Utf8));
    return csv(decoder.decode(bytes));
}

QList<QStringList> readDataFromCSV(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return csvFromBytes(file.readAll());
}

std::optional<qint64> recordInteger(const QString& text)
{
    qsizetype i = 0;
    if (!text.isEmpty() && (text.front() == u'+' || text.front() == u'-'))
        i = 1;
    if (i == text.size())
        return std::nullopt;
    for (qsizetype j = i; j < text.size(); ++j) {
        if (text[j] < u'0' || text[j] > u'9')
            return std::nullopt;
    }
    bool ok = false;
    const qint64 value = text.toLongLong(&ok, 10);
    return ok ? std::optional<qint64>(value) : std::nullopt;
}

// Sums that cannot overflow: a log full of huge typed numbers pins at the limit.
static qint64 addClamped(qint64 a, qint64 b)
{
    qint64 sum = 0;
    if (!qAddOverflow(a, b, &sum))
        return sum;
    return b > 0 ? std::numeric_limits<qint64>::max() : std::numeric_limits<qint64>::min();
}

QString totalFocusTimeText(qint64 seconds)
{
    return QStringLiteral("%1h %2m %3s")
        .arg(seconds / 3600)
        .arg((seconds % 3600) / 60)
        .arg((seconds % 3600) % 60);
}

namespace {

struct ActivityNumbers
{
    QList<qint64> QuantityLoggedArr;
    QList<qint64> DurationArr;
};

// -1 is how an absent number is written, so it is dropped with the ones that
// do not parse.
std::optional<qint64> loggedNumber(const QString& text)
{
    const auto value = recordInteger(text);
    if (!value || *value == -1)
        return std::nullopt;
    return value;
}

SummaryDic activitySummary(const QString& name, const ActivityNumbers& numbers)
{
    qint64 totalDuration = 0;
    for (const qint64 d : numbers.DurationArr)
        totalDuration = addClamped(totalDuration, d);
    qint64 total = 0, average = 0, max = 0, min = 0;
    const QList<qint64>& q = numbers.QuantityLoggedArr;
    if (!q.isEmpty()) {
        for (const qint64 v : q)
            total = addClamped(total, v);
        average = total / q.size();
        max = *std::max_element(q.begin(), q.end());
        min = *std::min_element(q.begin(), q.end());
    }
    return {{QStringLiteral("Activity"), name},
            {QStringLiteral("totalQuantity"), QString::number(total)},
            {QStringLiteral("average"), QString::number(average)},
            {QStringLiteral("max"), QString::number(max)},
            {QStringLiteral("min"), QString::number(min)},
            {QStringLiteral("totalDuration"), QString::number(totalDuration)}};
}

} // namespace

FocusSummaryData readCsv(const QString& path, const QDateTime& boundary)
{
    return summarize(readDataFromCSV(path), boundary);
}

FocusSummaryData summarize(QList<QStringList> rows, const QDateTime& boundary)
{
    FocusSummaryData summary;
    QList<SummaryDic> breakRows;
    if (!rows.isEmpty()) {
        const QStringList header = rows.takeFirst();
        for (const QStringList& fields : std::as_const(rows)) {
            if (fields.size() != header.size())
                continue;
            SummaryDic row;
            for (qsizetype i = 0; i < fields.size(); ++i)
                row.insert(header[i], fields[i]);
            const QString logType = row.value(QStringLiteral("Log type"));
            const bool focusBlock = logType == QLatin1String("focus block");
            if (!focusBlock && logType != QLatin1String("break"))
                continue;
            const QDateTime written = parseRecordDate(row.value(QStringLiteral("Timestamp")));
            if (!written.isValid() || written <= boundary)
                continue;
            (focusBlock ? summary.arrFocusSummaryDic : breakRows).append(row);
        }
    }

    QList<QString> names;
    QHash<QString, ActivityNumbers> numbers;
    for (const SummaryDic& row : std::as_const(breakRows)) {
        const QString name = row.value(QStringLiteral("Activity"));
        if (!numbers.contains(name))
            names.append(name);
        ActivityNumbers& n = numbers[name];
        if (const auto quantity = loggedNumber(row.value(QStringLiteral("Quantity Logged"))))
            n.QuantityLoggedArr.append(*quantity);
        if (const auto duration = loggedNumber(row.value(QStringLiteral("Duration in seconds"))))
            n.DurationArr.append(*duration);
    }
    for (const QString& name : std::as_const(names))
        summary.arrActivitySummaryDic.append(activitySummary(name, numbers.value(name)));

    qint64 focusSeconds = 0;
    for (const SummaryDic& row : std::as_const(summary.arrFocusSummaryDic))
        focusSeconds = addClamped(
            focusSeconds, recordInteger(row.value(QStringLiteral("Duration in seconds"))).value_or(0));
    summary.totalFocusTime = totalFocusTimeText(focusSeconds);
    return summary;
}

} // namespace velmora
