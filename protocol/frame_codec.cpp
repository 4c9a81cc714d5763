#include "protocol/frame_codec.h"

#include "driver/driver_object.h"

int DigitalToASCII(int value)
{
    // Unsigned, because a value far out of range would overflow; the result wraps.
    return static_cast<int>(static_cast<quint32>(value) + (value <= 9 ? 0x30U : 0x37U));
}

int ASCIIToDigital(int code)
{
    if (code <= 0x2F)
        return 0;
    if (code <= 0x3F)
        return code - 0x30;
    if (code == 0x40)
        return 0;
    return code - 0x37;
}

int CheckGetData(QByteArray *reply, int received)
{
    if (!reply || received < 1 || received > reply->size() || PLC_driver.pendingFrames.isEmpty())
        return REPLY_BAD;
    if (reply->at(received - 1) != CR || reply->at(0) == NAK)
        return REPLY_BAD;
    switch (PLC_driver.pendingFrames.first().var.rwKind) {
    case RW_READ:
        return REPLY_DATA;
    case RW_WRITE:
        return REPLY_ACKNOWLEDGE;
    default:
        return REPLY_BAD;
    }
}
