#include "NativeFrames.h"

#include <cstring>
#include <QJsonDocument>
#include <QStringDecoder>

namespace velmora::frames {

void FrameReader::feed(QByteArrayView bytes)
{
    // The rest of an oversized frame is never held.
    const qsizetype dropped = qsizetype(qMin<quint64>(m_skip, quint64(bytes.size())));
    m_skip -= quint64(dropped);
    m_buffer.append(bytes.sliced(dropped));
}

FrameReader::Status FrameReader::next(QByteArray* frame)
{
    quint32 length = 0;
    if (m_buffer.size() < qsizetype(sizeof length))
        return Status::NeedMore;
    std::memcpy(&length, m_buffer.constData(), sizeof length);
    if (length > m_max) {
        const qsizetype held = qMin<qsizetype>(m_buffer.size() - qsizetype(sizeof length), qsizetype(length));
        m_skip = quint64(length) - quint64(held);
        m_buffer.remove(0, qsizetype(sizeof length) + held);
        return Status::Oversized;
    }
    if (m_buffer.size() - qsizetype(sizeof length) < qsizetype(length))
        return Status::NeedMore;
    *frame = m_buffer.mid(sizeof length, length);
    m_buffer.remove(0, qsizetype(sizeof length) + length);
    return Status::Frame;
}

QByteArray encode(const QByteArray& json, quint32 maxFrameBytes)
{
    if (quint64(json.size()) > maxFrameBytes)
        return {};
    const quint32 length = quint32(json.size());
    QByteArray frame(sizeof length, Qt::Uninitialized);
    std::memcpy(frame.data(), &length, sizeof length);
    return frame + json;
}

QByteArray encode(const QJsonObject& message, quint32 maxFrameBytes)
{
    return encode(QJsonDocument(message).toJson(QJsonDocument::Compact), maxFrameBytes);
}

std::optional<QJsonObject> parse(const QByteArray& frame)
{
    auto decoder = QStringDecoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(frame);
    if (decoder.hasError())
        return std::nullopt;
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    return document.object();
}

} // namespace velmora::frames
