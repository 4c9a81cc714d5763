#include "cycle/result_codes.h"

#include "driver/driver_object.h"
#include "driver/wrapping.h"

int SwitchErrorReturn(int base)
{
    int requester = 0;
    if (!PLC_driver.pendingFrames.isEmpty())
        requester = PLC_driver.pendingFrames.first().var.ownerId;
    if (requester < 0 || requester >= RESULT_REQUESTERS)
        requester = 0;
    return wrappingSum(base, requester + 1);
}

int GetDriverReturnValue(int reason)
{
    switch (reason) {
    case REASON_SUCCESS:
        return RESULT_SUCCESS;
    case REASON_LOCAL_BAD_REPLY:
        return SwitchErrorReturn(RESULT_LOCAL_BAD_REPLY);
    case REASON_LOCAL_NO_REPLY:
        return SwitchErrorReturn(RESULT_LOCAL_NO_REPLY);
    case REASON_LOCAL_WRONG_LENGTH:
        return SwitchErrorReturn(RESULT_LOCAL_WRONG_LENGTH);
    case REASON_REMOTE_NOT_STORED:
        return RESULT_REMOTE_SUCCESS;
    case REASON_REMOTE_BAD_REPLY:
        return SwitchErrorReturn(RESULT_REMOTE_BAD_REPLY);
    case REASON_REMOTE_NO_REPLY:
        return SwitchErrorReturn(RESULT_REMOTE_NO_REPLY);
    case REASON_REMOTE_WRONG_LENGTH:
        return SwitchErrorReturn(RESULT_REMOTE_WRONG_LENGTH);
    default:
        return RESULT_UNKNOWN;
    }
}
