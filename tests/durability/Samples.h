#pragma once

// The contents the durability writer alternates between, known to the test too,
// so that it can tell an old or a new file from a torn one.

#include "PreferenceKeys.h"
#include "UsageLog.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace velmora::durability {

inline const QDateTime kTimes[2] = {QDateTime(QDate(2026, 11, 23), QTime(7, 30)),
                                    QDateTime(QDate(2026, 11, 24), QTime(7, 45))};

// A focus-block row the summary counts; the activity numbers the rows.
inline UsageRow usageRow(int n)
{
    return {QStringLiteral("focus block"), QStringLiteral("row %1").arg(n), QStringLiteral("1500"),
            {}, {}, QStringLiteral("2026-11-23 07:00:00"), QStringLiteral("wrote the durability test")};
}

// A settings document of several kilobytes; the two variants differ in length.
inline QString settingsDocument(int variant)
{
    QJsonArray habits;
    for (int i = 0; i < 30 + variant; ++i)
        habits.append(QJsonObject{{QStringLiteral("name"), QStringLiteral("Habit number %1").arg(i)},
                                  {QStringLiteral("durationSeconds"), 60 * (i + variant)},
                                  {QStringLiteral("logQuantity"), i % 2 == 0},
                                  {QStringLiteral("videoUrl"), QJsonArray{QStringLiteral("https://example.org/")}}});
    const QJsonObject document{{QStringLiteral("morningHabits"), habits},
                               {QStringLiteral("breakAfterMinutes"), 50 + variant},
                               {QStringLiteral("startTime"), QStringLiteral("07:30")}};
    return QString::fromUtf8(QJsonDocument(document).toJson(QJsonDocument::Indented));
}

// Preferences of every stored kind; each one differs between the variants.
inline QVariantList preferenceValues(int variant)
{
    QStringList urls;
    QVariantList focusTypes;
    for (int i = 0; i < 12; ++i) {
        urls << QStringLiteral("https://site%1.example/%2").arg(i).arg(variant);
        focusTypes << QVariantMap{{QStringLiteral("name"), QStringLiteral("Focus %1.%2").arg(i).arg(variant)},
                                  {QStringLiteral("allowedUrls"), urls}};
    }
    return {variant == 0, kTimes[variant], urls, focusTypes};
}

inline const QString kPreferenceKeys[4] = {keys::kUserdefaultsIsAppEnabled, keys::kUserdefaultsFirstRunDate,
                                           keys::kUserdefaultsArrBlockedUrls, keys::kUserdefaultsArrFocusTypes};

} // namespace velmora::durability
