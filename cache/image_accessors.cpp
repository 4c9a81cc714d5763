#include "cache/image_accessors.h"

#include "driver/byte_access.h"
#include "driver/driver_object.h"

#include <limits>

namespace
{

// Sums that cannot overflow whatever the caller passes.
typedef qint64 Index;

// A byte array cannot hold more.
constexpr int MOST_BYTES = std::numeric_limits<int>::max() - 64;

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

// Where bit `number` is. Quotient and remainder round toward zero, so that a number below 0 that is
// no multiple of the unit's bits names a unit but none of its bits.
template <typename Unit>
struct BitPlace {
    static constexpr int UNIT_BITS = 8 * static_cast<int>(sizeof(Unit));
    explicit BitPlace(Index number)
        : unit(number / UNIT_BITS), position(static_cast<int>(number % UNIT_BITS))
    {
    }
    int mask() const { return position < 0 ? 0 : 1 << position; }

    Index unit;
    int position;
};

template <typename Unit>
int bitAt(const Unit *area, Index number)
{
    const BitPlace<Unit> bit(number);
    return bit.position < 0 ? 0 : (area[bit.unit] >> bit.position) & 1;
}

// The unit is stored back even where no bit of it changes.
template <typename Unit>
void setBit(Unit *area, Index number, bool on)
{
    const BitPlace<Unit> bit(number);
    const int unit = area[bit.unit];
    area[bit.unit] = static_cast<Unit>(on ? unit | bit.mask() : unit & ~bit.mask());
}

template <typename Unit>
void getBits(QByteArray &out, const Unit *area, int start, int count)
{
    for (int i = 0; i < qMin(count, MOST_BYTES); ++i)
        putByte(out, i, bitAt(area, Index(start) + i));
}

template <typename Unit>
void setBits(int start, Unit *area, const QByteArray &in, int count)
{
    const int size = in.size();
    for (int i = 0; i < qMin(count, size); ++i)
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
    for (int i = 0; i < qMin(count, MOST_BYTES / 2); ++i)
        putWord(out, 2 * i, area[Index(start) + i]);
}

void GetWordFromUI(QByteArray &out, unsigned short *area, int start, int count)
{
    if (count == 1)
        putWord(out, 0, area[Index(start) + 1]);
    for (int k = 0; k < qMin(count / 2, MOST_BYTES / 4); ++k) {
        const Index high = Index(start) + 2 * k;
        putWord(out, 4 * k, area[high + 1]);
        putWord(out, 4 * k + 2, area[high]);
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
    for (int i = 0; i < qMin(count, in->size() / 2); ++i)
        area[Index(start) + i] = wordFrom(*in, 2 * i, 2 * i + 1);
}

void SetWordToUI(int start, unsigned short *area, QByteArray *in, int count)
{
    for (int k = 0; k < qMin(count / 2, in->size() / 4); ++k) {
        const Index high = Index(start) + 2 * k;
        area[high + 1] = wordFrom(*in, 4 * k, 4 * k + 1);
        area[high] = wordFrom(*in, 4 * k + 2, 4 * k + 3);
    }
}

void SaveBitToUC(QByteArray *in, unsigned char *area)
{
    if (PLC_driver.pendingFrames.isEmpty())
        return;
    const Protocol &request = PLC_driver.pendingFrames.first();
    const Index first = request.builderParam1;
    const Index end = qMin(first + request.builderParam2, Index(in->size()));
    for (Index source = qMax(first, Index(0)); source < end; ++source)
        area[request.var.address / 8 + source - first] = byteOrZero(*in, static_cast<int>(source));
}

void SaveWordToUS(QByteArray *in, unsigned short *area)
{
    if (PLC_driver.pendingFrames.isEmpty())
        return;
    const Protocol &request = PLC_driver.pendingFrames.first();
    const Index first = request.builderParam1;
    const int size = in->size();
    for (Index i = 0; i < request.builderParam2 / 2; ++i) {
        const Index source = first + 2 * i;
        if (source + 1 >= size)
            break;
        if (isInside(source, size)) {
            const int high = static_cast<int>(source);
            area[request.var.address + i] = wordFrom(*in, high + 1, high);
        }
    }
}
