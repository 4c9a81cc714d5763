#include "protocol/write_frames.h"

#include "cache/host_data.h"
#include "driver/byte_access.h"
#include "driver/callbacks.h"
#include "driver/driver_object.h"
#include "protocol/request_frame.h"
#include "varlist/address_text.h"

namespace
{

constexpr int WRITE_BIT = 1;

void queueWrite(const RW_VAR &var, const quint8 *value, int count)
{
    const AddressParts parts = addressParts(var.addressText);
    const int address = addressByte(parts.c, highNibble(parts.b), WRITE_BIT);
    queueFrame(requestFrame(var.station, parts.a, address, value, count), var, ACKNOWLEDGE);
}

// The one write that sends only its address: command 18, nibble 1, compared as texts and not as
// numbers.
bool isWithoutValue(const QString &addressText)
{
    return addressText == QLatin1String("18.1") || addressText.startsWith(QLatin1String("18.1."));
}

void queueByArea(RW_VAR *var)
{
    if (var->areaType == AREA_X)
        WriteAnalog_X(var);
    else if (var->areaType == AREA_D)
        WriteAnalog_D(var);
}

} // namespace

void WriteRegister(RW_VAR *var)
{
    queueByArea(var);
    notifyOwner(PLC_driver.ownerNotify, var->ownerId);
    // While the line fails the PLC has most likely not got it.
    if (PLC_driver.errorFlag == 0)
        WriteDataToLocal(var);
}

void WriteAnalog_X(RW_VAR *var)
{
    const quint8 value = byteOrZero(var->data, 0);
    queueWrite(*var, &value, 1);
}

void WriteAnalog_D(RW_VAR *var)
{
    const quint8 value[] = {byteOrZero(var->data, 1), byteOrZero(var->data, 0)};
    queueWrite(*var, value, isWithoutValue(var->addressText) ? 0 : 2);
}
