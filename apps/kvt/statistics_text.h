// A host's statistics as an engineer reads them.
#ifndef KVT_APPS_KVT_STATISTICS_TEXT_H
#define KVT_APPS_KVT_STATISTICS_TEXT_H

#include "host/statistics.h"

#include <QString>

namespace kvt
{

/// Returns a few lines of text: all, then each station. `characterTime_ns` as in the statistics'
/// utilisation.
QString statisticsText(const Statistics &statistics, qint64 now_ns, qint64 characterTime_ns);

} // namespace kvt

#endif
