#pragma once

#include <functional>
#include <QByteArray>
#include <QObject>
#include <QString>
#include <QUrl>

namespace velmora {

struct HttpReply
{
    int status = 0; // 0 when no HTTP response arrived
    QByteArray body;
    QString error; // transport error text, empty when there is none
};

class Http
{
public:
    virtual ~Http() = default;
    using Callback = std::function<void(const HttpReply&)>;
    // The callback runs exactly once, on the main thread, after a reply, an error or
    // the time-out; never after the context is destroyed.
    virtual void get(const QUrl& url, int timeoutMs, QObject* context, Callback done) = 0;
    virtual void postJson(const QUrl& url, const QByteArray& json, int timeoutMs, QObject* context,
                          Callback done) = 0;
};

} // namespace velmora
