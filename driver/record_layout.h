// Holds the layout of every record that crosses the library's border: a host that was built before
// reads and writes the records of today. On the 32-bit target most are rows of slots of four bytes;
// the 64-bit figures are those of a processor whose pointers lie at multiples of eight.
// ComInfo, which is the same everywhere, is asserted where it is declared.
#ifndef KVT_DRIVER_RECORD_LAYOUT_H
#define KVT_DRIVER_RECORD_LAYOUT_H

#include "driver/records.h"

/// The figure that holds for the processor's pointers.
constexpr std::size_t figureByPointers(std::size_t with4, std::size_t with8)
{
    return sizeof(void *) == 4 ? with4 : with8;
}

/// Asserts the offset of `field` in bytes, with pointers of four bytes and of eight.
#define KVT_ASSERT_OFFSET(record, field, with4, with8)                                             \
    static_assert(offsetof(record, field) == figureByPointers(with4, with8),                       \
                  #record ": field out of place")
#define KVT_ASSERT_SLOT(record, field, slot, with8)                                                \
    KVT_ASSERT_OFFSET(record, field, 4 * (slot), with8)
#define KVT_ASSERT_SIZE(record, with4, with8)                                                      \
    static_assert(sizeof(record) == figureByPointers(with4, with8), #record ": wrong size")

static_assert(sizeof(void *) == 4 || sizeof(void *) == 8, "pointers of four or eight bytes");
static_assert(sizeof(QString) == sizeof(void *), "QString: one pointer, so not Qt 6");
static_assert(sizeof(QByteArray) == sizeof(void *), "QByteArray: one pointer, so not Qt 6");

KVT_ASSERT_SLOT(RW_VAR, ownerId, 0, 0);
KVT_ASSERT_SLOT(RW_VAR, ownerSubId, 1, 4);
KVT_ASSERT_SLOT(RW_VAR, rwKind, 2, 8);
KVT_ASSERT_SLOT(RW_VAR, reserved3, 3, 12);
KVT_ASSERT_SLOT(RW_VAR, plcNo, 4, 16);
KVT_ASSERT_SLOT(RW_VAR, result, 5, 20);
KVT_ASSERT_SLOT(RW_VAR, name, 6, 24);
KVT_ASSERT_SLOT(RW_VAR, addressText, 7, 32);
KVT_ASSERT_SLOT(RW_VAR, areaType, 8, 40);
KVT_ASSERT_SLOT(RW_VAR, address, 9, 44);
KVT_ASSERT_SLOT(RW_VAR, station, 10, 48);
KVT_ASSERT_SLOT(RW_VAR, count, 11, 52);
KVT_ASSERT_SLOT(RW_VAR, remoteTag, 12, 56);
KVT_ASSERT_SLOT(RW_VAR, reserved13, 13, 60);
KVT_ASSERT_SLOT(RW_VAR, data, 14, 64);
KVT_ASSERT_SIZE(RW_VAR, 60, 72);

KVT_ASSERT_SLOT(Protocol, frame, 0, 0);
KVT_ASSERT_SLOT(Protocol, frameLength, 1, 8);
KVT_ASSERT_SLOT(Protocol, expectedReplyLength, 2, 12);
KVT_ASSERT_SLOT(Protocol, builderParam1, 3, 16);
KVT_ASSERT_SLOT(Protocol, builderParam2, 4, 20);
KVT_ASSERT_SLOT(Protocol, var, 5, 24);
KVT_ASSERT_SLOT(Protocol, extra0, 20, 96);
KVT_ASSERT_SLOT(Protocol, extra1, 21, 100);
KVT_ASSERT_SLOT(Protocol, extra2, 22, 104);
KVT_ASSERT_SIZE(Protocol, 92, 112);

KVT_ASSERT_SLOT(EXTENDVAR, station, 0, 0);
KVT_ASSERT_SLOT(EXTENDVAR, areaType, 1, 4);
KVT_ASSERT_SLOT(EXTENDVAR, address, 2, 8);
KVT_ASSERT_SLOT(EXTENDVAR, data, 3, 16);
KVT_ASSERT_SIZE(EXTENDVAR, 16, 24);

KVT_ASSERT_OFFSET(HOST_VAR, kind, 0, 0);
KVT_ASSERT_OFFSET(HOST_VAR, areaType, 1, 1);
KVT_ASSERT_OFFSET(HOST_VAR, station, 2, 2);
KVT_ASSERT_OFFSET(HOST_VAR, addressText, 4, 8);
KVT_ASSERT_OFFSET(HOST_VAR, name, 8, 16);
KVT_ASSERT_SIZE(HOST_VAR, 12, 24);

#undef KVT_ASSERT_SIZE
#undef KVT_ASSERT_SLOT
#undef KVT_ASSERT_OFFSET

#endif
