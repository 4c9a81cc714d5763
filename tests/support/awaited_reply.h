// A read on the line and the decoding of its reply.
#ifndef KVT_TESTS_SUPPORT_AWAITED_REPLY_H
#define KVT_TESTS_SUPPORT_AWAITED_REPLY_H

#include "driver/driver_object.h"
#include "protocol/reply_decoding.h"

#include <QStringList>

/// Puts the read of station 1, address 40 on the line, with the fields its builder gives it.
inline Protocol &awaitReply(int areaType)
{
    Protocol frame;
    frame.builderParam1 = 3;
    frame.builderParam2 = areaType == AREA_X ? 2 : areaType == AREA_D ? 4 : 140;
    frame.expectedReplyLength = 3 + frame.builderParam2 + 1;
    frame.var.areaType = areaType;
    frame.var.station = 1;
    frame.var.address = 40;
    frame.var.count = 1;
    PLC_driver.pendingFrames.append(frame);
    return PLC_driver.pendingFrames.last();
}

/// Hands a copy of `received` to the decoder.
inline void decode(const QByteArray &received)
{
    QByteArray reply = received;
    SaveToLocalDataErea(&reply);
}

/// A list of one text.
inline QStringList one(const char *text)
{
    return {QString::fromLatin1(text)};
}

#endif
