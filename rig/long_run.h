// Days of a line's life: faults, dying stations, a line that is unplugged, rebuilt lists, writes,
// and a host that is started anew.
#ifndef KVT_RIG_LONG_RUN_H
#define KVT_RIG_LONG_RUN_H

#include "rig/proofs.h"

#include <functional>

namespace kvt
{

/// A long run.
struct LongRun {
    QString driverPath; ///< of libKVT.so.1
    quint64 seed = 1;
    int days = 30;
    bool paced = true; ///< at 9,600 baud; false: a line that hands bytes over at once
};

/// Called with a line of figures after each day.
using DayReport = std::function<void(const QString &)>;

/// Runs days of a line with ten stations and default settings. It holds when no wrong value was
/// good for longer than the bound, each write came to one end that is true, the driver's queue was
/// always as expected, and the memory in use at the end is that of the second day.
ProofResult proveLongLife(const LongRun &run, const DayReport &report);

} // namespace kvt

#endif
