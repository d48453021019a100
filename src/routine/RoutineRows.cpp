#include "RoutineRows.h"

#include "Clock.h"
#include "RecordFormats.h"
#include "RoutineContext.h"
#include "RunState.h"
#include "UsageLog.h"

namespace velmora {

void addItemRow(const RoutineContext& c, const QString& logType, const QString& name,
                const QString& durationInSeconds, const QString& quantityQuestion,
                const QString& quantityLogged)
{
    c.usage.addEntryInCsv(
        {.logType = logType,
         .activity = name,
         .durationInSeconds = durationInSeconds,
         .quantityQuestion = quantityQuestion,
         .quantityLogged = quantityLogged,
         .startTime = formatRecordDate(c.state.lastActivityPerformedTime.value_or(c.clock.now()))});
}

} // namespace velmora
