#include "host/station_supervisor.h"

#include <algorithm>

namespace kvt
{

StationSupervisor::StationSupervisor(const SupervisorSettings &settings,
                                     const QVector<int> &stations)
    : settings_(settings)
{
    for (const int station : stations)
        stations_.insert(station, Station());
}

StationState StationSupervisor::state(int station) const
{
    const auto found = stations_.constFind(station);
    return found == stations_.constEnd() ? StationState::On : found->state;
}

bool StationSupervisor::failed(int station, qint64 now_ns)
{
    const auto found = stations_.find(station);
    if (found == stations_.end() || found->state == StationState::Off)
        return false;
    ++found->failuresInARow;
    if (found->state == StationState::On && found->failuresInARow < settings_.failuresToSwitchOff)
        return false;
    switchOff(&*found, now_ns);
    return true;
}

bool StationSupervisor::succeeded(int station)
{
    const auto found = stations_.find(station);
    if (found == stations_.end() || found->state == StationState::Off)
        return false;
    const bool wasOff = found->state == StationState::Probing;
    *found = Station();
    return wasOff;
}

QVector<int> StationSupervisor::takeDueProbes(qint64 now_ns)
{
    QVector<int> due;
    if (now_ns < nextProbe_ns_)
        return due;
    nextProbe_ns_ = NEVER;
    for (auto station = stations_.begin(); station != stations_.end(); ++station) {
        if (station->state != StationState::Off)
            continue;
        if (station->probeAt_ns <= now_ns) {
            station->state = StationState::Probing;
            due.append(station.key());
        } else {
            nextProbe_ns_ = std::min(nextProbe_ns_, station->probeAt_ns);
        }
    }
    return due;
}

void StationSupervisor::switchOff(Station *station, qint64 now_ns)
{
    const bool again = station->state == StationState::Probing;
    station->state = StationState::Off;
    station->pause_ns = again ? std::min(2 * station->pause_ns, settings_.longestPause_ns)
                              : settings_.firstPause_ns;
    station->probeAt_ns = now_ns + station->pause_ns;
    nextProbe_ns_ = std::min(nextProbe_ns_, station->probeAt_ns);
    if (!anyPolled())
        probeAllSoon(now_ns);
}

bool StationSupervisor::anyPolled() const
{
    return std::any_of(stations_.cbegin(), stations_.cend(),
                       [](const Station &station) { return station.state == StationState::On; });
}

// With no station left to poll, the fault is more likely the line's, and probing takes no time
// from anyone.
void StationSupervisor::probeAllSoon(qint64 now_ns)
{
    for (Station &station : stations_) {
        station.pause_ns = settings_.firstPause_ns;
        station.probeAt_ns = std::min(station.probeAt_ns, now_ns + settings_.firstPause_ns);
    }
    nextProbe_ns_ = std::min(nextProbe_ns_, now_ns + settings_.firstPause_ns);
}

} // namespace kvt
