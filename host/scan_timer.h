// Measures how long one round of the cyclic reads takes.
#ifndef KVT_HOST_SCAN_TIMER_H
#define KVT_HOST_SCAN_TIMER_H

#include "host/histogram.h"
#include "host/tag_index.h"

namespace kvt
{

/// A scan lasts from one answer of a certain entry of the read list to its next one. No locking.
class ScanTimer
{
public:
    /// A cyclic read has ended, well or not. `entries` is the length of the read list.
    void cyclicReadEnded(const ReadKey &entry, int entries, qint64 now_ns);

    /// The line was interrupted: the scan under way does not count.
    void interrupted() { running_ = false; }

    const Histogram &times() const { return times_; }

private:
    void startAt(const ReadKey &entry, qint64 now_ns);

    Histogram times_;
    ReadKey mark_;
    bool running_ = false;
    int readsSinceMark_ = 0;
    qint64 startedAt_ns_ = 0;
};

} // namespace kvt

#endif
