// Reads the requests that have an interval: as one-time reads of the driver, one at a time.
#ifndef KVT_HOST_CLASS_READER_H
#define KVT_HOST_CLASS_READER_H

#include "host/class_pace.h"
#include "host/class_scheduler.h"
#include "host/driver_library.h"
#include "host/exchange_observer.h"

#include <vector>

namespace kvt
{

/// Queues the reading that is due, as long as there is none in the driver's queue: what an
/// application queues meanwhile has to wait for one of them at most, and what is chosen last is
/// chosen best. Polling thread.
class ClassReader
{
public:
    /// `index` is that of `tags`. Nothing is read before `lineUp`.
    ClassReader(const QVector<Tag> &tags, const TagIndex &index);

    bool isEmpty() const { return plan_.entries().isEmpty(); }

    /// Nothing is read from now on.
    void stop() { isRunning_ = false; }

    /// A pace for each class, by rising interval.
    std::vector<ClassPace> paces() const;

    /// The line can be used: all requests are due.
    void lineUp(qint64 now_ns);

    /// Queues the request that is due.
    void queueDue(const DriverApi &api, int plcNo, qint64 now_ns);

    /// Number in the driver's queue, 0 or 1.
    int queued() const { return underWay_ >= 0 ? 1 : 0; }

    /// What the end of a reading says of its class's pace.
    struct Ended {
        int readClass = -1;  ///< -1: it says nothing
        qint64 since_ns = 0; ///< since the answer before, of the same request
    };

    /// An attempt at the request that was queued has ended for good.
    Ended ended(const Attempt &attempt);

    /// A request to `station` has failed for good: the driver has purged that station's.
    void stationFailed(int station);

    /// A station is left out, or is read again at once.
    void stationSwitched(int station, bool on, qint64 now_ns);

    /// When there is something to queue; NEVER while there is not.
    qint64 due_ns() const;

private:
    struct Source {
        RW_VAR request;
        qint64 answeredAt_ns = NEVER; // NEVER: not yet, or failed since
    };

    void release();

    ClassPlan plan_;
    ClassScheduler scheduler_;
    std::vector<Source> sources_; // by entry
    int underWay_ = -1;           // entry
    bool isRunning_ = false;
};

} // namespace kvt

#endif
