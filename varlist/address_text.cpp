#include "varlist/address_text.h"

namespace
{

// Weights of the parts of an address; see PLCAddressChangeIntef. Unsigned, so that sums wrap at
// 32 bits.
const quint32 COMMAND_WEIGHT = 32;
const quint32 NIBBLE_WEIGHT = 2;
const quint32 BLOCK_WEIGHT = 160;
const quint32 HALF_BLOCK_WEIGHT = 80;

quint32 part(const QStringList &parts, int index)
{
    return static_cast<quint32>(addressPart(parts, index));
}

quint32 blockStart(const QStringList &parts)
{
    return part(parts, 1) * BLOCK_WEIGHT + part(parts, 2) * HALF_BLOCK_WEIGHT;
}

int numericAddress(int areaType, const QString &addressText)
{
    const QStringList parts = addressParts(addressText);
    quint32 address = 0;
    if (areaType == AREA_X || areaType == AREA_D)
        address = part(parts, 0) * COMMAND_WEIGHT + part(parts, 1) * NIBBLE_WEIGHT + part(parts, 2);
    else if (areaType == AREA_C)
        address = blockStart(parts) + part(parts, 3);
    return static_cast<int>(address);
}

} // namespace

QStringList addressParts(const QString &addressText)
{
    return addressText.split(QLatin1Char('.'));
}

int addressPart(const QStringList &parts, int index)
{
    return index < parts.size() ? parts.at(index).toInt() : 0;
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
