// The faults of a line that the host is tried against.
#ifndef KVT_RIG_FAULT_KINDS_H
#define KVT_RIG_FAULT_KINDS_H

#include "rig/fault_strikes.h"

#include <QString>

namespace kvt
{

/// How far a host with listening pauses keeps a fault from people.
enum class FaultLimit {
    Kept,    ///< no wrong value is ever shown as good
    Bounded, ///< one may be, for no longer than the bound
    Physics  ///< neither its bytes nor their times tell it from a good reply
};

/// One fault of the line.
struct FaultOfLine {
    const char *name;
    const char *text; ///< what happens, for a table
    FaultLimit limit = FaultLimit::Kept;
    const char *reason = ""; ///< why Physics, or why `confirm` does not help either
    Strike strike;
    bool requestLost = false; ///< the PLC does not get the request
    int lockstep = 0;         ///< so many answers are each kept back until the next request
    bool oneByOne = false;    ///< once for each byte of a reply
    int strikes = 0;          ///< so many, if not as many as usual
    bool uniform = false;     ///< with one station and one length of reply alone
};

/// All of them, in the order of the table.
const QVector<FaultOfLine> &faultsOfLine();

} // namespace kvt

#endif
