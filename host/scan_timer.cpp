#include "host/scan_timer.h"

namespace kvt
{

void ScanTimer::cyclicReadEnded(const ReadKey &entry, int entries, qint64 now_ns)
{
    ++readsSinceMark_;
    if (running_ && entry == mark_) {
        times_.add(now_ns - startedAt_ns_);
        startAt(entry, now_ns);
    } else if (!running_ || readsSinceMark_ > entries) {
        // The marked entry's station is not polled any more.
        startAt(entry, now_ns);
    }
}

void ScanTimer::startAt(const ReadKey &entry, qint64 now_ns)
{
    mark_ = entry;
    running_ = true;
    readsSinceMark_ = 0;
    startedAt_ns_ = now_ns;
}

} // namespace kvt
