#pragma once

#include "Http.h"

#include <QNetworkAccessManager>
#include <QObject>

class QNetworkReply;
class QNetworkRequest;

namespace velmora {

class NetworkHttp : public QObject, public Http
{
    Q_OBJECT

public:
    explicit NetworkHttp(QObject* parent = nullptr);

    // A body larger than this ends the request with an error.
    static constexpr qint64 MaxBodyBytes = 16 * 1024 * 1024;

    void get(const QUrl& url, int timeoutMs, QObject* context, Callback done) override;
    void postJson(const QUrl& url, const QByteArray& json, int timeoutMs, QObject* context,
                  Callback done) override;

private:
    QNetworkRequest request(const QUrl& url, int timeoutMs) const;
    void watch(QNetworkReply* reply, int timeoutMs, QObject* context, Callback done);

    QNetworkAccessManager m_manager;
};

} // namespace velmora
