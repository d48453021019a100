#include "NetworkHttp.h"

#include <memory>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QTimer>
#include <utility>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// What one request still owes its caller.
struct Pending
{
    Http::Callback done;
    QPointer<QObject> context;
    bool hasContext = false;
    QString abortReason;
};

} // namespace

NetworkHttp::NetworkHttp(QObject* parent)
    : QObject(parent)
    , m_manager(this)
{
}

QNetworkRequest NetworkHttp::request(const QUrl& url, int timeoutMs) const
{
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::UserAgentHeader, u"Velmora"_s);
    request.setTransferTimeout(std::max(timeoutMs, 1));
    return request;
}

void NetworkHttp::get(const QUrl& url, int timeoutMs, QObject* context, Callback done)
{
    watch(m_manager.get(request(url, timeoutMs)), timeoutMs, context, std::move(done));
}

void NetworkHttp::postJson(const QUrl& url, const QByteArray& json, int timeoutMs, QObject* context,
                           Callback done)
{
    QNetworkRequest post = request(url, timeoutMs);
    post.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    watch(m_manager.post(post, json), timeoutMs, context, std::move(done));
}

void NetworkHttp::watch(QNetworkReply* reply, int timeoutMs, QObject* context, Callback done)
{
    auto pending = std::make_shared<Pending>();
    pending->done = std::move(done);
    pending->context = context;
    pending->hasContext = context != nullptr;

    // The transfer time-out only measures silence; a server that trickles bytes is
    // stopped by this one.
    auto* deadline = new QTimer(reply);
    deadline->setSingleShot(true);
    connect(deadline, &QTimer::timeout, reply, [reply, pending, timeoutMs] {
        pending->abortReason = u"No answer within %1 ms"_s.arg(timeoutMs);
        reply->abort();
    });
    deadline->start(std::max(timeoutMs, 1));

    connect(reply, &QNetworkReply::downloadProgress, reply, [reply, pending](qint64 received, qint64) {
        if (received > MaxBodyBytes && pending->abortReason.isEmpty()) {
            pending->abortReason = u"The answer is larger than %1 bytes"_s.arg(MaxBodyBytes);
            reply->abort();
        }
    });

    if (context) {
        // Nobody is left to hear the answer: drop the callback first, so that the
        // abort's own finished() reaches no one.
        connect(context, &QObject::destroyed, reply, [reply, pending] {
            pending->done = nullptr;
            reply->abort();
        });
    }

    connect(reply, &QNetworkReply::finished, this, [reply, pending] {
        reply->deleteLater();
        Callback done = std::exchange(pending->done, nullptr);
        if (!done || (pending->hasContext && !pending->context))
            return;
        HttpReply answer;
        answer.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        // Errors below 200 are the connection's and the proxy's (refused, closed
        // early, timed out): whatever arrived before them is not an answer.
        const int error = reply->error();
        const bool transportFailed = !pending->abortReason.isEmpty() ||
                                     (error > QNetworkReply::NoError && error < 200) || answer.status == 0;
        if (transportFailed) {
            answer.status = 0;
            answer.error = pending->abortReason.isEmpty() ? reply->errorString() : pending->abortReason;
            if (answer.error.isEmpty())
                answer.error = u"No HTTP answer"_s;
        } else {
            answer.body = reply->readAll();
        }
        done(answer);
    });
}

} // namespace velmora
