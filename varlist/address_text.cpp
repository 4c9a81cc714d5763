#include "varlist/address_text.h"

namespace
{

// Weights of the parts of an address; see PLCAddressChangeIntef. Unsigned, so that sums wrap at
// 32 bits.
const quint32 COMMAND_WEIGHT = 32;
const quint32 NIBBLE_WEIGHT = 2;
const quint32 BLOCK_WEIGHT = 160;
const quint32 HALF_BLOCK_WEIGHT = 80;

// So many digits cannot overflow an int.
const int SAFE_DIGITS = 9;

// The text from `start` to `end` as QString::toInt reads it. Plain digits, which nearly every part
// is made of, are read in place; whatever is odd is left to toInt itself.
int partValue(const QString &text, int start, int end)
{
    int value = 0;
    for (int i = start; i < end; ++i) {
        const ushort code = text.at(i).unicode();
        if (code < '0' || code > '9' || end - start > SAFE_DIGITS)
            return text.mid(start, end - start).toInt();
        value = 10 * value + (code - '0');
    }
    return value;
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
    const QChar separator = QLatin1Char('.');
    int values[4] = {0, 0, 0, 0};
    int start = 0;
    for (int i = 0; i < 4 && start <= addressText.size(); ++i) {
        int end = start;
        while (end < addressText.size() && addressText.at(end) != separator)
            ++end;
        values[i] = partValue(addressText, start, end);
        start = end + 1;
    }
    const AddressParts parts = {values[0], values[1], values[2], values[3]};
    return parts;
}

int blockStartAddress(const QString &addressText)
{
    return static_cast<int>(blockStart(addressParts(addressText)));
}

int addressPlus(int address, int offset)
{
    return static_cast<int>(static_cast<quint32>(address) + static_cast<quint32>(offset));
}

int StringAddressToInt(int areaType, QString addressText)
{
    return numericAddress(areaType, addressText);
}

int PLCAddressChangeIntef(int areaType, QString addressText) noexcept
{
    return numericAddress(areaType, addressText);
}
