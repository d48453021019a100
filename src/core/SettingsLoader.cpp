#include "SettingsLoader.h"

#include "DebugLog.h"
#include "JsonValues.h"
#include "PreferenceKeys.h"
#include "Preferences.h"

#include <QDebug>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

namespace velmora {

activityChoice decodeActivityChoice(const QJsonObject& o)
{
    activityChoice c;
    c.name = json::string(o, "name").value_or(QString());
    c.urlsArray = json::stringArray(o, "videoUrl").value_or(QStringList());
    c.logQuantityQuestion = json::string(o, "logQuantityQuestion").value_or(QString());
    c.logQuantity = json::boolean(o, "logQuantity").value_or(false);
    return c;
}

habit decodeHabit(const QJsonObject& o)
{
    habit h;
    h.name = json::string(o, "name").value_or(QString());
    h.durationSeconds = json::integer(o, "durationSeconds").value_or(0);
    h.urlsArray = json::stringArray(o, "videoUrl").value_or(QStringList());
    h.logQuantity = json::boolean(o, "logQuantity").value_or(false);
    h.logQuantityQuestion = json::string(o, "logQuantityQuestion");
    h.allowUrls = json::stringArray(o, "allowedUrls").value_or(QStringList());
    h.allowApps = json::stringArray(o, "allowedApps").value_or(QStringList());
    h.openSpecificApps = !h.allowApps.isEmpty();
    return h;
}

breakActivity decodeBreakActivity(const QJsonObject& o)
{
    breakActivity a;
    a.name = json::string(o, "name").value_or(QString());
    a.durationSeconds = json::integer(o, "durationSeconds").value_or(0);
    a.IncludeInEveryBreak = json::boolean(o, "includeInEveryBreak").value_or(false);
    a.urlsArray = json::stringArray(o, "videoUrl").value_or(QStringList());
    a.logQuantity = json::boolean(o, "logQuantity").value_or(false);
    a.allowUrls = json::stringArray(o, "allowedUrls").value_or(QStringList());
    a.allowApps = json::stringArray(o, "allowedApps").value_or(QStringList());
    a.isOfficeFriendly = json::boolean(o, "isOfficeFriendly").value_or(false);
    const QString type = json::string(o, "type").value_or(QString());
    if (const auto choices = json::objectArray(o, "choices")) {
        for (const QJsonObject& choice : *choices)
            a.choices.append(decodeActivityChoice(choice));
    }
    a.logQuantityQuestion = json::string(o, "logQuantityQuestion");
    a.isRandomChoice = type == u"random-choice" && !a.choices.isEmpty();
    a.openSpecificApps = !a.allowApps.isEmpty();
    return a;
}

template <typename Record, typename Decode>
static QVector<Record> decodeList(const QJsonObject& document, const char* key, Decode decode)
{
    QVector<Record> out;
    const auto objects = json::objectArray(document, key);
    if (!objects)
        return out;
    for (const QJsonObject& object : *objects)
        out.append(decode(object));
    return out;
}

void applySettingsDocument(RunState& state, const QJsonObject& document)
{
    state.arrAllMorningHabits = decodeList<habit>(document, "morningHabits", decodeHabit);
    state.arrAllEveningHabits = decodeList<habit>(document, "eveningHabits", decodeHabit);
    state.arrAllbreakActivities = decodeList<breakActivity>(document, "breakActivities", decodeBreakActivity);
    if (const auto minutes = json::integer(document, "breakAfterMinutes")) {
        state.breakAfterMinutes = *minutes;
        qDebug() << "breakAfterMinutes" << *minutes;
    }
    if (const auto start = json::string(document, "startTime"))
        state.startTime = getTimeFromString(*start);
    if (const auto shutOff = json::string(document, "shutOffTime"))
        state.shutOffTime = getTimeFromString(*shutOff);
}

static QJsonObject parseDocument(const QByteArray& bytes, const QString& origin, const DebugLog& log)
{
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError) {
        qDebug().noquote() << error.errorString();
        log.addLog(origin + QStringLiteral(" is not valid JSON: ") + error.errorString());
        return {};
    }
    if (!doc.isObject()) {
        log.addLog(origin + QStringLiteral(" is not a JSON object; no routines loaded"));
        return {};
    }
    return doc.object();
}

QByteArray settingsDocumentText(const Preferences& preferences, const QString& packagedSettingsPath)
{
    if (const auto saved = preferences.string(keys::kUserdefaultsSelectedJson))
        return saved->toUtf8();
    QFile packaged(packagedSettingsPath);
    if (!packaged.open(QIODevice::ReadOnly))
        return {};
    return packaged.readAll();
}

void readSettingsJsonDictionary(RunState& state, const Preferences& preferences, const QString& packagedPath,
                                const DebugLog& log)
{
    state.arrAllMorningHabits.clear();
    state.arrAllEveningHabits.clear();
    state.arrAllbreakActivities.clear();

    QJsonObject document;
    const bool saved = preferences.string(keys::kUserdefaultsSelectedJson).has_value();
    // Saved as something other than text: the packaged document applies.
    if (!saved && preferences.contains(keys::kUserdefaultsSelectedJson))
        log.addLog(QStringLiteral("The saved settings document is not text; the packaged one applies"));
    const QByteArray text = settingsDocumentText(preferences, packagedPath);
    if (saved || !text.isEmpty())
        document = parseDocument(text,
                                 saved ? QStringLiteral("The saved settings document")
                                       : QStringLiteral("The packaged settings document"),
                                 log);
    applySettingsDocument(state, document);
}

bool anyItemHasPage(const RunState& state)
{
    auto hasPage = [](const auto& item) { return !item.urlsArray.isEmpty(); };
    for (const auto* list : {&state.arrAllMorningHabits, &state.arrAllEveningHabits}) {
        if (std::any_of(list->begin(), list->end(), hasPage))
            return true;
    }
    for (const breakActivity& activity : state.arrAllbreakActivities) {
        if (hasPage(activity) || std::any_of(activity.choices.begin(), activity.choices.end(), hasPage))
            return true;
    }
    return state.introActivity && hasPage(*state.introActivity);
}

Time getTimeFromString(const QString& val)
{
    static const QRegularExpression decimal(QStringLiteral("^[+-]?[0-9]+$"));
    const QStringList parts = val.split(u':');
    if (parts.isEmpty() || parts.size() > 3)
        return {};
    int numbers[3] = {0, 0, 0};
    for (int i = 0; i < parts.size(); ++i) {
        bool ok = false;
        const int n = decimal.match(parts[i]).hasMatch() ? parts[i].toInt(&ok, 10) : 0;
        numbers[i] = ok ? n : 0;
    }
    return Time{numbers[0], numbers[1], numbers[2]};
}

} // namespace velmora
