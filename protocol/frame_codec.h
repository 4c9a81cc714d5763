// Hexadecimal digits of the ASCII frames, and the first judgement of a reply.
#ifndef KVT_PROTOCOL_FRAME_CODEC_H
#define KVT_PROTOCOL_FRAME_CODEC_H

#include <QtCore/QByteArray>
#include <QtCore/QtGlobal>

/// Result of CheckGetData.
enum ReplyCheck { REPLY_BAD = 0, REPLY_DATA = 1, REPLY_ACKNOWLEDGE = 2 };

/// Returns the character of a nibble, "0" to "9" and "A" to "F" for 0 to 15. Other values are not
/// checked: up to 9 give value + 0x30, above give value + 0x37. Any thread; no lock.
Q_DECL_EXPORT int DigitalToASCII(int value);

/// Returns the nibble of a character (0 to 255). ":" to "?" give 10 to 15; what lies below "0",
/// and "@", give 0; everything above gives code - 0x37, lower case not folded. Any thread; no lock.
Q_DECL_EXPORT int ASCIIToDigital(int code);

/// Does what DigitalToASCII does, in line for the driver's own loops.
inline int digitOf(int value)
{
    // Unsigned, because a value far out of range would overflow; the result wraps.
    return static_cast<int>(static_cast<quint32>(value) + (value <= 9 ? 0x30U : 0x37U));
}

/// Does what ASCIIToDigital does, in line for the driver's own loops.
inline int nibbleOf(int code)
{
    if (code <= 0x2F || code == 0x40)
        return 0;
    return code <= 0x3F ? code - 0x30 : code - 0x37;
}

/// Judges the first `received` bytes of `reply` against the head of `pendingFrames`: REPLY_BAD
/// when the last is not CR, the first is NAK, the array is shorter, or nothing was received; else
/// REPLY_DATA for a read, REPLY_ACKNOWLEDGE for a write, REPLY_BAD for any other kind and when no
/// frame is pending. Polling thread; no lock.
Q_DECL_EXPORT int CheckGetData(QByteArray *reply, int received);

#endif
