// What a host tells its application.
#ifndef KVT_HOST_HOST_EVENTS_H
#define KVT_HOST_HOST_EVENTS_H

#include "host/alarm_board.h"
#include "host/class_pace.h"
#include "host/exchange_observer.h"
#include "host/station_supervisor.h"
#include "host/value_table.h"
#include "host/write_tracker.h"

namespace kvt
{

/// Receives a host's events on its polling thread, without any lock held. A receiver must be
/// quick, for the line waits for it, and must not stop the host from here; the host's other calls
/// are allowed. Each change is reported once, never once per poll; attempts alone are reported
/// each. A receiver overrides what it wants to know.
class HostEvents
{
public:
    virtual ~HostEvents() = default;

    /// A station was switched off, or on again (true) after a probe succeeded.
    virtual void stationSwitched(int, bool) {}

    /// A write has come to another state of its life.
    virtual void writeChanged(const WriteReport &) {}

    /// A one-time read has ended: its id, its tag, and whether there was a value.
    virtual void onceReadEnded(int, int, bool) {}

    /// The line can be used (true), or no longer; the text says why it cannot.
    virtual void lineChanged(bool, const QString &) {}

    /// A tag has a new reading.
    virtual void tagRead(int, const Reading &) {}

    /// The latest reading of a tag may be another tag's: its value is no longer good. Until it has
    /// been read again it is Suspect.
    virtual void tagSuspect(int) {}

    /// The words of a tag did not hold still: there is no new value, and the one before is Torn.
    /// Reported each time.
    virtual void tagTorn(int) {}

    /// A reply of the station was taken that does not look like one of it. Reported once for each
    /// station.
    virtual void stationDoubtful(int) {}

    /// The alarm of a tag has changed.
    virtual void alarmChanged(const AlarmEvent &) {}

    /// The tags of an interval are read later than it says, or on time again.
    virtual void classPaceChanged(const ClassPace &) {}

    /// All that was unproven so far has been decided about.
    virtual void proofEnded() {}

    /// Replies were found that answer other requests than their own; the tags concerned are
    /// reported after it.
    virtual void outOfStep() {}

    /// An attempt at a request has ended; what follows from it is reported after it. Few receivers
    /// want to know.
    virtual void attemptEnded(const Attempt &) {}
};

} // namespace kvt

#endif
