#include "TextCatalogue.h"

#include "DebugLog.h"
#include "Http.h"

#include <QDebug>
#include <QFile>
#include <QJsonDocument>

namespace velmora {

bool TextCatalogue::loadPackaged(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError) {
        qDebug().noquote() << "packaged catalogue:" << error.errorString();
        return false;
    }
    if (!doc.isObject())
        return false;
    m_configjson = doc.object();
    return true;
}

static void copyText(const QJsonObject& group, const char* key, QString& variable)
{
    const QJsonValue v = group.value(QLatin1String(key));
    if (v.isString())
        variable = v.toString();
}

void TextCatalogue::readConfigFile()
{
    const QJsonValue activity = m_configjson.value(QLatin1String("activityInfo"));
    if (activity.isObject()) {
        const QJsonObject g = activity.toObject();
        copyText(g, "startActivityButtonText", startActivityButtonText);
        copyText(g, "activityFinishedText", activityFinishedText);
        copyText(g, "lastActivityFinishedText", lastActivityFinishedText);
        copyText(g, "startBreakActivityTitleText", startBreakActivityTitleText);
        copyText(g, "doSomeActivityText", doSomeActivityText);
        copyText(g, "startMorningHabitTitleText", startMorningHabitTitleText);
        copyText(g, "startEveningHabitTitleText", startEveningHabitTitleText);
    }
    const QJsonValue common = m_configjson.value(QLatin1String("common"));
    if (common.isObject()) {
        const QJsonObject g = common.toObject();
        copyText(g, "emailId", emailID);
        copyText(g, "appName", appName);
        copyText(g, "buttonCancelText", buttonCancelText);
        copyText(g, "buttonOkText", buttonOkText);
        copyText(g, "unlockMachineButtonText", unlockMachineButtonText);
        copyText(g, "webhookUrl", webhookUrl);
        copyText(g, "buttonStatusStateFocusText", buttonStatusStateFocusText);
        copyText(g, "buttonStatusStateOffText", buttonStatusStateOffText);
        copyText(g, "buttonStatusStateCallText", buttonStatusStateCallText);
    }
}

static std::optional<QJsonObject> descend(const QJsonObject& root, std::initializer_list<const char*> groups)
{
    QJsonObject current = root;
    for (const char* group : groups) {
        const QJsonValue v = current.value(QLatin1String(group));
        if (!v.isObject())
            return std::nullopt;
        current = v.toObject();
    }
    return current;
}

QString TextCatalogue::text(std::initializer_list<const char*> groups, const char* key,
                            const QString& fallback) const
{
    const auto group = descend(m_configjson, groups);
    if (!group)
        return fallback;
    const QJsonValue v = group->value(QLatin1String(key));
    return v.isString() ? v.toString() : fallback;
}

std::optional<QJsonObject> TextCatalogue::object(std::initializer_list<const char*> groups,
                                                 const char* key) const
{
    const auto group = descend(m_configjson, groups);
    if (!group)
        return std::nullopt;
    const QJsonValue v = group->value(QLatin1String(key));
    return v.isObject() ? std::optional<QJsonObject>(v.toObject()) : std::nullopt;
}

QUrl serverAddress(const QUrl& server, const QString& path)
{
    QUrl url = server;
    QString base = url.path();
    while (base.endsWith(u'/'))
        base.chop(1);
    url.setPath(base + (path.startsWith(u'/') ? path : u'/' + path));
    url.setQuery(QString());
    url.setFragment(QString());
    return url;
}

static void getJsonDocument(Http& http, const QUrl& server, const QString& path, const DebugLog& log,
                            QObject* context, CatalogueCallback done)
{
    if (!server.isValid() || server.isEmpty() || server.scheme().isEmpty()) {
        done(std::nullopt);
        return;
    }
    const QUrl url = serverAddress(server, path);
    http.get(url, kConfigDownloadTimeoutMs, context, [&log, done](const HttpReply& reply) {
        if (reply.status == 0) {
            if (!reply.error.isEmpty())
                log.addLog(QStringLiteral("error config file: ") + reply.error);
            done(std::nullopt);
            return;
        }
        if (reply.status != 200 || reply.body.isEmpty()) {
            done(std::nullopt);
            return;
        }
        QJsonParseError error;
        const QJsonDocument doc = QJsonDocument::fromJson(reply.body, &error);
        if (error.error != QJsonParseError::NoError) {
            log.addLog(QStringLiteral("error reading config file: ") + error.errorString());
            done(std::nullopt);
            return;
        }
        done(doc.isObject() ? std::optional<QJsonObject>(doc.object()) : std::nullopt);
    });
}

void getConfigFile(Http& http, const QUrl& server, const DebugLog& log, QObject* context,
                   CatalogueCallback done)
{
    getJsonDocument(http, server, QStringLiteral("/config/config.json"), log, context, std::move(done));
}

void getSchemsFile(Http& http, const QUrl& server, const DebugLog& log, QObject* context,
                   CatalogueCallback done)
{
    getJsonDocument(http, server, QStringLiteral("/config/settings-schema.json"), log, context,
                    std::move(done));
}

QString fillTemplate(QString text, std::initializer_list<std::pair<const char*, QString>> markers)
{
    for (const auto& [marker, value] : markers)
        text.replace(QLatin1String(marker), value);
    return text;
}

} // namespace velmora
