// Gives the master and the slave a processor core each.
#ifndef KVT_BENCH_PEERS_PINNING_H
#define KVT_BENCH_PEERS_PINNING_H

namespace kvt
{

enum class Core {
    Master, ///< the first one that this process may use
    Slave   ///< the second one
};

/// Binds the process to one core, threads that it starts later included. False when it may not use
/// that many.
bool pinTo(Core core);

} // namespace kvt

#endif
