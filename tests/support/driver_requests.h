// Requests, frames and replies with known bytes, for tests of the driver's cycles.
#ifndef KVT_TESTS_SUPPORT_DRIVER_REQUESTS_H
#define KVT_TESTS_SUPPORT_DRIVER_REQUESTS_H

#include "driver/driver_object.h"
#include "tests/support/callback_log.h"
#include "tests/support/driver_fixture.h"

#include <QStringList>
#include <QtTest>

/// The read of a word, area D, address text 5.2.1; `name` tells entries apart.
inline RW_VAR wordRead(const QString &name, int station = 1)
{
    RW_VAR var;
    var.rwKind = RW_READ;
    var.name = name;
    var.addressText = "5.2.1";
    var.areaType = AREA_D;
    var.address = 165;
    var.station = station;
    var.count = 1;
    return var;
}

/// The write of 0x1234 to a word, area D, address text 3.4.0.
inline RW_VAR wordWrite(const QString &name, int station = 1)
{
    RW_VAR var = wordRead(name, station);
    var.rwKind = RW_WRITE;
    var.addressText = "3.4.0";
    var.address = 104;
    var.data = bytes("34 12");
    return var;
}

/// A read as wordRead makes it, of a requester of its own.
inline RW_VAR ownedRead(const QString &name, int ownerId, int ownerSubId, int station = 1)
{
    RW_VAR var = wordRead(name, station);
    var.ownerId = ownerId;
    var.ownerSubId = ownerSubId;
    return var;
}

/// Makes `var` a variable of another PLC than the local one, which is 0 after resetDriver.
inline RW_VAR remote(RW_VAR var, int remoteTag)
{
    var.plcNo = 2;
    var.remoteTag = remoteTag;
    return var;
}

/// A frame in progress for `var`, as a builder would leave it.
inline Protocol frameFor(const RW_VAR &var, int expectedReplyLength)
{
    Protocol frame;
    frame.frame = bytes("05 30 31 30 35 32 38 0D");
    frame.frameLength = 8;
    frame.expectedReplyLength = expectedReplyLength;
    frame.builderParam1 = 3;
    frame.builderParam2 = 4;
    frame.var = var;
    return frame;
}

/// The reply to wordRead that carries 0x12AB.
inline QByteArray wordReply()
{
    return bytes("06 30 31 31 32 41 42 0D");
}

/// The acknowledgement of a write.
inline QByteArray acknowledgement()
{
    return bytes("06 30 31 30 30 0D");
}

/// Empties the log of callbacks and has the driver call into it.
inline void logCallbacks()
{
    callbackLog() = CallbackLog();
    PLC_driver.onceReadDone = logOnceReadDone;
    PLC_driver.ownerNotify = logOwnerNotify;
}

/// A column "kind" with a row for each of the three lists.
inline void addKindRows()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("cyclic read") << int(KIND_CYCLIC_READ);
    QTest::newRow("write") << int(KIND_WRITE);
    QTest::newRow("once-read") << int(KIND_ONCE_READ);
}

/// The list that holds the requests of `kind`, one of the three of addKindRows.
inline QList<RW_VAR> &listOf(int kind)
{
    return kind == KIND_WRITE       ? PLC_driver.writeList
           : kind == KIND_ONCE_READ ? PLC_driver.onceReadList
                                    : PLC_driver.readList;
}

/// The names of the entries of `list`, in order, separated by blanks.
inline QString names(const QList<RW_VAR> &list)
{
    QStringList all;
    for (const RW_VAR &var : list)
        all.append(var.name);
    return all.join(" ");
}

#endif
