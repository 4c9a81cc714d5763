// Time of a byte on a serial line.
#ifndef KVT_SIMULATOR_LINE_SPEED_H
#define KVT_SIMULATOR_LINE_SPEED_H

#include <QtGlobal>

namespace kvt
{

/// Returns the nanoseconds that one byte of `bitsPerByte` bits, start and stop bits included, takes
/// at `baud`; 0, which is no time at all, when `baud` is 0 or less.
inline qint64 byteTime_ns(int baud, int bitsPerByte)
{
    return baud <= 0 ? 0 : (Q_INT64_C(1000000000) * bitsPerByte + baud / 2) / baud;
}

} // namespace kvt

#endif
