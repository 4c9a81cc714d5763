// What kvt sim prints.
#ifndef KVT_APPS_KVT_SIM_REPORT_H
#define KVT_APPS_KVT_SIM_REPORT_H

#include "simulator/simulated_plc.h"

#include <QString>

namespace kvt
{

// Each returns one line with its end: plain text, or a JSON object.

/// Under which name the PLC can be reached.
QString lineNameLine(const QString &name, bool json);

/// What happened in one exchange.
QString exchangeLine(const Exchange &exchange, bool json);

/// What has been counted.
QString summaryLine(const PlcCounters &counters, bool json);

} // namespace kvt

#endif
