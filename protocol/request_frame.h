// What requests have in common: the address fields of a frame, its digits, the replies to expect,
// and the queueing of the finished frame. Internal to the builders of frames and envelopes.
#ifndef KVT_PROTOCOL_REQUEST_FRAME_H
#define KVT_PROTOCOL_REQUEST_FRAME_H

#include "driver/records.h"

/// The reply that a request expects.
struct ExpectedReply {
    int length;    ///< bytes
    int dataStart; ///< index of the first data digit
    int dataCount; ///< number of data digits
};

/// What a read of each area expects, and what every write does.
constexpr ExpectedReply REPLY_X = {6, 3, 2};
constexpr ExpectedReply REPLY_D = {8, 3, 4};
constexpr ExpectedReply REPLY_C = {144, 3, 2 * BLOCK_ELEMENTS};
constexpr ExpectedReply ACKNOWLEDGE = {6, 0, 0};

/// Returns the second number of an address text as the high nibble of an address byte: 0x00 to
/// 0xF0.
int highNibble(int value);

/// Returns the address byte for selector `part3` and the high nibble `high`: selectors 1 and 0 give
/// `high` + 8 and `high`, plus `writeBit`; any other is the address byte itself (low 8 bits).
int addressByte(int part3, int high, int writeBit);

/// Returns a whole frame: ENQ, `station`, `command`, `address` and the `count` bytes of `value`,
/// CR; the low 8 bits of each number as two hexadecimal digits. `count` is 0 to 2; `value`
/// may be null when it is 0.
QByteArray requestFrame(int station, int command, int address, const quint8 *value, int count);

/// Appends `frame` to `pendingFrames` with a copy of `var`. Polling thread, list mutex held by the
/// caller.
void appendRequest(const QByteArray &frame, const RW_VAR &var, const ExpectedReply &reply);

/// The same for a frame of the ASCII link, and tells the host's block that one reply is awaited.
void queueFrame(const QByteArray &frame, const RW_VAR &var, const ExpectedReply &reply);

#endif
