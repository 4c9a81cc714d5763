// The host's callbacks, with what they are told. The caller holds the list mutex. Internal to the
// driver.
#ifndef KVT_DRIVER_CALLBACKS_H
#define KVT_DRIVER_CALLBACKS_H

#include "driver/records.h"

/// Tells the host, unless `ownerNotify` is null, of a request of `ownerId`. The list that a host
/// may fill is never read.
inline void notifyOwner(OwnerNotify ownerNotify, int ownerId)
{
    const int flag = 1;
    if (!ownerNotify)
        return;
    QList<RW_VAR> unread;
    ownerNotify(&unread, ownerId, flag);
}

/// Tells the host, unless `onceReadDone` is null, that the last queued read of the requester of
/// `var` has been served.
inline void reportOnceRead(OnceReadDone onceReadDone, int portTag, const RW_VAR &var, bool good)
{
    if (onceReadDone)
        onceReadDone(portTag, var.ownerId, var.ownerSubId,
                     good ? ONCE_READ_DONE : ONCE_READ_FAILED);
}

#endif
