#include "protocol/request_frame.h"

#include "driver/driver_object.h"
#include "protocol/frame_codec.h"

namespace
{

const int LONGEST_FRAME = 12; // the write of a word

} // namespace

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

QByteArray startFrame(int station, int command, int address)
{
    QByteArray frame;
    frame.reserve(LONGEST_FRAME);
    frame.append(ENQ);
    appendByteDigits(frame, station);
    appendByteDigits(frame, command);
    appendByteDigits(frame, address);
    return frame;
}

void queueFrame(QByteArray frame, const RW_VAR &var, const ExpectedReply &reply)
{
    frame.append(CR);
    PLC_driver.pendingFrames.append(Protocol());
    Protocol &request = PLC_driver.pendingFrames.last();
    request.frame = frame;
    request.frameLength = frame.size();
    request.expectedReplyLength = reply.length;
    request.builderParam1 = reply.dataStart;
    request.builderParam2 = reply.dataCount;
    request.var = var;

    // Volatile keeps the order: who watches the block must not take an old reply for the new one.
    volatile ComInfo *const info = PLC_driver.comInfo;
    info->framesReceived = 0;
    info->framesExpected = 1;
}
