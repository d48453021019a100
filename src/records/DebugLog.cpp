#include "DebugLog.h"

#include "Clock.h"
#include "RecordFormats.h"

#include <QFile>

namespace velmora {

DebugLog::DebugLog(const Clock& clock, QString path)
    : m_clock(clock)
    , m_path(std::move(path))
{
}

QString DebugLog::formatLine(const QString& timestamp, const QString& text)
{
    return timestamp + QStringLiteral("  -  ") + text + u'\n';
}

void DebugLog::addLog(const QString& text) const
{
    const QString line = formatLine(formatRecordDate(m_clock.now()), text);
    if (m_path.isEmpty())
        return;
    QFile file(m_path);
    // A lost line is acceptable; a failing caller is not.
    if (file.open(QIODevice::WriteOnly | QIODevice::Append))
        file.write(line.toUtf8());
}

} // namespace velmora
