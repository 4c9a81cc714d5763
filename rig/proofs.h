// What the host promises about a bad line, proved on the rig.
#ifndef KVT_RIG_PROOFS_H
#define KVT_RIG_PROOFS_H

#include "host/statistics.h"

#include <QString>

#include <array>

namespace kvt
{

/// Outcome of a proof.
struct ProofResult {
    bool held = false;
    QString text; ///< the figures, one or more lines
};

/// Returns "acknowledged 12, refused 1" and so on of the numbers of writes by their final
/// WriteState.
QString writeEndsText(const std::array<qint64, WRITE_STATES> &ends);

/// A run of a proof.
struct ProofRun {
    QString driverPath; ///< of libKVT.so.1
    quint64 seed = 1;
    qint64 count = 0; ///< exchanges or writes
};

/// How long the host keeps silent after a failed attempt, for comparisons.
struct QuietTrial {
    int quietPercent = 100;  ///< of the reply time-out
    int latestPercent = 190; ///< latest start of a late reply, of the reply time-out
    bool checkpoints = true; ///< with listening pauses, as delivered
};

/// No value is ever delivered to another tag, over `count` exchanges with 1 % each of no reply,
/// late reply, truncation, duplicate and foreign station at ten stations.
ProofResult proveNoMisattribution(const ProofRun &run, const QuietTrial &trial = QuietTrial());

/// With one of ten stations dead, the scan of the others takes at most 1.1 times as long.
/// `count` is the length of the run in seconds of the virtual clock.
ProofResult proveDeadStationCostsLittle(const ProofRun &run);

/// Each of `count` writes under faults ends in exactly one final state, and what was acknowledged
/// is in the PLC's memory.
ProofResult proveWritesAreAccountedFor(const ProofRun &run);

/// At 9,600, 38,400 and 115,200 baud without turnaround the line is in use for at least 99 % of the
/// time without listening pauses, and with them for at least 99 % of that. `count` is the length of
/// each run in seconds of the virtual clock.
ProofResult proveLineIsUsed(const ProofRun &run);

/// Of `count` readings of values of two and of four words, which the PLC changes at any time, some
/// words or all at once, none is shown that was never there. With `acceptsTorn` the list takes
/// words as they come, and the proof must fail.
ProofResult proveNothingIsTorn(const ProofRun &run, bool acceptsTorn = false);

} // namespace kvt

#endif
