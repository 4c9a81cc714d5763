// What read and write requests have in common: the address fields of a frame, its digits, and the
// queueing of the finished frame. Internal to the frame builders.
#ifndef KVT_PROTOCOL_REQUEST_FRAME_H
#define KVT_PROTOCOL_REQUEST_FRAME_H

#include "driver/records.h"

/// The reply that a request expects.
struct ExpectedReply {
    int length;    ///< bytes
    int dataStart; ///< index of the first data digit
    int dataCount; ///< number of data digits
};

/// Returns part 2 of an address text as the high nibble of an address byte: 0x00 to 0xF0.
int highNibble(int value);

/// Returns the address byte for selector `part3` and the high nibble `high`: selectors 1 and 0 give
/// `high` + 8 and `high`, plus `writeBit`; any other is the address byte itself (low 8 bits).
int addressByte(int part3, int high, int writeBit);

/// Appends `value` (low 8 bits) as two hexadecimal digits.
void appendByteDigits(QByteArray &frame, int value);

/// Returns a frame as far as its address byte: ENQ, `station`, `command`, `address`, the low 8 bits
/// of each as two digits.
QByteArray startFrame(int station, int command, int address);

/// Ends `frame` with CR, appends it to `pendingFrames` with a copy of `var`, and tells the host's
/// block that one reply is awaited. Polling thread, list mutex held by the caller.
void queueFrame(QByteArray frame, const RW_VAR &var, const ExpectedReply &reply);

#endif
