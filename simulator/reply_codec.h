// The replies of the simulated PLC, and what faults make of their bytes.
//
// A reply begins with ACK or NAK and the station's two digits and ends with CR; digits are
// upper-case hexadecimal. Read: the data digits, high byte first. Acknowledgement: two digits of
// the request. A refusal has nothing between digits and CR.
#ifndef KVT_SIMULATOR_REPLY_CODEC_H
#define KVT_SIMULATOR_REPLY_CODEC_H

#include "simulator/fault_plan.h"

#include <QByteArray>

namespace kvt
{

constexpr char CR = 0x0D; ///< ends every request and reply

/// Returns the reply to a read: 06 s s, two digits for each byte of `data`, 0D.
QByteArray dataReply(int station, const QByteArray &data);

/// Returns the acknowledgement of a write: 06 s s m m 0D, `mark` being a byte of the request.
QByteArray acknowledgement(int station, int mark);

/// Returns a refusal: 15 s s 0D.
QByteArray refusal(int station);

/// Returns `reply` with another station's digits.
QByteArray withStation(const QByteArray &reply, int station);

/// Returns what Truncation, ExtraBytes, WrongEnd, FlippedDigit or Duplicate makes of `reply`, a
/// reply as above. Other faults leave it as it is.
QByteArray damaged(const QByteArray &reply, FaultKind fault, Random *random);

} // namespace kvt

#endif
