#include "FeedbackUpload.h"

#include "Clock.h"
#include "DebugLog.h"
#include "Http.h"
#include "PreferenceKeys.h"
#include "Preferences.h"
#include "Scheduler.h"
#include "SettingsLoader.h"
#include "TextCatalogue.h"

#include <memory>
#include <QDebug>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QSysInfo>
#include <QUrl>

namespace velmora {

FeedbackUpload::FeedbackUpload(Http& http, const Preferences& preferences, const TextCatalogue& texts,
                               const Clock& clock, QString packagedSettingsPath, const DebugLog& log)
    : m_http(http)
    , m_preferences(preferences)
    , m_texts(texts)
    , m_clock(clock)
    , m_packagedSettingsPath(std::move(packagedSettingsPath))
    , m_log(log)
{
}

FeedbackUpload::FeedbackUpload(Http& http, const Preferences& preferences, const TextCatalogue& texts,
                               const Clock& clock, QString packagedSettingsPath, const DebugLog& log,
                               Scheduler& scheduler)
    : FeedbackUpload(http, preferences, texts, clock, std::move(packagedSettingsPath), log)
{
    m_scheduler = &scheduler;
}

void FeedbackUpload::getAbortJsonToUpload(const std::optional<QString>& emailAddress, const QString& feedback,
                                          const QString& abortReason, QObject* context,
                                          std::function<void()> done)
{
    post(document("abortReason", abortReason, emailAddress, feedback), context, std::move(done));
}

void FeedbackUpload::getQuitJsonToUpload(const std::optional<QString>& emailAddress, const QString& feedback,
                                         const QString& quitReason, QObject* context,
                                         std::function<void()> done)
{
    post(document("quitReason", quitReason, emailAddress, feedback), context, std::move(done));
}

QJsonObject FeedbackUpload::document(const char* reasonKey, const QString& reason,
                                     const std::optional<QString>& emailAddress,
                                     const QString& feedback) const
{
    QJsonParseError error{};
    const QJsonDocument settings =
        QJsonDocument::fromJson(settingsDocumentText(m_preferences, m_packagedSettingsPath), &error);
    if (error.error != QJsonParseError::NoError)
        qDebug() << "feedback: settings document does not parse:" << error.errorString();

    const QDateTime firstRun = m_preferences.date(keys::kUserdefaultsFirstRunDate).value_or(m_clock.now());
    QJsonObject body{
        {QLatin1String(reasonKey), reason},
        {QStringLiteral("settingsJSON"), settings.isObject() ? settings.object() : QJsonObject()},
        {QStringLiteral("macOSVersion"), QSysInfo::prettyProductName() + u' ' + QSysInfo::kernelVersion()},
        {QStringLiteral("feedback"), feedback},
        {QStringLiteral("usageStartDate"), firstRun.toString(QStringLiteral("yyyy-MM-dd"))},
    };
    if (emailAddress)
        body.insert(QStringLiteral("emailAddress"), *emailAddress);
    return body;
}

bool FeedbackUpload::isAccepted(int status, const QByteArray& body)
{
    return status == 200 && QString::fromUtf8(body) == u"1";
}

void FeedbackUpload::post(const QJsonObject& body, QObject* context, std::function<void()> done)
{
    // `done` runs once, whichever comes first: the answer or our own time-out.
    auto finish = std::make_shared<std::function<void()>>(std::move(done));
    auto callOnce = [finish] {
        if (!*finish)
            return;
        auto call = std::move(*finish);
        *finish = nullptr;
        call();
    };

    const QUrl url(m_texts.webhookUrl, QUrl::StrictMode);
    if (m_texts.webhookUrl.isEmpty() || !url.isValid() || url.isRelative()) {
        m_log.addLog(
            QStringLiteral("Feedback not sent: no valid webhook address (\"%1\")").arg(m_texts.webhookUrl));
        if (m_scheduler)
            m_scheduler->post(context, callOnce);
        else
            callOnce();
        return;
    }

    std::optional<TimerId> timeout;
    if (m_scheduler)
        timeout = m_scheduler->singleShot(kTimeoutMs, context, [this, callOnce] {
            m_log.addLog(QStringLiteral("Feedback upload gave no answer in time"));
            callOnce();
        });
    Scheduler* scheduler = m_scheduler;
    m_http.postJson(url, QJsonDocument(body).toJson(QJsonDocument::Compact), kTimeoutMs, context,
                    [scheduler, timeout, callOnce](const HttpReply& reply) {
                        if (scheduler && timeout)
                            scheduler->cancel(*timeout);
                        if (isAccepted(reply.status, reply.body))
                            qDebug() << "success";
                        callOnce();
                    });
}

} // namespace velmora
