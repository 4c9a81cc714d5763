// A host's statistics as JSON, for reports and for other programs.
#ifndef KVT_HOST_STATISTICS_JSON_H
#define KVT_HOST_STATISTICS_JSON_H

#include "host/statistics.h"

#include <QJsonObject>

namespace kvt
{

/// Returns the statistics as they stand at `now_ns`. Times are in microseconds, names end in
/// their unit. `characterTime_ns` is that of the line; 0 leaves out its utilisation.
QJsonObject statisticsToJson(const Statistics &statistics, qint64 now_ns, qint64 characterTime_ns);

} // namespace kvt

#endif
