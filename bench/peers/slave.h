// The other end of every line of the comparison.
#ifndef KVT_BENCH_PEERS_SLAVE_H
#define KVT_BENCH_PEERS_SLAVE_H

#include "bench/peers/wire.h"

namespace kvt
{

/// How a slave keeps time; nanoseconds.
struct SlavePace {
    qint64 byteTime_ns = 0; ///< of every byte, in both directions; 0: it answers at once
    qint64 silence_ns = 0;  ///< for which the line must have been silent before it answers
    qint64 warmUp_ns = 0;   ///< from the first request on, in which it takes no times
};

/// Opens a pseudo-terminal, prints its name, and answers there until a master has come and gone.
/// Then prints what a Trial reads: the number of answers, and the median and 99th percentile of the
/// nanoseconds from the last byte of an answer to the first byte of the next request. Returns
/// false, having said why on standard error, when anything but the one request came.
bool runSlave(WireProtocol protocol, const SlavePace &pace);

} // namespace kvt

#endif
