// What a host counts and measures, in all and for each station.
#ifndef KVT_HOST_STATISTICS_H
#define KVT_HOST_STATISTICS_H

#include "host/class_pace.h"
#include "host/exchange_observer.h"
#include "host/histogram.h"
#include "host/scan_timer.h"
#include "host/write_tracker.h"

#include <QMap>

#include <array>
#include <vector>

namespace kvt
{

/// Classes of the driver's result codes.
enum class Outcome {
    Success,           ///< 1
    SuccessNotStored,  ///< 100
    LocalBadReply,     ///< 11 to 22
    LocalNoReply,      ///< 41 to 52
    LocalWrongLength,  ///< 71 to 82
    RemoteBadReply,    ///< 111 to 122
    RemoteNoReply,     ///< 141 to 152
    RemoteWrongLength, ///< 171 to 182
    Unknown            ///< 200, and whatever else
};
constexpr int OUTCOMES = 9;
constexpr int ATTEMPT_ENDS = 6;
constexpr int WRITE_STATES = 8;

/// The class of a result code other than 0.
Outcome outcomeOf(int resultCode);

/// Counts of one station, or of all.
struct StationStatistics {
    quint64 exchanges = 0;                       ///< requests that have come to their end
    quint64 attempts = 0;                        ///< frames sent and judged
    quint64 retries = 0;                         ///< attempts beyond the first at their request
    quint64 recoveries = 0;                      ///< requests that succeeded at a later attempt
    std::array<quint64, OUTCOMES> outcomes = {}; ///< of exchanges, by Outcome
    std::array<quint64, ATTEMPT_ENDS> attemptEnds = {}; ///< of attempts, by AttemptEnd
    /// Failed exchanges, by how the last attempt ended and by Outcome. The driver knows neither
    /// refusals nor what was kept from it, and has only its nearest class for these.
    std::array<std::array<quint64, OUTCOMES>, ATTEMPT_ENDS> failures = {};
    quint64 doubtfulReplies = 0; ///< replies that do not look like one to their request
    quint64 doubtfulTaken = 0;   ///< those of them that were taken all the same
    quint64 staleBytes = 0;      ///< dropped: before a request was out, or behind a reply
    quint64 lateBytes = 0;       ///< dropped: in the silence after a failed attempt
    quint64 echoBytes = 0;       ///< dropped: the host's own request
    quint64 stateChanges = 0;    ///< times switched off or on again
    /// Of good replies to first attempts, last byte sent to last byte received. A reply to a later
    /// attempt may answer an earlier one, so that nothing is known of its time.
    Histogram replyTime;

    /// Failed exchanges whose last attempt ended in that way.
    quint64 failuresAt(AttemptEnd end) const;

    void add(const Attempt &attempt);
    void addDropped(DroppedBytes kind, int count);
};

/// All that a host counts. Copied whole for a look at it; does no locking of its own.
class Statistics
{
public:
    void attemptEnded(const Attempt &attempt);
    void bytesDropped(DroppedBytes kind, int station, int count);
    void stationSwitched(int station);
    void writeChanged(const WriteReport &report);
    void lineChanged(bool up, qint64 now_ns);
    void checkpointPassed(qint64 began_ns);

    StationStatistics total;
    QMap<int, StationStatistics> stations;         ///< by station number
    std::array<quint64, WRITE_STATES> writes = {}; ///< writes that came to each state
    ScanTimer scan;
    std::vector<ClassPace> classes; ///< requests that have an interval, by rising interval
    quint64 heldBackReadings = 0;   ///< readings not shown because a write was pending
    quint64 queueMismatches = 0;    ///< times the driver's queue was not as expected; always 0
    quint64 lineFailures = 0;       ///< times the line went away
    quint64 checkpoints = 0;        ///< pauses in which the line was silent
    quint64 timesOutOfStep = 0;     ///< times that replies were found to answer other requests
    qint64 provedUntil_ns = 0;      ///< good replies up to then are proved; 0 before any is
    quint64 wireBytes = 0;          ///< bytes on the line, both ways
    qint64 startedAt_ns = 0;        ///< when the line was first up
    bool started = false;           ///< the line has been up
    bool lineIsUp = false;

    /// Share of the time since the start that bytes were on the line, 0 to 1; 0 while unknown.
    double utilisation(qint64 now_ns, qint64 characterTime_ns) const;
};

} // namespace kvt

#endif
