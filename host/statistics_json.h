// A host's statistics as JSON, for reports and for other programs.
#ifndef KVT_HOST_STATISTICS_JSON_H
#define KVT_HOST_STATISTICS_JSON_H

#include "host/statistics.h"

#include <QJsonObject>

namespace kvt
{

/// Returns the words of a text as one: "no reply" is "no_reply".
QString jsonWord(QString text);

/// Returns durations as their count and, if there are any, least, median, mean, 99th percentile
/// and greatest, in milliseconds.
QJsonObject timesToJson(const Histogram &times);

/// Returns the statistics as they stand at `now_ns`. Names end in their unit. `characterTime_ns`
/// is that of the line; 0 leaves out its utilisation.
QJsonObject statisticsToJson(const Statistics &statistics, qint64 now_ns, qint64 characterTime_ns);

} // namespace kvt

#endif
