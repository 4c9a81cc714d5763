#include "protocol/block_checks.h"

namespace
{

quint32 sumOf(const quint8 *buffer, quint16 length)
{
    quint32 sum = 0;
    for (int i = 0; i < length; ++i)
        sum += buffer[i];
    return sum;
}

} // namespace

quint16 CalSUM(const quint8 *buffer, quint16 length)
{
    return static_cast<quint16>(sumOf(buffer, length) & 0xFFFF);
}

quint16 CalCRC(const quint8 *buffer, quint16 length)
{
    quint32 crc = 0xFFFF;
    for (int i = 0; i < length; ++i) {
        crc ^= buffer[i];
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) ? (crc >> 1) ^ 0xA001 : crc >> 1;
    }
    return static_cast<quint16>(crc);
}

quint16 CalLRC(const quint8 *buffer, quint16 length)
{
    // The 1 is added after the mask, so the result has nine bits.
    return static_cast<quint16>((~sumOf(buffer, length) & 0xFF) + 1);
}

quint16 CalXOR(const quint8 *buffer, quint16 length)
{
    quint8 result = buffer[0];
    for (int i = 1; i < length; ++i)
        result = static_cast<quint8>(result ^ buffer[i]);
    return result;
}
