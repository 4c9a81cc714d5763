// What the driver's frames and results have to be, by driver/records.h and docs/protocol.md.
#ifndef KVT_TESTS_FUZZ_SUPPORT_DRIVER_PROMISES_H
#define KVT_TESTS_FUZZ_SUPPORT_DRIVER_PROMISES_H

#include "driver/records.h"
#include "tests/fuzz/support/promise.h"

/// Holds a frame of digits to its form.
inline void checkTextFrame(const Protocol &frame)
{
    const int length = frame.frameLength;
    require(length == 8 || length == 10 || length == 12, "a frame has 8, 10 or 12 bytes");
    for (int i = 1; i + 1 < length; ++i)
        require(isxdigit(frame.frame.at(i)) != 0 && islower(frame.frame.at(i)) == 0,
                "a frame is made of upper-case digits");
    const int expected = frame.expectedReplyLength;
    require(expected == 6 || expected == 8 || expected == 144, "a reply has 6, 8 or 144 bytes");
    require(frame.builderParam1 == 0 ? frame.builderParam2 == 0 && expected == 6
                                     : frame.builderParam1 + frame.builderParam2 + 1 == expected,
            "the data stands between the station and the end");
}

/// Holds an envelope to its form.
inline void checkEnvelope(const Protocol &frame)
{
    const QByteArray &bytes = frame.frame;
    require(bytes.size() >= 22, "an envelope has 22 bytes or more");
    quint32 sum = 0;
    for (int i = 0; i + 1 < bytes.size(); ++i)
        sum += static_cast<quint8>(bytes.at(i));
    require(static_cast<quint8>(bytes.at(0)) == (bytes.size() & 0xFF), "it knows its length");
    require(static_cast<quint8>(bytes.at(bytes.size() - 1)) == (sum & 0xFF), "and its sum");
}

/// Returns the result of a good reply, or the class of the failure that a bad one is.
inline int expectedClass(const Protocol &frame, const QByteArray *reply, int length, int localPlcNo)
{
    const bool local = frame.var.plcNo == localPlcNo;
    if (length == 0 && frame.expectedReplyLength != 0)
        return local ? RESULT_LOCAL_NO_REPLY : RESULT_REMOTE_NO_REPLY;
    if (length != frame.expectedReplyLength)
        return local ? RESULT_LOCAL_WRONG_LENGTH : RESULT_REMOTE_WRONG_LENGTH;
    const bool good = reply != nullptr && length > 0 && length <= reply->size() &&
                      reply->at(length - 1) == FRAME_CR && reply->at(0) != FRAME_NAK &&
                      (frame.var.rwKind == RW_READ || frame.var.rwKind == RW_WRITE);
    if (!good)
        return local ? RESULT_LOCAL_BAD_REPLY : RESULT_REMOTE_BAD_REPLY;
    return local || frame.var.remoteTag == -1 ? RESULT_SUCCESS : RESULT_REMOTE_SUCCESS;
}

/// Whether a request builds no frame, and holds up what is behind it.
inline bool holdsUp(const RW_VAR &var, bool isWrite)
{
    return var.areaType < AREA_X || var.areaType > (isWrite ? AREA_D : AREA_C);
}

/// The same for any of a list.
inline bool anyHoldsUp(const QList<RW_VAR> &list, bool isWrite)
{
    for (const RW_VAR &var : list)
        if (holdsUp(var, isWrite))
            return true;
    return false;
}

#endif
