// One request to the PLC, as the host needs to know it.
#ifndef KVT_HOST_REQUEST_H
#define KVT_HOST_REQUEST_H

#include "driver/records.h"

namespace kvt
{

enum class RequestKind { CyclicRead, OnceRead, ClassRead, Write };

/// `ownerSubId` of the requests that the driver makes itself, for its cyclic reads. Requests that
/// an application has asked for carry their id there, which is above 0, and readings of a cell for
/// the host's own ends OWN_READ_ID less the number of the cell.
constexpr int CYCLIC_REQUEST_ID = -1;
constexpr int OWN_READ_ID = -2;

/// That of the one-time reads that the host makes of requests with an interval.
constexpr int CLASS_READ_ID = -1000000000;

/// What the frame on the line asks for and which reply it expects.
struct Request {
    RequestKind kind = RequestKind::CyclicRead;
    int id = CYCLIC_REQUEST_ID; ///< the id under which the host queued it
    int station = -1;
    int area = -1;          ///< an AreaCode
    int address = 0;        ///< the driver's numeric address
    QByteArray frame;       ///< the bytes on the line
    int expectedLength = 0; ///< bytes; -1 any, 0 none
    int dataStart = 0;      ///< index of the reply's first data digit
    int dataLength = 0;     ///< number of data digits
    bool isCommand = false; ///< a write without a value: the PLC does something each time it comes
};

/// Returns what `frame` of the driver says about its request.
Request requestOf(const Protocol &frame);

} // namespace kvt

#endif
