#include "host/histogram.h"

#include <algorithm>
#include <cmath>

namespace kvt
{

void Histogram::add(qint64 duration_ns)
{
    const qint64 duration = std::max<qint64>(duration_ns, 0);
    ++buckets_.at(static_cast<size_t>(bucketOf(duration / 1000)));
    least_ns_ = count_ == 0 ? duration : std::min(least_ns_, duration);
    greatest_ns_ = std::max(greatest_ns_, duration);
    sum_ns_ += duration;
    ++count_;
}

qint64 Histogram::mean_ns() const
{
    return count_ == 0 ? 0 : sum_ns_ / static_cast<qint64>(count_);
}

qint64 Histogram::quantile_ns(double fraction) const
{
    const auto wanted = static_cast<quint64>(std::ceil(fraction * static_cast<double>(count_)));
    quint64 seen = 0;
    for (int bucket = 0; bucket < BUCKETS; ++bucket) {
        seen += buckets_.at(static_cast<size_t>(bucket));
        if (seen >= wanted && seen > 0)
            return std::clamp(upperEdge_us(bucket) * 1000, least_ns_, greatest_ns_);
    }
    return 0;
}

// Below 64 a bucket is one microsecond wide; above, each doubling has 32 of them.
int Histogram::bucketOf(qint64 duration_us)
{
    const int leadingZeros = __builtin_clzll(static_cast<quint64>(duration_us) | 1);
    const int doublings = std::max(58 - leadingZeros, 0); // until it is below 64
    const auto step = static_cast<int>(duration_us >> doublings);
    return std::min(doublings * 32 + step, BUCKETS - 1);
}

qint64 Histogram::upperEdge_us(int bucket)
{
    if (bucket < 64)
        return bucket + 1;
    const int doublings = bucket / 32 - 1;
    const qint64 step = bucket - doublings * 32;
    return (step + 1) << doublings;
}

} // namespace kvt
