#pragma once

#include <functional>
#include <initializer_list>
#include <optional>
#include <QJsonObject>
#include <QObject>
#include <QString>
#include <QUrl>

namespace velmora {

class DebugLog;
class Http;

// Nearly every sentence the program shows, replaceable without a release: the
// catalogue is downloaded at launch, falls back to the packaged copy, and every
// lookup carries its own default so that a missing key never leaves a blank.
class TextCatalogue
{
public:
    // The texts that are copied out of the catalogue once, at launch.
    QString startActivityButtonText = QStringLiteral("Start <TIME> <NAME>");
    QString activityFinishedText = QStringLiteral("<ACTIVITY> finished!✅");
    QString lastActivityFinishedText = QStringLiteral("<ACTIVITY> finished!✅ You’ve earned your velmora. 💪");
    QString startBreakActivityTitleText =
        QStringLiteral("It’s time for a break. Do <TIME> of <ACTIVITY> to earn more velmora.");
    QString doSomeActivityText = QStringLiteral("Do some <ACTIVITY>.");
    QString startMorningHabitTitleText =
        QStringLiteral("Good Morning! It’s time to earn your velmora. Here are the habits you need to "
                       "accomplish before you can use your computer.");
    QString startEveningHabitTitleText =
        QStringLiteral("Good Evening! It’s time to earn your velmora. Here are the habits you need to "
                       "accomplish before you can leave for the day.");
    QString emailID = QStringLiteral("support@velmora.app");
    QString appName = QStringLiteral("Velmora");
    QString buttonCancelText = QStringLiteral("Cancel");
    QString buttonOkText = QStringLiteral("OK");
    QString unlockMachineButtonText = QStringLiteral("Unlock the machine");
    QString webhookUrl;
    QString buttonStatusStateFocusText = QStringLiteral("FOCUS");
    QString buttonStatusStateOffText = QStringLiteral("OFF");
    QString buttonStatusStateCallText = QStringLiteral("CALL");

    const QJsonObject& configjson() const { return m_configjson; }
    void setConfigjson(const QJsonObject& catalogue) { m_configjson = catalogue; }

    // Loads the packaged catalogue; a missing or broken file leaves it empty so
    // that every text falls back to its default.
    bool loadPackaged(const QString& path);

    // Copies the launch-time texts of "activityInfo" and "common".
    void readConfigFile();

    // group → (sub-group →)* key, or the fallback when any step is missing or not
    // of the right type.
    QString text(std::initializer_list<const char*> groups, const char* key, const QString& fallback) const;
    QString text(const char* group, const char* key, const QString& fallback) const
    {
        return text({group}, key, fallback);
    }
    // Like text(), for a nested dictionary such as "welcomeInfo"."introActivities".
    std::optional<QJsonObject> object(std::initializer_list<const char*> groups, const char* key) const;

private:
    QJsonObject m_configjson;
};

// How long a start-up download may take before the packaged copy is used.
inline constexpr int kConfigDownloadTimeoutMs = 60'000;

using CatalogueCallback = std::function<void(std::optional<QJsonObject>)>;

// GET <server>/config/config.json. The callback runs once, with the catalogue or
// with nothing; with no server configured it runs at once with nothing.
// An address on the configured server: PATH below the server's own path, so that
// a server kept in a folder of a larger site serves every file from that folder.
QUrl serverAddress(const QUrl& server, const QString& path);

void getConfigFile(Http& http, const QUrl& server, const DebugLog& log, QObject* context,
                   CatalogueCallback done);
// The same for the settings schema.
void getSchemsFile(Http& http, const QUrl& server, const DebugLog& log, QObject* context,
                   CatalogueCallback done);

// Replaces every occurrence of each marker, with no escaping.
QString fillTemplate(QString text, std::initializer_list<std::pair<const char*, QString>> markers);

} // namespace velmora
