#pragma once

#include <QString>

namespace velmora {

class Clock;

// One row of the usage log. Callers leave empty what does not apply.
struct UsageRow
{
    QString logType = {};
    QString activity = {};
    QString durationInSeconds = {};
    QString quantityQuestion = {};
    QString quantityLogged = {};
    QString startTime = {};
    QString workAchieved = {};
    QString distractionsEncountered = {};
    QString abortReason = {};
    QString feedback = {};
};

// The record of what the user really did: a CSV file that only grows. Fields are
// joined with bare commas and never quoted; the reader of the file is built for
// that. Rows are appended; a crash may leave half a line at the end, which the
// readers ignore and the next row replaces.
class UsageLog
{
public:
    UsageLog(const Clock& clock, QString path);

    static const char* const kHeader;

    // Writes the header when the file does not exist yet; an existing file is
    // left exactly as it is. Answers false when the file could not be made.
    bool createIfMissing() const;
    // Answers false when the row could not be written; the file then keeps its
    // old rows.
    bool addEntryInCsv(const UsageRow& row) const;

    QString path() const { return m_path; }
    void setPath(const QString& path) { m_path = path; }
    static QString formatRow(const QString& timestamp, const UsageRow& row);

private:
    const Clock& m_clock;
    QString m_path;
};

} // namespace velmora
