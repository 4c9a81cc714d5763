// Runs every master in turn, again and again.
#ifndef KVT_BENCH_PEERS_COMPARISON_H
#define KVT_BENCH_PEERS_COMPARISON_H

#include "bench/peers/report.h"

namespace kvt
{

struct ComparisonSettings {
    QVector<int> speeds = {0, 9600, 38400, 115200}; ///< 0: free-running
    int rounds = 5;                                 ///< of every master at every speed
    qint64 run_ns = 1000000000;                     ///< of one master
};

/// Runs it, all masters once in every round. The bare loop has two rows, whose difference is the
/// noise. On failure returns false and sets `*error` (not null).
bool runComparison(const ComparisonSettings &settings, Comparison *comparison, QString *error);

} // namespace kvt

#endif
