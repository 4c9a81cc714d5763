#include "host/engine_settings.h"

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

qint64 EngineSettings::replyTimeout_ns(int station, int expectedLength) const
{
    const StationTiming &timing = timingOf(station);
    if (timing.replyTimeout_ns > 0)
        return timing.replyTimeout_ns;
    const qint64 length = expectedLength > 0 ? expectedLength : 0;
    return timing.turnaround_ns + length * characterTime_ns + latency_ns;
}

qint64 EngineSettings::quietTime_ns(int station, int expectedLength) const
{
    const StationTiming &timing = timingOf(station);
    return timing.quietTime_ns > 0 ? timing.quietTime_ns : replyTimeout_ns(station, expectedLength);
}

} // namespace kvt
