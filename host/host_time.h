// Times of the host: signed 64-bit nanoseconds of a clock that only goes forward.
#ifndef KVT_HOST_HOST_TIME_H
#define KVT_HOST_HOST_TIME_H

#include <QtGlobal>

#include <limits>

namespace kvt
{

/// A deadline that never comes.
constexpr qint64 NEVER = std::numeric_limits<qint64>::max();

constexpr qint64 microseconds(qint64 count)
{
    return count * 1000;
}

constexpr qint64 milliseconds(qint64 count)
{
    return count * 1000000;
}

constexpr qint64 seconds(qint64 count)
{
    return count * 1000000000;
}

} // namespace kvt

#endif
