// The result codes that a host finds in the record returned by DataCom.
#ifndef KVT_CYCLE_RESULT_CODES_H
#define KVT_CYCLE_RESULT_CODES_H

#include "driver/records.h"

/// Why an attempt ended as it did.
enum ResultReason {
    REASON_SUCCESS = 0,
    REASON_LOCAL_BAD_REPLY = 1,
    REASON_LOCAL_NO_REPLY = 2,
    REASON_LOCAL_WRONG_LENGTH = 3,
    REASON_REMOTE_NOT_STORED = 4,
    REASON_REMOTE_BAD_REPLY = 5,
    REASON_REMOTE_NO_REPLY = 6,
    REASON_REMOTE_WRONG_LENGTH = 7
};

/// Returns the result code of a ResultReason: 1, 100, an error class plus its requester, or 200
/// for any other number. Polling thread; no lock.
Q_DECL_EXPORT int GetDriverReturnValue(int reason);

/// Returns `base` + 1 + the requester (`ownerId` of the frame on the line) when that is 0 to 11,
/// `base` + 1 for every other requester and when no frame is pending. Polling thread; no lock.
Q_DECL_EXPORT int SwitchErrorReturn(int base);

#endif
