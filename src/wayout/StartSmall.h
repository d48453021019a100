#pragma once

#include <QJsonObject>

namespace velmora {

// The bargain offered to a user whose habits are too hard: every item of at most
// kItemLimitSeconds, and each routine cut to as many items as fit in
// kRoutineLimitSeconds at that length, counted by items, not by their real sum.
struct StartSmallResult
{
    QJsonObject document = {};
    bool isAnyHabitRemoved = false;
};

inline constexpr int kItemLimitSeconds = 30;
inline constexpr int kRoutineLimitSeconds = 300;

StartSmallResult startSmall(QJsonObject document);

} // namespace velmora
