#include "UsageLog.h"

#include "Clock.h"
#include "RecordFormats.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <unistd.h>

namespace velmora {

const char* const UsageLog::kHeader = "Log type,Timestamp,Activity,Duration in seconds,Quantity Question,"
                                      "Quantity Logged,Start Time,Work achieved,Distractions encountered,"
                                      "Abort reason,Feedback\n";

UsageLog::UsageLog(const Clock& clock, QString path)
    : m_clock(clock)
    , m_path(std::move(path))
{
}

// The length of the file up to its last full line. An unfinished line left by a
// kill is cut off, so that the next row does not join it.
static off_t completeLength(int fd)
{
    const off_t size = ::lseek(fd, 0, SEEK_END);
    off_t end = size;
    char chunk[4096];
    while (end > 0) {
        const off_t start = std::max<off_t>(0, end - off_t(sizeof chunk));
        const ssize_t n = ::pread(fd, chunk, size_t(end - start), start);
        if (n != end - start)
            return -1;
        const void* newline = ::memrchr(chunk, '\n', size_t(n));
        if (newline) {
            end = start + (static_cast<const char*>(newline) - chunk) + 1;
            break;
        }
        end = start;
    }
    if (end != size && ::ftruncate(fd, end) != 0)
        return -1;
    return end;
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

// Only the new row is written, at the end, in one call, and its writeback to the
// disk starts at once. A write cut short leaves an unfinished last line, which the
// readers set aside and the next row replaces.
bool UsageLog::addEntryInCsv(const UsageRow& row) const
{
    if (m_path.isEmpty())
        return false;
    const QByteArray line = formatRow(formatRecordDate(m_clock.now()), row).toUtf8();
    const int fd = ::open(QFile::encodeName(m_path).constData(), O_RDWR | O_CLOEXEC);
    if (fd < 0) {
        std::fprintf(stdout, "%s: %s\n", qPrintable(m_path), std::strerror(errno));
        return false;
    }
    const off_t end = completeLength(fd);
    bool written = end >= 0;
    for (qsizetype done = 0; written && done < line.size();) {
        const ssize_t n = ::pwrite(fd, line.constData() + done, size_t(line.size() - done), end + done);
        if (n < 0 && errno == EINTR)
            continue;
        written = n > 0;
        done += n > 0 ? n : 0;
    }
    // Writeback starts at once; waiting for the disk (some milliseconds) buys nothing
    // against a kill, which the written bytes survive in any case.
    if (written)
        ::sync_file_range(fd, end, line.size(), SYNC_FILE_RANGE_WRITE);
    ::close(fd);
    if (!written)
        std::puts("error creating file");
    return written;
}

} // namespace velmora
