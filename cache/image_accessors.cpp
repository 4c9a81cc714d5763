#include "cache/image_accessors.h"

#include "driver/byte_access.h"
#include "driver/driver_object.h"

namespace
{

const int IMAGE_WORDS = IMAGE_AREA_BYTES / 2;
const int IMAGE_BITS = IMAGE_AREA_BYTES * 8;

// Sums that cannot overflow whatever the caller passes.
typedef qint64 Index;

bool isInside(Index index, int size)
{
    return index >= 0 && index < size;
}

void putByte(QByteArray &out, int index, int value)
{
    if (out.size() <= index)
        out.resize(index + 1);
    out[index] = static_cast<char>(value & 0xFF);
}

void putWord(QByteArray &out, int index, int word)
{
    putByte(out, index, word);
    putByte(out, index + 1, word >> 8);
}

int wordFrom(const QByteArray &in, int low, int high)
{
    return byteOrZero(in, low) | byteOrZero(in, high) << 8;
}

int wordAt(const unsigned short *area, Index index)
{
    return isInside(index, IMAGE_WORDS) ? area[index] : 0;
}

void setWord(unsigned short *area, Index index, int word)
{
    if (isInside(index, IMAGE_WORDS))
        area[index] = static_cast<unsigned short>(word);
}

// Bit `number` of an area whose units hold `unitBits` bits. Quotient and remainder round toward
// zero, so a negative remainder names no bit.
template <typename Unit>
int bitAt(const Unit *area, Index number)
{
    const int unitBits = 8 * static_cast<int>(sizeof(Unit));
    const Index unit = number / unitBits;
    const int position = static_cast<int>(number % unitBits);
    if (!isInside(unit, IMAGE_BITS / unitBits) || position < 0)
        return 0;
    return (area[unit] >> position) & 1;
}

template <typename Unit>
void setBit(Unit *area, Index number, bool on)
{
    const int unitBits = 8 * static_cast<int>(sizeof(Unit));
    const Index unit = number / unitBits;
    const int position = static_cast<int>(number % unitBits);
    if (!isInside(unit, IMAGE_BITS / unitBits) || position < 0)
        return;
    const int mask = 1 << position;
    area[unit] = static_cast<Unit>(on ? area[unit] | mask : area[unit] & ~mask);
}

template <typename Unit>
void getBits(QByteArray &out, const Unit *area, int start, int count)
{
    for (int i = 0; i < qMin(count, IMAGE_BITS); ++i)
        putByte(out, i, bitAt(area, Index(start) + i));
}

template <typename Unit>
void setBits(int start, Unit *area, const QByteArray &in, int count)
{
    for (int i = 0; i < qMin(qMin(count, IMAGE_BITS), in.size()); ++i)
        setBit(area, Index(start) + i, in.at(i) == 1);
}

} // namespace

void GetBitFromUC(QByteArray &out, unsigned char *area, int start, int count)
{
    getBits(out, area, start, count);
}

void GetBitFromUS(QByteArray &out, unsigned short *area, int start, int count)
{
    getBits(out, area, start, count);
}

void GetWordFromUS(QByteArray &out, unsigned short *area, int start, int count)
{
    for (int i = 0; i < qMin(count, IMAGE_WORDS); ++i)
        putWord(out, 2 * i, wordAt(area, Index(start) + i));
}

void GetWordFromUI(QByteArray &out, unsigned short *area, int start, int count)
{
    if (count == 1)
        putWord(out, 0, wordAt(area, Index(start) + 1));
    for (int k = 0; k < qMin(count, IMAGE_WORDS) / 2; ++k) {
        const Index high = Index(start) + 2 * k;
        putWord(out, 4 * k, wordAt(area, high + 1));
        putWord(out, 4 * k + 2, wordAt(area, high));
    }
}

void SetBitToUC(int start, unsigned char *area, QByteArray *in, int count)
{
    setBits(start, area, *in, count);
}

void SetBitToUS(int start, unsigned short *area, QByteArray *in, int count)
{
    setBits(start, area, *in, count);
}

void SetWordToUS(int start, unsigned short *area, QByteArray *in, int count)
{
    const int words = qMin(qMin(count, IMAGE_WORDS), in->size() / 2);
    for (int i = 0; i < words; ++i)
        setWord(area, Index(start) + i, wordFrom(*in, 2 * i, 2 * i + 1));
}

void SetWordToUI(int start, unsigned short *area, QByteArray *in, int count)
{
    const int pairs = qMin(qMin(count, IMAGE_WORDS) / 2, in->size() / 4);
    for (int k = 0; k < pairs; ++k) {
        const Index high = Index(start) + 2 * k;
        setWord(area, high + 1, wordFrom(*in, 4 * k, 4 * k + 1));
        setWord(area, high, wordFrom(*in, 4 * k + 2, 4 * k + 3));
    }
}

void SaveBitToUC(QByteArray *in, unsigned char *area)
{
    if (PLC_driver.pendingFrames.isEmpty())
        return;
    const Protocol &request = PLC_driver.pendingFrames.first();
    const Index firstByte = request.var.address / 8;
    for (int j = 0; j < qMin(request.builderParam2, IMAGE_AREA_BYTES); ++j) {
        const Index source = Index(request.builderParam1) + j;
        if (isInside(source, in->size()) && isInside(firstByte + j, IMAGE_AREA_BYTES))
            area[firstByte + j] = byteOrZero(*in, static_cast<int>(source));
    }
}

void SaveWordToUS(QByteArray *in, unsigned short *area)
{
    if (PLC_driver.pendingFrames.isEmpty())
        return;
    const Protocol &request = PLC_driver.pendingFrames.first();
    for (int i = 0; i < qMin(request.builderParam2 / 2, IMAGE_WORDS); ++i) {
        const Index source = Index(request.builderParam1) + 2 * i;
        if (!isInside(source, in->size()) || !isInside(source + 1, in->size()))
            continue;
        const int low = static_cast<int>(source) + 1;
        setWord(area, Index(request.var.address) + i, wordFrom(*in, low, low - 1));
    }
}
