// The life of each write, from its request to its one final state.
#ifndef KVT_HOST_WRITE_TRACKER_H
#define KVT_HOST_WRITE_TRACKER_H

#include <QList>
#include <QString>
#include <QtGlobal>

#include <functional>

namespace kvt
{

enum class WriteState {
    Queued,       ///< waits in the driver's queue
    Sent,         ///< its frame has been handed to the line
    Acknowledged, ///< final: the station has confirmed it
    Refused,      ///< final: it was not accepted, by the host or by the station
    TimedOut,     ///< final: no valid acknowledgement came; whether it took effect is not known
    Dropped,      ///< final: it was given up before it was sent
    Uncertain,    ///< final: an acknowledgement came, and what it is worth is not known
    PartlyWritten ///< final: of a value of several words, which were sent one by one, the first
                  ///< were acknowledged and a later one has failed
};

enum class WriteReason {
    None,
    NotWritable,      ///< Refused: no such tag, an area that cannot be written, no value
    StationOff,       ///< Refused or Dropped: the station is switched off
    QueueFull,        ///< Refused: the driver's queue holds no more
    RefusedByStation, ///< Refused: the station answered with NAK
    NoReply,          ///< TimedOut: nothing came
    BadReply,         ///< TimedOut: what came was no acknowledgement
    Replaced,         ///< Dropped: a newer value for the same address took its place
    PurgedByFailure,  ///< Dropped: another request to its station failed for good
    HostStopped,      ///< Dropped, or TimedOut when it was sent: the host ended first
    DoubtfulReply,    ///< Uncertain: the acknowledgement does not look like one of its station
    NotProved,        ///< Uncertain: the acknowledgement may be that of another request
    SentTwice,        ///< Uncertain: a command that may have been carried out more than once
    NotRead           ///< Dropped: the element that holds the bit could not be read first
};

/// A change in the life of a write.
struct WriteReport {
    int id = 0;  ///< as returned when the write was requested
    int tag = 0; ///< index of its tag
    WriteState state = WriteState::Queued;
    WriteReason reason = WriteReason::None;
    int timesSent = 0; ///< how often it has left for the line, once it has ended there

    bool isFinal() const { return state != WriteState::Queued && state != WriteState::Sent; }
};

/// Returns a name for logs and statistics, e.g. "acknowledged", "timed out".
QString writeStateName(WriteState state);

/// Returns a short explanation for a log, e.g. "a newer value took its place"; empty for None.
QString writeReasonText(WriteReason reason);

/// One write in the driver's queue.
struct QueuedWrite {
    int id = 0;
    int tag = 0;
    int station = 0;
    int area = 0;
    int address = 0; ///< the driver's numeric address
};

/// Mirrors the driver's queue of writes, so that each that leaves it is accounted for. All calls
/// from the polling thread, beside the calls of the driver that they mirror.
class WriteTracker
{
public:
    /// Called for every change, from within the call that brings it about.
    using Report = std::function<void(const WriteReport &)>;

    explicit WriteTracker(Report report);

    /// Whether the driver would drop this write because its queue is full.
    bool wouldOverflow(const QueuedWrite &write) const;

    /// The write has been handed to the driver's queue: it is appended or replaces one of the same
    /// address. The first in the queue may be on the line and is never replaced.
    void queued(const QueuedWrite &write);

    /// The frame of the write `id` leaves for the first time. Those in front of it were dropped by
    /// the driver because their stations are off.
    void sent(int id);

    /// The driver has retired the write `id`, which was sent. Its final state is the caller's to
    /// report. Returns its tag, -1 when it is not the first in the queue.
    int retired(int id);

    /// A request to `station` has failed for good: the driver has purged that station's writes.
    void stationFailed(int station);

    /// The host ends: one that was sent has timed out, the others are dropped.
    void stopped();

    /// Number of writes in the driver's queue.
    int count() const { return queue_.size(); }

private:
    int replaceableIndex(const QueuedWrite &write) const;
    void dropFront(WriteReason reason);
    void report(const QueuedWrite &write, WriteState state, WriteReason reason);

    Report report_;
    QList<QueuedWrite> queue_;
    bool firstIsSent_ = false;
};

} // namespace kvt

#endif
