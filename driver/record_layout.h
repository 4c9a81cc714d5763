// Holds the record layout of the 32-bit target, slot by slot. Elsewhere pointers are wider and
// only the order of the fields is the same, so there is nothing to assert.
#ifndef KVT_DRIVER_RECORD_LAYOUT_H
#define KVT_DRIVER_RECORD_LAYOUT_H

#include "driver/records.h"

#define KVT_ASSERT_32BIT(condition, text) static_assert(sizeof(void *) != 4 || (condition), text)
#define KVT_ASSERT_SLOT(record, field, slot)                                                       \
    KVT_ASSERT_32BIT(offsetof(record, field) == 4 * (slot), #record ": field out of place")

KVT_ASSERT_SLOT(RW_VAR, ownerId, 0);
KVT_ASSERT_SLOT(RW_VAR, ownerSubId, 1);
KVT_ASSERT_SLOT(RW_VAR, rwKind, 2);
KVT_ASSERT_SLOT(RW_VAR, reserved3, 3);
KVT_ASSERT_SLOT(RW_VAR, plcNo, 4);
KVT_ASSERT_SLOT(RW_VAR, result, 5);
KVT_ASSERT_SLOT(RW_VAR, name, 6);
KVT_ASSERT_SLOT(RW_VAR, addressText, 7);
KVT_ASSERT_SLOT(RW_VAR, areaType, 8);
KVT_ASSERT_SLOT(RW_VAR, address, 9);
KVT_ASSERT_SLOT(RW_VAR, station, 10);
KVT_ASSERT_SLOT(RW_VAR, count, 11);
KVT_ASSERT_SLOT(RW_VAR, remoteTag, 12);
KVT_ASSERT_SLOT(RW_VAR, reserved13, 13);
KVT_ASSERT_SLOT(RW_VAR, data, 14);
KVT_ASSERT_32BIT(sizeof(RW_VAR) == 60, "RW_VAR: fifteen slots");

KVT_ASSERT_SLOT(Protocol, frame, 0);
KVT_ASSERT_SLOT(Protocol, frameLength, 1);
KVT_ASSERT_SLOT(Protocol, expectedReplyLength, 2);
KVT_ASSERT_SLOT(Protocol, builderParam1, 3);
KVT_ASSERT_SLOT(Protocol, builderParam2, 4);
KVT_ASSERT_SLOT(Protocol, var, 5);
KVT_ASSERT_SLOT(Protocol, extra0, 20);
KVT_ASSERT_SLOT(Protocol, extra1, 21);
KVT_ASSERT_SLOT(Protocol, extra2, 22);
KVT_ASSERT_32BIT(sizeof(Protocol) == 92, "Protocol: twenty-three slots");

KVT_ASSERT_SLOT(EXTENDVAR, station, 0);
KVT_ASSERT_SLOT(EXTENDVAR, areaType, 1);
KVT_ASSERT_SLOT(EXTENDVAR, address, 2);
KVT_ASSERT_SLOT(EXTENDVAR, data, 3);
KVT_ASSERT_32BIT(sizeof(EXTENDVAR) == 16, "EXTENDVAR: four slots");

#undef KVT_ASSERT_SLOT
#undef KVT_ASSERT_32BIT

#endif
