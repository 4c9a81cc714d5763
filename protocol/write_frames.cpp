#include "protocol/write_frames.h"

#include "cache/host_data.h"
#include "driver/byte_access.h"
#include "driver/driver_object.h"
#include "protocol/request_frame.h"
#include "varlist/address_text.h"

namespace
{

const int WRITE_BIT = 1;
const ExpectedReply ACKNOWLEDGE = {6, 0, 0};

QByteArray startWrite(const RW_VAR &var, const QStringList &parts)
{
    const int high = highNibble(addressPart(parts, 1));
    return startFrame(var, parts, addressByte(addressPart(parts, 2), high, WRITE_BIT));
}

// The one write that sends only its address. The texts are compared, not their numbers.
bool isWithoutValue(const QStringList &parts)
{
    return parts.size() > 1 && parts.at(0) == QLatin1String("18") &&
           parts.at(1) == QLatin1String("1");
}

} // namespace

void WriteRegister(RW_VAR *var)
{
    if (var->areaType == AREA_X)
        WriteAnalog_X(var);
    else if (var->areaType == AREA_D)
        WriteAnalog_D(var);

    if (PLC_driver.ownerNotify) {
        QList<RW_VAR> unread;
        PLC_driver.ownerNotify(&unread, var->ownerId, 1);
    }
    if (PLC_driver.errorFlag == 0)
        WriteDataToLocal(var);
}

void WriteAnalog_X(RW_VAR *var)
{
    QByteArray frame = startWrite(*var, addressParts(var->addressText));
    appendByteDigits(frame, byteOrZero(var->data, 0));
    queueFrame(frame, *var, ACKNOWLEDGE);
}

void WriteAnalog_D(RW_VAR *var)
{
    const QStringList parts = addressParts(var->addressText);
    QByteArray frame = startWrite(*var, parts);
    if (!isWithoutValue(parts)) {
        appendByteDigits(frame, byteOrZero(var->data, 1));
        appendByteDigits(frame, byteOrZero(var->data, 0));
    }
    queueFrame(frame, *var, ACKNOWLEDGE);
}
