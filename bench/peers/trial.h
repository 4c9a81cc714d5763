// One run of one master against its slave, each in a process of its own.
#ifndef KVT_BENCH_PEERS_TRIAL_H
#define KVT_BENCH_PEERS_TRIAL_H

#include "bench/peers/masters.h"

#include <QStringList>

namespace kvt
{

struct TrialSettings {
    const Master *master = nullptr;
    int baud = 0;             ///< 0: the slave answers at once
    bool rtuSilences = false; ///< the slave waits for the silence that ends a request in RTU
    RunLength length;
    QStringList wrapper; ///< a command to run the master under; empty for none
};

struct TrialResult {
    int transactions = 0;
    double perSecond = 0;
    double cpu_us = 0;        ///< processor time of the master for each transaction
    double period_p50_us = 0; ///< from one transaction's end to the next one's
    double period_p99_us = 0;
    double gap_p50_us = 0; ///< from the last byte of an answer to the first of the next request
    double gap_p99_us = 0;
    double lineShare = 0; ///< transactions among those that the pace allows; 0 without a pace
};

/// Runs it. On failure returns false and sets `*error` (not null).
bool runTrial(const TrialSettings &settings, TrialResult *result, QString *error);

/// What the processes of a trial do. Returns their exit status. `arguments` are those behind the
/// program's first one.
int masterProcess(const QStringList &arguments);
int slaveProcess(const QStringList &arguments);

} // namespace kvt

#endif
