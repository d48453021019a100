#include "SyncTimestamps.h"

#include "Clock.h"
#include "PreferenceKeys.h"
#include "Preferences.h"
#include "RecordFormats.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace velmora {

SyncTimestamps::SyncTimestamps(const Preferences& preferences, const Clock& clock)
    : m_preferences(preferences)
    , m_clock(clock)
{
}

std::optional<QString> SyncTimestamps::fileInFolder() const
{
    const auto folder = m_preferences.string(keys::kUserdefaultsSelectedFolder);
    if (!folder || folder->isEmpty())
        return std::nullopt;
    return QDir(*folder).filePath(QStringLiteral("timestamp.plist"));
}

std::optional<QMap<QString, QString>> SyncTimestamps::parsePlist(const QByteArray& xml)
{
    QXmlStreamReader reader(xml);
    if (!reader.readNextStartElement() || reader.name() != u"plist")
        return std::nullopt;
    if (!reader.readNextStartElement() || reader.name() != u"dict")
        return std::nullopt;
    QMap<QString, QString> entries;
    QString key;
    while (reader.readNextStartElement()) {
        if (reader.name() == u"key") {
            key = reader.readElementText();
        } else if (reader.name() == u"string") {
            entries.insert(key, reader.readElementText());
        } else {
            reader.skipCurrentElement();
        }
    }
    if (reader.hasError())
        return std::nullopt;
    return entries;
}

// What XML 1.0 can carry. A file the reader accepted may hold other characters;
// written as they are, they cut the writer's output short, and the file no longer reads.
static QString xmlText(const QString& text)
{
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        const bool pair = QChar::isHighSurrogate(c) && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        if (pair) {
            out += text[i];
            out += text[++i];
        } else if (c == u'\t' || c == u'\n' || c == u'\r' || (c >= 0x20 && c < 0xD800) ||
                   (c >= 0xE000 && c <= 0xFFFD)) {
            out += text[i];
        } else {
            out += QChar::ReplacementCharacter;
        }
    }
    return out;
}

QByteArray SyncTimestamps::writePlist(const QMap<QString, QString>& entries)
{
    QByteArray out;
    QXmlStreamWriter writer(&out);
    writer.setAutoFormatting(true);
    writer.setAutoFormattingIndent(-1);
    writer.writeStartDocument();
    writer.writeDTD(QStringLiteral("<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                   "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">"));
    writer.writeStartElement(QStringLiteral("plist"));
    writer.writeAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
    writer.writeStartElement(QStringLiteral("dict"));
    for (auto it = entries.cbegin(); it != entries.cend(); ++it) {
        writer.writeTextElement(QStringLiteral("key"), xmlText(it.key()));
        writer.writeTextElement(QStringLiteral("string"), xmlText(it.value()));
    }
    writer.writeEndElement();
    writer.writeEndElement();
    writer.writeEndDocument();
    return out;
}

std::optional<QDateTime> SyncTimestamps::readDate(const QString& key) const
{
    const auto path = fileInFolder();
    if (!path || !QFileInfo::exists(*path))
        return std::nullopt;
    QFile file(*path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const auto entries = parsePlist(file.readAll());
    if (!entries || !entries->contains(key))
        return std::nullopt;
    const QDateTime date = parseRecordDate(entries->value(key));
    return date.isValid() ? std::optional<QDateTime>(date) : std::nullopt;
}

void SyncTimestamps::writeDate(const QString& key) const
{
    const auto path = fileInFolder();
    if (!path)
        return;
    QMap<QString, QString> entries;
    QFile existing(*path);
    if (existing.open(QIODevice::ReadOnly)) {
        if (const auto parsed = parsePlist(existing.readAll()))
            entries = *parsed;
        existing.close();
    }
    entries.insert(key, formatRecordDate(m_clock.now()));
    QSaveFile file(*path);
    const QByteArray bytes = writePlist(entries);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        qDebug() << "unable to create the file";
}

} // namespace velmora
