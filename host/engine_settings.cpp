#include "host/engine_settings.h"

#include <algorithm>

namespace kvt
{

const StationTiming &EngineSettings::timingOf(int station) const
{
    const auto found = stations.constFind(station);
    return found == stations.constEnd() ? defaultTiming : *found;
}

qint64 EngineSettings::characterGap_ns() const
{
    return latency_ns + 4 * characterTime_ns;
}

qint64 EngineSettings::computedTimeout_ns(int station, int expectedLength) const
{
    const qint64 length = expectedLength > 0 ? expectedLength : 0;
    return timingOf(station).turnaround_ns + length * characterTime_ns + latency_ns;
}

qint64 EngineSettings::replyTimeout_ns(int station, int expectedLength) const
{
    const StationTiming &timing = timingOf(station);
    return timing.replyTimeout_ns > 0 ? timing.replyTimeout_ns
                                      : computedTimeout_ns(station, expectedLength);
}

qint64 EngineSettings::listeningTime_ns(int station, int expectedLength) const
{
    const qint64 quiet_ns = quietTime_ns(station, expectedLength);
    return timingOf(station).quietTime_ns > 0
               ? quiet_ns
               : std::min(quiet_ns, computedTimeout_ns(station, expectedLength));
}

qint64 EngineSettings::quietTime_ns(int station, int expectedLength) const
{
    const StationTiming &timing = timingOf(station);
    return timing.quietTime_ns > 0 ? timing.quietTime_ns : replyTimeout_ns(station, expectedLength);
}

} // namespace kvt
