#include "host/reply_times.h"

#include <algorithm>

namespace kvt
{

namespace
{

// What a busy host may add to a time, or take from it.
constexpr qint64 HOST_DELAY_ns = milliseconds(1);

} // namespace

// No time at all, or less where the end of a request is reckoned ahead, is a time that is known.
void ReplyTimes::add(int station, qint64 measured_ns)
{
    const qint64 time_ns = std::max<qint64>(measured_ns, 1);
    Times &times = stations_[indexOf(station)];
    times.usual_ns =
        times.usual_ns == 0 ? time_ns : times.usual_ns + (time_ns - times.usual_ns) / 8;
    times.longest_ns =
        std::max(time_ns, times.longest_ns - (times.longest_ns - times.usual_ns) / 256);
}

bool ReplyTimes::isUnusual(int station, qint64 time_ns) const
{
    const Times &times = stations_[indexOf(station)];
    if (!isKnown(station))
        return false;
    return time_ns + HOST_DELAY_ns < times.usual_ns / 2 || time_ns > pause_ns(station);
}

qint64 ReplyTimes::pause_ns(int station) const
{
    return pauseAfter_ns(stations_[indexOf(station)].longest_ns);
}

qint64 ReplyTimes::pauseAfter_ns(qint64 longest_ns)
{
    return longest_ns + longest_ns / 4 + HOST_DELAY_ns;
}

} // namespace kvt
