// How long the stations take to answer, as far as it tells when an answer can still come.
#ifndef KVT_HOST_REPLY_TIMES_H
#define KVT_HOST_REPLY_TIMES_H

#include "host/host_time.h"

#include <array>

namespace kvt
{

/// The usual and the longest recent reply time of each station. Times in nanoseconds, from the
/// last byte of the request to the first of the reply. Stations that share their low 8 bits are one
/// on the line. One thread.
class ReplyTimes
{
public:
    /// A reply of `station` took `measured_ns`.
    void add(int station, qint64 measured_ns);

    /// Whether any time of the station is known.
    bool isKnown(int station) const { return stations_[indexOf(station)].longest_ns > 0; }

    /// True when a reply that took `time_ns` is so much faster than usual or so much slower than
    /// any of late that it may answer another request. False while none is known.
    bool isUnusual(int station, qint64 time_ns) const;

    /// How long the line must be silent for no answer of `station` to be on its way: a quarter
    /// above the longest recent time, and a millisecond for the host's own delays.
    qint64 pause_ns(int station) const;

    /// The same where the longest time is known.
    static qint64 pauseAfter_ns(qint64 longest_ns);

    /// The longest recent time of the station; 0 while none is known.
    qint64 longest_ns(int station) const { return stations_[indexOf(station)].longest_ns; }

private:
    struct Times {
        qint64 usual_ns = 0;
        qint64 longest_ns = 0; // sinks towards the usual time, halfway in some 180 replies
    };

    static size_t indexOf(int station) { return static_cast<size_t>(station & 0xFF); }

    std::array<Times, 256> stations_;
};

} // namespace kvt

#endif
