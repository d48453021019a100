#pragma once

#include <optional>
#include <QByteArray>
#include <QByteArrayView>
#include <QJsonObject>

namespace velmora::frames {

// Native messaging frames: a 32-bit length in the machine's byte order, then that
// many bytes of UTF-8 JSON. The same framing runs between the browser and the host
// and between the host and the program.

// Frames towards a browser may not exceed 1 MB; we hold frames from it to the same.
constexpr quint32 MaxFrameBytes = 1024 * 1024;

// Collects bytes as they arrive and cuts them into frames.
class FrameReader
{
public:
    enum class Status
    {
        Frame,     // *frame holds the next frame
        NeedMore,  // no whole frame yet
        Oversized, // a frame over the limit: it is skipped as its bytes arrive, and
                   // the frames after it are read as usual
    };

    explicit FrameReader(quint32 maxFrameBytes = MaxFrameBytes)
        : m_max(maxFrameBytes)
    {
    }

    void feed(QByteArrayView bytes);
    Status next(QByteArray* frame);
    // Bytes received but not yet returned as a frame, or owed to a skipped one: a
    // part of a frame.
    qsizetype pending() const { return m_buffer.size() + qsizetype(m_skip); }

private:
    QByteArray m_buffer;
    quint32 m_max;
    quint64 m_skip = 0; // bytes of an oversized frame still to come and be dropped
};

// The frame of a JSON text; empty when it is over the limit.
QByteArray encode(const QByteArray& json, quint32 maxFrameBytes = MaxFrameBytes);
QByteArray encode(const QJsonObject& message, quint32 maxFrameBytes = MaxFrameBytes);

// A frame's JSON object; nothing for invalid UTF-8, for JSON that does not parse
// and for JSON that is not an object.
std::optional<QJsonObject> parse(const QByteArray& frame);

} // namespace velmora::frames
