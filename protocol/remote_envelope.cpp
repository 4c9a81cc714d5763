#include "protocol/remote_envelope.h"

#include "cache/host_data.h"
#include "driver/driver_object.h"
#include "driver/ordered_store.h"
#include "protocol/block_checks.h"
#include "protocol/request_frame.h"

namespace
{

constexpr int LARGEST_SUM = 0xFFFF; // bytes that CalSUM takes at once

// Appends the low `bytes` bytes of `value`, most significant first.
void appendNumber(QByteArray &frame, qint32 value, int bytes)
{
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        frame.append(static_cast<char>((static_cast<quint32>(value) >> shift) & 0xFF));
}

QByteArray header(const RW_VAR &var)
{
    QByteArray frame;
    frame.reserve(22 + var.data.size());
    appendNumber(frame, 0, 1); // the length, once it is known
    appendNumber(frame, var.ownerId, 1);
    appendNumber(frame, var.rwKind, 1);
    appendNumber(frame, var.plcNo, 1);
    appendNumber(frame, var.station, 1);
    appendNumber(frame, var.areaType, 2);
    appendNumber(frame, var.address, 4);
    appendNumber(frame, var.count, 2);
    appendNumber(frame, var.remoteTag, 4);
    appendNumber(frame, var.reserved13, 4);
    return frame;
}

// The low 8 bits of the sum of all bytes, in portions that CalSUM can take.
char checksum(const QByteArray &frame)
{
    quint32 sum = 0;
    const quint8 *next = reinterpret_cast<const quint8 *>(frame.constData());
    int left = frame.size();
    while (left > 0) {
        const int length = qMin(LARGEST_SUM, left);
        sum += CalSUM(next, static_cast<quint16>(length));
        next += length;
        left -= length;
    }
    return static_cast<char>(sum & 0xFF);
}

// The length byte counts the whole envelope, modulo 256, and is part of the sum.
QByteArray sealed(QByteArray frame)
{
    frame[0] = static_cast<char>((frame.size() + 1) & 0xFF);
    frame.append(checksum(frame));
    return frame;
}

ExpectedReply readReply(int areaType)
{
    switch (areaType) {
    case AREA_X:
        return REPLY_X;
    case AREA_D:
        return REPLY_D;
    case AREA_C:
        return REPLY_C;
    default:
        return {0, 0, 0};
    }
}

void queueEnvelope(const QByteArray &envelope, const RW_VAR &var, const ExpectedReply &reply)
{
    appendRequest(envelope, var, reply);
    // Not in the order of the ASCII frames.
    storeInOrder(PLC_driver.comInfo->framesExpected, 1);
    storeInOrder(PLC_driver.comInfo->framesReceived, 0);
}

} // namespace

void Remote_ReadVar(RW_VAR *var)
{
    queueEnvelope(sealed(header(*var)), *var, readReply(var->areaType));
}

void Remote_WriteVar(RW_VAR *var)
{
    queueEnvelope(sealed(header(*var) + var->data), *var, ACKNOWLEDGE);
    WriteDataToLocal(var);
}
