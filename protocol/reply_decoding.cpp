#include "protocol/reply_decoding.h"

#include "cache/value_cache.h"
#include "driver/byte_access.h"
#include "driver/driver_object.h"
#include "driver/wrapping.h"
#include "protocol/frame_codec.h"

namespace
{

// Index of the first data digit in the replies of areas X and D.
constexpr int DATA_START = 3;

inline char fromDigits(quint8 high, quint8 low)
{
    return static_cast<char>((nibbleOf(high) * 16 + nibbleOf(low)) & 0xFF);
}

// Digits beyond the end of the reply are zero bytes.
inline char byteAt(const QByteArray &reply, int index)
{
    if (index < 0 || index >= reply.size() - 1)
        return fromDigits(byteOrZero(reply, index), byteOrZero(reply, wrappingSum(index, 1)));
    const char *const digits = reply.constData() + index;
    return fromDigits(static_cast<quint8>(digits[0]), static_cast<quint8>(digits[1]));
}

void storeWord(const RW_VAR &var, const QByteArray &reply)
{
    char *const word = sized(cachedData(var.station, AREA_D, var.address), 2);
    word[0] = byteAt(reply, DATA_START + 2);
    word[1] = byteAt(reply, DATA_START);
}

void storeBlock(const RW_VAR &var, const QByteArray &reply, int start)
{
    CachedRun run = cachedRun(var.station, AREA_C, var.address, BLOCK_ELEMENTS);
    for (int k = 0; k < BLOCK_ELEMENTS; ++k)
        *sized(nextData(run), 1) = byteAt(reply, wrappingSum(start, 2 * k));
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
        *sized(cachedData(var.station, AREA_X, var.address), 1) = byteAt(*reply, DATA_START);
        break;
    default:
        break;
    }
}
