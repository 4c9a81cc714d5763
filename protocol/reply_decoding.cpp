#include "protocol/reply_decoding.h"

#include "cache/value_cache.h"
#include "driver/byte_access.h"
#include "driver/driver_object.h"
#include "protocol/frame_codec.h"
#include "varlist/address_text.h"

namespace
{

// Index of the first data digit in the replies of areas X and D.
const int DATA_START = 3;

char byteAt(const QByteArray &reply, int index)
{
    const int high = ASCIIToDigital(byteOrZero(reply, index));
    const int low = ASCIIToDigital(byteOrZero(reply, index + 1));
    return static_cast<char>((high * 16 + low) & 0xFF);
}

void storeByte(QByteArray &data, char value)
{
    data.resize(1);
    data[0] = value;
}

void storeWord(const RW_VAR &var, const QByteArray &reply)
{
    QByteArray &data = cachedData(var.station, AREA_D, var.address);
    data.resize(2);
    data[0] = byteAt(reply, DATA_START + 2);
    data[1] = byteAt(reply, DATA_START);
}

void storeBlock(const RW_VAR &var, const QByteArray &reply, int start)
{
    for (int k = 0; k < BLOCK_ELEMENTS; ++k) {
        const int digit = start + 2 * k;
        storeByte(cachedData(var.station, AREA_C, addressPlus(var.address, k)),
                  digit < reply.size() ? byteAt(reply, digit) : '\0');
    }
}

} // namespace

void SaveToLocalDataErea(QByteArray *reply)
{
    if (PLC_driver.pendingFrames.isEmpty())
        return;
    const Protocol &request = PLC_driver.pendingFrames.first();
    const RW_VAR &var = request.var;
    switch (var.areaType) {
    case AREA_D:
        storeWord(var, *reply);
        break;
    case AREA_C:
        storeBlock(var, *reply, request.builderParam1);
        break;
    case AREA_X:
        storeByte(cachedData(var.station, AREA_X, var.address), byteAt(*reply, DATA_START));
        break;
    default:
        break;
    }
}
