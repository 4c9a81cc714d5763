#include "cycle/result_codes.h"

#include "driver/driver_object.h"
#include "driver/wrapping.h"

namespace
{

// Requesters 0 to 11 have a code of their own within an error class; all others share the first.
const int REQUESTERS = 12;

} // namespace

int SwitchErrorReturn(int base)
{
    int requester = 0;
    if (!PLC_driver.pendingFrames.isEmpty())
        requester = PLC_driver.pendingFrames.first().var.ownerId;
    if (requester < 0 || requester >= REQUESTERS)
        requester = 0;
    return wrappingSum(base, requester + 1);
}

int GetDriverReturnValue(int reason)
{
    switch (reason) {
    case REASON_SUCCESS:
        return RESULT_SUCCESS;
    case REASON_LOCAL_BAD_REPLY:
        return SwitchErrorReturn(10);
    case REASON_LOCAL_NO_REPLY:
        return SwitchErrorReturn(40);
    case REASON_LOCAL_WRONG_LENGTH:
        return SwitchErrorReturn(70);
    case REASON_REMOTE_NOT_STORED:
        return RESULT_REMOTE_SUCCESS;
    case REASON_REMOTE_BAD_REPLY:
        return SwitchErrorReturn(110);
    case REASON_REMOTE_NO_REPLY:
        return SwitchErrorReturn(140);
    case REASON_REMOTE_WRONG_LENGTH:
        return SwitchErrorReturn(170);
    default:
        return 200;
    }
}
