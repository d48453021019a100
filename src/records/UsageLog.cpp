#include "UsageLog.h"

#include "Clock.h"
#include "RecordFormats.h"

#include <cstdio>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace velmora {

const char* const UsageLog::kHeader = "Log type,Timestamp,Activity,Duration in seconds,Quantity Question,"
                                      "Quantity Logged,Start Time,Work achieved,Distractions encountered,"
                                      "Abort reason,Feedback\n";

UsageLog::UsageLog(const Clock& clock, QString path)
    : m_clock(clock)
    , m_path(std::move(path))
{
}

static bool writeWhole(const QString& path, const QByteArray& bytes)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    if (file.write(bytes) != bytes.size())
        return false;
    return file.commit();
}

bool UsageLog::createIfMissing() const
{
    if (m_path.isEmpty() || QFileInfo::exists(m_path))
        return true;
    if (!writeWhole(m_path, QByteArray(kHeader))) {
        std::puts("error creating file");
        return false;
    }
    return true;
}

QString UsageLog::formatRow(const QString& timestamp, const UsageRow& row)
{
    const QStringList fields{row.logType,
                             timestamp,
                             row.activity,
                             row.durationInSeconds,
                             row.quantityQuestion,
                             row.quantityLogged,
                             row.startTime,
                             row.workAchieved,
                             row.distractionsEncountered,
                             row.abortReason,
                             row.feedback};
    return fields.join(u',') + u'\n';
}

bool UsageLog::addEntryInCsv(const UsageRow& row) const
{
    if (m_path.isEmpty())
        return false;
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stdout, "%s\n", qPrintable(file.errorString()));
        return false;
    }
    QByteArray contents = file.readAll();
    file.close();
    contents += formatRow(formatRecordDate(m_clock.now()), row).toUtf8();
    if (!writeWhole(m_path, contents)) {
        std::puts("error creating file");
        return false;
    }
    return true;
}

} // namespace velmora
