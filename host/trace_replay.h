// Puts a recorded run to the driver again.
#ifndef KVT_HOST_TRACE_REPLAY_H
#define KVT_HOST_TRACE_REPLAY_H

#include "host/driver_library.h"
#include "host/trace_reader.h"

namespace kvt
{

/// How a replay went.
struct ReplayResult {
    int exchanges = 0;  ///< number of requests that the driver was asked for
    int calls = 0;      ///< calls of the driver whose outcome was compared
    QString difference; ///< the first one, with exchange and line; empty when there is none
    QString error;      ///< a line that is no record; empty when there is none
    bool isCut = false; ///< it ended where the recording has lost records
};

/// Makes every call that the trace records, of a freshly loaded driver, and compares what it
/// returns. Also compares the bytes that went out with those that the driver asked to send, and
/// those it was given with those that had come in. Stops at the first difference. The driver stays
/// loaded until the call returns.
ReplayResult replayTrace(TraceReader *reader, const DriverApi &api);

} // namespace kvt

#endif
