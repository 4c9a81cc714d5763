#include "protocol/request_frame.h"

#include "driver/driver_object.h"
#include "protocol/frame_codec.h"
#include "varlist/address_text.h"

int highNibble(int value)
{
    return (value & 0x0F) << 4;
}

int addressByte(int part3, int high, int writeBit)
{
    const int selector = part3 & 0xFF;
    if (selector == 1)
        return high + 8 + writeBit;
    if (selector == 0)
        return high + writeBit;
    return selector;
}

void appendByteDigits(QByteArray &frame, int value)
{
    frame.append(static_cast<char>(DigitalToASCII((value >> 4) & 0x0F)));
    frame.append(static_cast<char>(DigitalToASCII(value & 0x0F)));
}

QByteArray startFrame(const RW_VAR &var, const QStringList &parts, int address)
{
    QByteArray frame;
    frame.reserve(12);
    frame.append(ENQ);
    appendByteDigits(frame, var.station);
    appendByteDigits(frame, addressPart(parts, 0));
    appendByteDigits(frame, address);
    return frame;
}

void queueFrame(QByteArray frame, const RW_VAR &var, const ExpectedReply &reply)
{
    frame.append(CR);
    Protocol request;
    request.frame = frame;
    request.frameLength = frame.size();
    request.expectedReplyLength = reply.length;
    request.builderParam1 = reply.dataStart;
    request.builderParam2 = reply.dataCount;
    request.var = var;
    PLC_driver.pendingFrames.append(request);

    // Volatile keeps the order: who watches the block must not take an old reply for the new one.
    volatile ComInfo *const info = PLC_driver.comInfo;
    info->framesReceived = 0;
    info->framesExpected = 1;
}
