// A small random generator whose numbers are the same on every machine.
#ifndef KVT_SIMULATOR_RANDOM_H
#define KVT_SIMULATOR_RANDOM_H

#include <QtGlobal>

namespace kvt
{

/// The SplitMix64 generator. Equal seeds give equal numbers. Not thread-safe.
class Random
{
public:
    explicit Random(quint64 seed) : state_(seed) {}

    /// Returns the next 64 random bits.
    quint64 next();

    /// Returns a number from 0 to `bound` - 1; 0 when `bound` is 0.
    quint32 below(quint32 bound);

private:
    quint64 state_;
};

} // namespace kvt

#endif
