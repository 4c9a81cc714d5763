#include "tags/value_elements.h"

namespace kvt
{

namespace
{

quint16 swapped(quint16 word)
{
    return static_cast<quint16>((word << 8) | (word >> 8));
}

/// Returns the 16-bit word `index` of a value, its bytes as the order has them.
quint16 wordAt(Area area, const quint16 *elements, int index, bool swap)
{
    const quint16 word =
        area == Area::D
            ? elements[index]
            : static_cast<quint16>((elements[2 * index] << 8) | (elements[2 * index + 1] & 0xFF));
    return swap ? swapped(word) : word;
}

void putWord(Area area, quint16 *elements, int index, quint16 word)
{
    if (area == Area::D) {
        elements[index] = word;
        return;
    }
    elements[2 * index] = static_cast<quint16>(word >> 8);
    elements[2 * index + 1] = word & 0xFF;
}

/// Where the word that comes `index`-th in importance lies.
int placeOf(const ValueForm &form, int index, int words)
{
    return reversesWords(form.order) ? words - 1 - index : index;
}

quint64 plainBits(const ValueForm &form, Area area, const quint16 *elements)
{
    const int bytes = byteCount(form, area);
    if (bytes == 1)
        return elements[0] & 0xFF;
    quint64 bits = 0;
    for (int i = 0; i < bytes / 2; ++i)
        bits = bits << 16 |
               wordAt(area, elements, placeOf(form, i, bytes / 2), swapsBytes(form.order));
    return bits;
}

void putPlainBits(const ValueForm &form, Area area, quint64 bits, quint16 *elements)
{
    const int words = byteCount(form, area) / 2;
    if (words == 0)
        elements[0] = bits & 0xFF;
    for (int i = words - 1; i >= 0; --i, bits >>= 16) {
        const auto word = static_cast<quint16>(bits & 0xFFFF);
        putWord(area, elements, placeOf(form, i, words),
                swapsBytes(form.order) ? swapped(word) : word);
    }
}

} // namespace

quint64 joinElements(const ValueForm &form, Area area, const quint16 *elements)
{
    const quint64 bits = plainBits(form, area, elements);
    if (form.type == ValueType::Bit)
        return bits >> form.number & 1;
    return form.type == ValueType::Bool ? quint64(bits != 0) : bits;
}

void splitElements(const ValueForm &form, Area area, quint64 bits, quint16 *elements)
{
    if (form.type == ValueType::Bit) {
        const quint64 mask = quint64(1) << form.number;
        const quint64 others = plainBits(form, area, elements) & ~mask;
        bits = bits != 0 ? others | mask : others;
    }
    putPlainBits(form, area, bits, elements);
}

QByteArray stringBytes(const ValueForm &form, Area area, const quint16 *elements)
{
    QByteArray bytes;
    bytes.reserve(form.number + 1);
    for (int i = 0; i < (form.number + 1) / 2; ++i) {
        const bool hasBoth = area == Area::D || 2 * i + 1 < form.number;
        const quint16 word = hasBoth ? wordAt(area, elements, i, swapsBytes(form.order))
                                     : static_cast<quint16>(elements[2 * i] << 8);
        bytes.append(static_cast<char>(word >> 8)).append(static_cast<char>(word & 0xFF));
    }
    bytes.truncate(form.number);
    return bytes;
}

void putStringBytes(const ValueForm &form, Area area, const QByteArray &bytes, quint16 *elements)
{
    const auto byteAt = [&](int index) {
        return index < bytes.size() && index < form.number ? static_cast<quint8>(bytes.at(index))
                                                           : quint8(0);
    };
    for (int i = 0; i < (form.number + 1) / 2; ++i) {
        if (area != Area::D && 2 * i + 1 >= form.number) {
            elements[2 * i] = byteAt(2 * i);
            break;
        }
        const auto word = static_cast<quint16>(byteAt(2 * i) << 8 | byteAt(2 * i + 1));
        putWord(area, elements, i, swapsBytes(form.order) ? swapped(word) : word);
    }
}

} // namespace kvt
