#pragma once

#include <optional>
#include <QString>
#include <QStringList>
#include <QVector>

namespace velmora {

// Records of the settings document. The loader fills every field it has a
// default for, so the rest of the program may rely on them.

struct Time
{
    int hour = 0;
    int minute = 0;
    int second = 0;
    bool operator==(const Time&) const = default;
};

struct habit
{
    QString name;
    int durationSeconds = 0;
    QStringList urlsArray;
    bool logQuantity = false;
    std::optional<QString> logQuantityQuestion;
    bool openSpecificApps = false;
    QStringList allowUrls;
    QStringList allowApps;
};

struct activityChoice
{
    QString name;
    QStringList urlsArray;
    QString logQuantityQuestion;
    bool logQuantity = false;
};

struct breakActivity
{
    QString name;
    int durationSeconds = 0;
    bool IncludeInEveryBreak = false;
    QStringList urlsArray;
    bool logQuantity = false;
    bool isRandomChoice = false;
    QVector<activityChoice> choices;
    std::optional<QString> logQuantityQuestion;
    bool openSpecificApps = false;
    QStringList allowUrls;
    QStringList allowApps;
    bool isOfficeFriendly = false;
};

} // namespace velmora
