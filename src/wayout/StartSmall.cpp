#include "StartSmall.h"

#include "JsonValues.h"

#include <algorithm>
#include <QJsonArray>
#include <QJsonValue>

namespace velmora {

namespace {

// Only whole numbers above the limit are shortened; anything else in the
// field is the user's business and stays.
void capDurations(QJsonArray& items)
{
    for (qsizetype i = 0; i < items.size(); ++i) {
        if (!items[i].isObject())
            continue;
        QJsonObject item = items[i].toObject();
        const std::optional<int> duration = json::integer(item, "durationSeconds");
        if (!duration || *duration <= kItemLimitSeconds)
            continue;
        item.insert(QLatin1String("durationSeconds"), kItemLimitSeconds);
        items[i] = item;
    }
}

bool isListOfObjects(const QJsonValue& value)
{
    if (!value.isArray())
        return false;
    const QJsonArray items = value.toArray();
    return std::all_of(items.begin(), items.end(), [](const QJsonValue& v) { return v.isObject(); });
}

} // namespace

StartSmallResult startSmall(QJsonObject document)
{
    StartSmallResult result;
    for (const char* key : {"morningHabits", "eveningHabits"}) {
        const QJsonValue value = document.value(QLatin1String(key));
        if (!isListOfObjects(value))
            continue;
        QJsonArray habits = value.toArray();
        capDurations(habits);
        while (habits.size() * kItemLimitSeconds > kRoutineLimitSeconds) {
            habits.removeLast();
            result.isAnyHabitRemoved = true;
        }
        document.insert(QLatin1String(key), habits);
    }
    const QJsonValue activities = document.value(QLatin1String("breakActivities"));
    if (isListOfObjects(activities)) {
        QJsonArray items = activities.toArray();
        capDurations(items);
        document.insert(QLatin1String("breakActivities"), items);
    }
    result.document = document;
    return result;
}

} // namespace velmora
