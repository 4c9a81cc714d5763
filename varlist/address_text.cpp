#include "varlist/address_text.h"

#include "driver/no_throw.h"

#include <algorithm>

namespace
{

// Weights of the parts of an address; see PLCAddressChangeIntef. Unsigned, so that sums wrap at
// 32 bits.
constexpr quint32 COMMAND_WEIGHT = 32;
constexpr quint32 NIBBLE_WEIGHT = 2;
constexpr quint32 BLOCK_WEIGHT = 160;
constexpr quint32 HALF_BLOCK_WEIGHT = 80;

const QLatin1Char SEPARATOR('.');

// So many digits cannot overflow an int.
constexpr int SAFE_DIGITS = 9;

// Reads the part that begins at `at` as QString::toInt does, and leaves `at` at the separator or
// the end behind it. Plain digits, which nearly every part is made of, are read in place; whatever
// is odd is left to toInt itself.
int readPart(const QChar *&at, const QChar *end)
{
    const QChar *const start = at;
    quint32 value = 0;
    for (; at != end && at->unicode() >= '0' && at->unicode() <= '9'; ++at)
        value = 10 * value + at->unicode() - '0';
    if ((at == end || *at == SEPARATOR) && at - start <= SAFE_DIGITS)
        return static_cast<int>(value);
    at = std::find(at, end, SEPARATOR);
    return QString(start, static_cast<int>(at - start)).toInt();
}

quint32 weighted(int part, quint32 weight)
{
    return static_cast<quint32>(part) * weight;
}

quint32 blockStart(const AddressParts &parts)
{
    return weighted(parts.b, BLOCK_WEIGHT) + weighted(parts.c, HALF_BLOCK_WEIGHT);
}

int numericAddress(int areaType, const QString &addressText)
{
    const AddressParts parts = addressParts(addressText);
    quint32 address = 0;
    if (areaType == AREA_X || areaType == AREA_D)
        address = weighted(parts.a, COMMAND_WEIGHT) + weighted(parts.b, NIBBLE_WEIGHT) +
                  weighted(parts.c, 1);
    else if (areaType == AREA_C)
        address = blockStart(parts) + weighted(parts.d, 1);
    return static_cast<int>(address);
}

} // namespace

AddressParts addressParts(const QString &addressText)
{
    int values[4] = {0, 0, 0, 0};
    const QChar *at = addressText.constData();
    const QChar *const end = at + addressText.size();
    for (int i = 0; i < 4; ++i) {
        values[i] = readPart(at, end);
        if (at == end)
            break;
        ++at;
    }
    const AddressParts parts = {values[0], values[1], values[2], values[3]};
    return parts;
}

void setReadRange(RW_VAR &var, int address)
{
    var.address = address;
    var.count = 1;
    if (var.areaType == AREA_C) {
        var.address = static_cast<int>(blockStart(addressParts(var.addressText)));
        var.count = BLOCK_ELEMENTS;
    }
}

int StringAddressToInt(int areaType, QString addressText)
{
    return numericAddress(areaType, addressText);
}

int PLCAddressChangeIntef(int areaType, QString addressText)
{
    return noThrow([&]() -> int { return numericAddress(areaType, addressText); });
}
