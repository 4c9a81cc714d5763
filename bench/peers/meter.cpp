#include "bench/peers/meter.h"

#include "bench/peers/wire.h"

#include <QTextStream>

#include <algorithm>
#include <ctime>
#include <limits>

namespace kvt
{

namespace
{

constexpr size_t MOST_DURATIONS = 1000000;

qint64 clock_ns(clockid_t clock)
{
    timespec now = {};
    clock_gettime(clock, &now);
    return now.tv_sec * Q_INT64_C(1000000000) + now.tv_nsec;
}

} // namespace

qint64 clockNow_ns()
{
    return clock_ns(CLOCK_MONOTONIC);
}

Durations::Durations() : values_ns_(MOST_DURATIONS, 1) {}

void Durations::add(qint64 duration_ns)
{
    if (count_ < values_ns_.size())
        values_ns_[count_++] = static_cast<quint32>(
            std::min<qint64>(duration_ns, std::numeric_limits<quint32>::max()));
}

qint64 Durations::quantile_ns(double fraction) const
{
    if (count_ == 0)
        return 0;
    std::vector<quint32> sorted(values_ns_.begin(),
                                values_ns_.begin() + static_cast<std::ptrdiff_t>(count_));
    std::sort(sorted.begin(), sorted.end());
    return sorted.at(static_cast<size_t>(fraction * static_cast<double>(count_ - 1)));
}

bool Meter::transactionEnded(int value)
{
    const qint64 now_ns = clockNow_ns();
    if (value != WIRE_VALUE)
        ++wrongValues_;
    if (total_++ == 0)
        firstAt_ns_ = now_ns;
    if (measuring_) {
        // A run of a fixed number is there to be counted, and sorting would count as well.
        if (length_.count == 0)
            times_.add(now_ns - latestAt_ns_);
        ++measured_;
    } else if (now_ns - firstAt_ns_ >= length_.warmUp_ns) {
        begin(now_ns);
    }
    latestAt_ns_ = now_ns;
    const bool enough =
        length_.count > 0 ? total_ >= length_.count : now_ns - startedAt_ns_ >= length_.measured_ns;
    if (measuring_ && enough)
        finish(now_ns);
    return !finished_;
}

void Meter::begin(qint64 now_ns)
{
    measuring_ = true;
    startedAt_ns_ = now_ns;
    cpuAtStart_ns_ = clock_ns(CLOCK_PROCESS_CPUTIME_ID);
}

void Meter::finish(qint64 now_ns)
{
    finished_ = true;
    cpu_ns_ = clock_ns(CLOCK_PROCESS_CPUTIME_ID) - cpuAtStart_ns_;
    latestAt_ns_ = now_ns;
}

void Meter::print() const
{
    QTextStream(stdout) << measured_ << ' ' << latestAt_ns_ - startedAt_ns_ << ' ' << cpu_ns_ << ' '
                        << times_.quantile_ns(0.5) << ' ' << times_.quantile_ns(0.99) << '\n';
}

} // namespace kvt
