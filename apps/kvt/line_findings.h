// What the traffic on a line gives away about the line itself.
#ifndef KVT_APPS_KVT_LINE_FINDINGS_H
#define KVT_APPS_KVT_LINE_FINDINGS_H

#include "host/statistics.h"

namespace kvt
{

/// Prints, once, that the line sends back what is sent on it, if it does.
class EchoReport
{
public:
    /// `total` is what was counted of all stations.
    void look(const StationStatistics &total);

private:
    bool isDone_ = false;
};

/// Notices a connection that the other end closes again and again soon after its opening. A device
/// server that serves one program hangs up on the one to let the other in, and so they take turns.
class RivalWatch
{
public:
    void opened(qint64 now_ns) { openedAt_ns_ = now_ns; }

    /// The connection has ended. Returns true when that is one too many.
    bool closed(qint64 now_ns);

private:
    qint64 openedAt_ns_ = 0;
    int shortConnections_ = 0; // in a row
};

} // namespace kvt

#endif
