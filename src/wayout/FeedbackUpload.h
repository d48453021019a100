#pragma once

#include <functional>
#include <optional>
#include <QJsonObject>
#include <QObject>
#include <QString>

namespace velmora {

class Clock;
class DebugLog;
class Http;
class Preferences;
class Scheduler;
class TextCatalogue;

// Posts one small JSON document to the feedback webhook when a user leaves
// because the program failed him, or unlocks the machine at night. Fire and
// forget: `done` always comes, at the latest after kTimeoutMs, whatever the
// server does.
class FeedbackUpload
{
public:
    static constexpr int kTimeoutMs = 15'000;

    FeedbackUpload(Http& http, const Preferences& preferences, const TextCatalogue& texts, const Clock& clock,
                   QString packagedSettingsPath, const DebugLog& log);
    // With a scheduler the time-out is kept here as well, so that `done` comes
    // after kTimeoutMs even from an Http that never answers.
    FeedbackUpload(Http& http, const Preferences& preferences, const TextCatalogue& texts, const Clock& clock,
                   QString packagedSettingsPath, const DebugLog& log, Scheduler& scheduler);

    void getAbortJsonToUpload(const std::optional<QString>& emailAddress, const QString& feedback,
                              const QString& abortReason, QObject* context, std::function<void()> done);
    void getQuitJsonToUpload(const std::optional<QString>& emailAddress, const QString& feedback,
                             const QString& quitReason, QObject* context, std::function<void()> done);

    // The document as posted: reason key, settingsJSON (an object), macOSVersion,
    // feedback, usageStartDate, emailAddress.
    QJsonObject document(const char* reasonKey, const QString& reason,
                         const std::optional<QString>& emailAddress, const QString& feedback) const;
    // The webhook answers a bare "1" when it took the document.
    static bool isAccepted(int status, const QByteArray& body);

private:
    void post(const QJsonObject& body, QObject* context, std::function<void()> done);

    Http& m_http;
    const Preferences& m_preferences;
    const TextCatalogue& m_texts;
    const Clock& m_clock;
    QString m_packagedSettingsPath;
    const DebugLog& m_log;
    Scheduler* m_scheduler = nullptr;
};

} // namespace velmora
