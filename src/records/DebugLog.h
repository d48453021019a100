#pragma once

#include <QString>

namespace velmora {

class Clock;

// The trail of the program's decisions, for whoever must later find out why a
// routine did or did not start. One time-stamped line per call; the file is
// opened and closed for every line so that it can be moved away while we run.
class DebugLog
{
public:
    DebugLog(const Clock& clock, QString path);

    void addLog(const QString& text) const;
    QString path() const { return m_path; }
    void setPath(const QString& path) { m_path = path; }

    // "2026-03-14 07:30:12  -  text\n": two blanks either side of the hyphen.
    static QString formatLine(const QString& timestamp, const QString& text);

private:
    const Clock& m_clock;
    QString m_path;
};

} // namespace velmora
