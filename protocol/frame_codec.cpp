#include "protocol/frame_codec.h"

#include "driver/driver_object.h"

int DigitalToASCII(int value)
{
    return digitOf(value);
}

int ASCIIToDigital(int code)
{
    return nibbleOf(code);
}

int CheckGetData(QByteArray *reply, int received)
{
    if (!reply || received < 1 || received > reply->size() || PLC_driver.pendingFrames.isEmpty())
        return REPLY_BAD;
    if (reply->at(received - 1) != FRAME_CR || reply->at(0) == FRAME_NAK)
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
