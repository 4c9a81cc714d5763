#include "simulator/random.h"

namespace kvt
{

quint64 Random::next()
{
    state_ += Q_UINT64_C(0x9E3779B97F4A7C15);
    quint64 z = state_;
    z = (z ^ (z >> 30)) * Q_UINT64_C(0xBF58476D1CE4E5B9);
    z = (z ^ (z >> 27)) * Q_UINT64_C(0x94D049BB133111EB);
    return z ^ (z >> 31);
}

// Integer arithmetic alone: the library's distributions differ from one platform to the next.
quint32 Random::below(quint32 bound)
{
    return static_cast<quint32>(((next() >> 32) * bound) >> 32);
}

} // namespace kvt
