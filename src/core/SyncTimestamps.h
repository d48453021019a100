#pragma once

#include <optional>
#include <QDateTime>
#include <QMap>
#include <QString>

namespace velmora {

class Clock;
class Preferences;

// "timestamp.plist" in the user's sync folder: how two machines that share the
// folder agree that a routine was already shown today. Plain data, last writer
// wins; a missing or unreadable file counts as no date.
class SyncTimestamps
{
public:
    SyncTimestamps(const Preferences& preferences, const Clock& clock);

    std::optional<QDateTime> getMorningRoutineDate() const { return readDate(kMorning); }
    std::optional<QDateTime> getEveningRoutineDate() const { return readDate(kEvening); }
    void writeMorningRoutineDate() const { writeDate(kMorning); }
    void writeEveningRoutineDate() const { writeDate(kEvening); }

    static inline const QString kMorning = QStringLiteral("lastMorningRoutine");
    static inline const QString kEvening = QStringLiteral("lastEveningRoutine");

    // XML property list with one dictionary of strings. Reading answers nothing
    // when the text is no such list.
    static std::optional<QMap<QString, QString>> parsePlist(const QByteArray& xml);
    static QByteArray writePlist(const QMap<QString, QString>& entries);

private:
    std::optional<QString> fileInFolder() const;
    std::optional<QDateTime> readDate(const QString& key) const;
    void writeDate(const QString& key) const;

    const Preferences& m_preferences;
    const Clock& m_clock;
};

} // namespace velmora
