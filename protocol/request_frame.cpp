#include "protocol/request_frame.h"

#include "driver/driver_object.h"
#include "driver/ordered_store.h"
#include "protocol/frame_codec.h"

namespace
{

constexpr int LENGTH_WITHOUT_VALUE = 8;
constexpr int MOST_VALUE_BYTES = 2;

// Returns where the next digits go.
char *putByteDigits(char *at, int value)
{
    at[0] = static_cast<char>(digitOf((value >> 4) & 0x0F));
    at[1] = static_cast<char>(digitOf(value & 0x0F));
    return at + 2;
}

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

QByteArray requestFrame(int station, int command, int address, const quint8 *value, int count)
{
    char frame[LENGTH_WITHOUT_VALUE + 2 * MOST_VALUE_BYTES];
    char *next = frame;
    *next++ = FRAME_ENQ;
    next = putByteDigits(next, station);
    next = putByteDigits(next, command);
    next = putByteDigits(next, address);
    for (int i = 0; i < count && i < MOST_VALUE_BYTES; ++i)
        next = putByteDigits(next, value[i]);
    *next++ = FRAME_CR;
    return QByteArray(frame, static_cast<int>(next - frame));
}

void appendRequest(const QByteArray &frame, const RW_VAR &var, const ExpectedReply &reply)
{
    PLC_driver.pendingFrames.append(Protocol());
    Protocol &request = PLC_driver.pendingFrames.last();
    request.frame = frame;
    request.frameLength = frame.size();
    request.expectedReplyLength = reply.length;
    request.builderParam1 = reply.dataStart;
    request.builderParam2 = reply.dataCount;
    request.var = var;
}

void queueFrame(const QByteArray &frame, const RW_VAR &var, const ExpectedReply &reply)
{
    appendRequest(frame, var, reply);
    storeInOrder(PLC_driver.comInfo->framesReceived, 0);
    storeInOrder(PLC_driver.comInfo->framesExpected, 1);
}
