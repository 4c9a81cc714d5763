#include "protocol/read_frames.h"

#include "driver/driver_object.h"
#include "protocol/request_frame.h"
#include "varlist/address_text.h"

#include <cstring>

namespace
{

int localBlockSelect()
{
    if (!LW)
        return 0;
    quint16 word = 0; // copied bytewise: the host may hand over an odd address
    std::memcpy(&word, static_cast<const char *>(LW) + sizeof word * BLOCK_SELECT_WORD,
                sizeof word);
    return word;
}

void queueRead(const RW_VAR &var, const AddressParts &parts, int nibble, const ExpectedReply &reply)
{
    const int address = addressByte(parts.c, highNibble(nibble), 0);
    queueFrame(requestFrame(var.station, parts.a, address, nullptr, 0), var, reply);
}

} // namespace

void ReadRegister(RW_VAR *var)
{
    switch (var->areaType) {
    case AREA_X:
        ReadAnalog_X(var);
        break;
    case AREA_D:
        ReadAnalog_D(var);
        break;
    case AREA_C:
        ReadAnalog_C(var);
        break;
    default:
        break;
    }
}

void ReadAnalog_X(RW_VAR *var)
{
    const AddressParts parts = addressParts(var->addressText);
    queueRead(*var, parts, parts.b, REPLY_X);
}

void ReadAnalog_D(RW_VAR *var)
{
    const AddressParts parts = addressParts(var->addressText);
    queueRead(*var, parts, parts.b, REPLY_D);
}

void ReadAnalog_C(RW_VAR *var)
{
    queueRead(*var, addressParts(var->addressText), localBlockSelect(), REPLY_C);
}
