#pragma once

#include <QString>

namespace velmora {

struct RoutineContext;

// The usage row of a finished item: its planned duration, and the moment it
// began as its start time.
void addItemRow(const RoutineContext& c, const QString& logType, const QString& name,
                const QString& durationInSeconds, const QString& quantityQuestion = {},
                const QString& quantityLogged = {});

} // namespace velmora
