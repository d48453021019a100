#include "SettingsPreferences.h"

#include <fcntl.h>
#include <QDebug>
#include <QFile>
#include <QStandardPaths>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// Lists and maps are stored in the old binary stream format, in which a date with
// an offset or a named zone comes back as that wall-clock time in UTC: an hour or
// more off. Dates inside them are therefore stored as UTC, which keeps the instant.
QVariant storable(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::QVariantList: {
        QVariantList list = value.toList();
        for (QVariant& item : list)
            item = storable(item);
        return list;
    }
    case QMetaType::QVariantMap: {
        QVariantMap map = value.toMap();
        for (QVariant& item : map)
            item = storable(item);
        return map;
    }
    case QMetaType::QDateTime: {
        const QDateTime date = value.toDateTime();
        if (date.timeSpec() == Qt::OffsetFromUTC || date.timeSpec() == Qt::TimeZone)
            return date.toUTC();
        return value;
    }
    default:
        return value;
    }
}

// QSettings guards each write with "<file>.lock", which holds the writer's
// process id and, while the writer lives, a lock on the file itself. A writer
// killed between making that file and filling it leaves it empty; QSettings
// cannot tell whose it is, and its next write waits until the file is half a
// minute old, freezing the program that long. An empty lock file that nobody
// holds a lock on is such a leftover.
void removeAbandonedLock(const QString& settingsFile)
{
    const QByteArray lockFile = QFile::encodeName(settingsFile + u".lock"_s);
    const int fd = ::open(lockFile.constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return;
    struct stat status = {};
    if (::fstat(fd, &status) == 0 && status.st_size == 0 && ::flock(fd, LOCK_EX | LOCK_NB) == 0) {
        qDebug() << "removing the empty lock file left by a writer that died:" << lockFile;
        ::unlink(lockFile.constData());
    }
    ::close(fd);
}

} // namespace

SettingsPreferences::SettingsPreferences(const QString& filePath)
    : m_settings(filePath.isEmpty() ? defaultFilePath() : filePath, QSettings::IniFormat)
{
    removeAbandonedLock(m_settings.fileName());
}

QString SettingsPreferences::defaultFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           u"/velmora/velmora.conf"_s;
}

QString SettingsPreferences::filePath() const
{
    return m_settings.fileName();
}

QVariant SettingsPreferences::value(const QString& key) const
{
    return m_settings.value(key);
}

void SettingsPreferences::setValue(const QString& key, const QVariant& value)
{
    m_settings.setValue(key, value.typeId() == QMetaType::QDateTime ? value : storable(value));
}

void SettingsPreferences::remove(const QString& key)
{
    m_settings.remove(key);
}

bool SettingsPreferences::contains(const QString& key) const
{
    return m_settings.contains(key);
}

void SettingsPreferences::clear()
{
    m_settings.clear();
    m_settings.sync();
}

void SettingsPreferences::sync()
{
    m_settings.sync();
}

} // namespace velmora
