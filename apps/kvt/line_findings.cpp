#include "apps/kvt/line_findings.h"

#include "apps/kvt/console.h"
#include "host/host_time.h"

namespace kvt
{

namespace
{

// One end may be a restart of the server, which takes longer than that to happen three times.
constexpr qint64 SHORT_ns = seconds(5);
constexpr int TOO_MANY = 3;

} // namespace

void EchoReport::look(const StationStatistics &total)
{
    if (isDone_ || total.echoBytes == 0)
        return;
    isDone_ = true;
    printError(QStringLiteral("the line sends back what is sent on it: an adapter with echo, or "
                              "one that hears itself; the echo is dropped"));
}

bool RivalWatch::closed(qint64 now_ns)
{
    shortConnections_ = now_ns - openedAt_ns_ < SHORT_ns ? shortConnections_ + 1 : 0;
    return shortConnections_ >= TOO_MANY;
}

} // namespace kvt
