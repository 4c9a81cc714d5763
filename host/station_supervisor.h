// Which stations are polled: one that keeps failing is switched off and probed from time to time.
#ifndef KVT_HOST_STATION_SUPERVISOR_H
#define KVT_HOST_STATION_SUPERVISOR_H

#include "host/host_time.h"

#include <QMap>
#include <QVector>

namespace kvt
{

enum class StationState {
    On,     ///< polled
    Off,    ///< not polled until its next probe
    Probing ///< polled again, off at its first failure
};

/// When a station is switched off and how often it is probed; times in nanoseconds.
struct SupervisorSettings {
    int failuresToSwitchOff = 3;       ///< final failures in a row, at least 1
    qint64 firstPause_ns = seconds(1); ///< until the first probe; doubles at each failed one
    qint64 longestPause_ns = seconds(60);
};

/// Keeps the state of each station. Switching the driver is the caller's. No clock; one thread.
class StationSupervisor
{
public:
    StationSupervisor(const SupervisorSettings &settings, const QVector<int> &stations);

    /// State of a station; one that is not known is On.
    StationState state(int station) const;

    /// A request to `station` has failed for good. Returns true when it must be switched off.
    bool failed(int station, qint64 now_ns);

    /// A request to `station` has succeeded. Returns true when that ends its time off.
    bool succeeded(int station);

    /// The stations whose probe is due: they become Probing and must be switched on.
    QVector<int> takeDueProbes(qint64 now_ns);

private:
    struct Station {
        StationState state = StationState::On;
        int failuresInARow = 0;
        qint64 pause_ns = 0;
        qint64 probeAt_ns = NEVER;
    };

    void switchOff(Station *station, qint64 now_ns);
    bool anyPolled() const;
    void probeAllSoon(qint64 now_ns);

    SupervisorSettings settings_;
    QMap<int, Station> stations_;
    qint64 nextProbe_ns_ = NEVER; // no probe is due before
};

} // namespace kvt

#endif
