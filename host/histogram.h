// Durations counted in buckets that widen with the duration.
#ifndef KVT_HOST_HISTOGRAM_H
#define KVT_HOST_HISTOGRAM_H

#include <QtGlobal>

#include <array>

namespace kvt
{

/// Counts durations from 0 to some 1,000 seconds in steps of one microsecond up to 64 microseconds
/// and of at most 1/32 of the duration above. Least, greatest and sum are kept exactly. Fixed
/// size; no locking.
class Histogram
{
public:
    /// Negative durations count as 0, those beyond the range as its end.
    void add(qint64 duration_ns);

    quint64 count() const { return count_; }

    /// All in nanoseconds, 0 while nothing has been counted.
    qint64 least_ns() const { return least_ns_; }
    qint64 greatest_ns() const { return greatest_ns_; }
    qint64 mean_ns() const;

    /// The duration that `fraction` (0 to 1) of all do not exceed, to the step of its bucket.
    qint64 quantile_ns(double fraction) const;

private:
    static constexpr int BUCKETS = 27 * 32;

    static int bucketOf(qint64 duration_us);
    static qint64 upperEdge_us(int bucket);

    std::array<quint32, BUCKETS> buckets_ = {};
    quint64 count_ = 0;
    qint64 least_ns_ = 0;
    qint64 greatest_ns_ = 0;
    qint64 sum_ns_ = 0;
};

} // namespace kvt

#endif
