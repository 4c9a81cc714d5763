// Times the transactions of one run.
#ifndef KVT_BENCH_PEERS_METER_H
#define KVT_BENCH_PEERS_METER_H

#include <QtGlobal>

#include <vector>

namespace kvt
{

/// How long a run is: either a number of transactions, or a time behind a warm-up.
struct RunLength {
    qint64 warmUp_ns = 0;
    qint64 measured_ns = 0;
    int count = 0; ///< 0: as many as the time allows
};

qint64 clockNow_ns();

/// Durations, with room made and touched beforehand: a run must not pay for its measurement.
class Durations
{
public:
    Durations();

    void add(qint64 duration_ns);

    /// The duration that `fraction` of all do not exceed, in nanoseconds; 0 when there are none.
    qint64 quantile_ns(double fraction) const;

private:
    std::vector<quint32> values_ns_;
    size_t count_ = 0;
};

/// Told by a master of each transaction. One thread.
class Meter
{
public:
    explicit Meter(const RunLength &length) : length_(length) {}

    /// A transaction has brought `value`. Returns whether there is to be another; must not be
    /// called again after it has said no.
    bool transactionEnded(int value);

    /// Whether the run was as long as it should be and each of its values was the right one.
    bool isGood() const { return finished_ && wrongValues_ == 0; }

    /// Prints what a Trial reads: transactions, nanoseconds, those of processor time, and the
    /// median and the 99th percentile of the time from one transaction's end to the next one's.
    void print() const;

private:
    void begin(qint64 now_ns);
    void finish(qint64 now_ns);

    RunLength length_;
    Durations times_;
    qint64 firstAt_ns_ = 0;
    qint64 startedAt_ns_ = 0;
    qint64 latestAt_ns_ = 0;
    qint64 cpuAtStart_ns_ = 0;
    qint64 cpu_ns_ = 0;
    int total_ = 0;
    int measured_ = 0;
    int wrongValues_ = 0;
    bool measuring_ = false;
    bool finished_ = false;
};

} // namespace kvt

#endif
