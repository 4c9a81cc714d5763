// One tag: a named value of the PLC, as an engineer lists it.
#ifndef KVT_TAGS_TAG_H
#define KVT_TAGS_TAG_H

#include <QString>

namespace kvt
{

/// Areas of the PLC; the numbers are the area codes that the driver takes.
enum class Area {
    X = 0, ///< one byte, read and written
    D = 1, ///< one 16-bit word, read and written
    C = 2  ///< one byte of a block of 70, read only
};

/// How the bytes of a value are shown and entered.
enum class ValueType {
    Bool, ///< 0 or 1
    U8,   ///< 0 to 255
    S16,  ///< -32768 to 32767
    U16,  ///< 0 to 65535
    Hex   ///< all bits, as hexadecimal digits
};

/// A named value. Areas X and D: bool, u8 (X), s16 and u16 (D), hex; area C: bool, u8, hex.
struct Tag {
    QString name;                    ///< unique in its list, not empty
    Area area = Area::D;             ///< area of the PLC
    QString address;                 ///< "a.b.c" in X and D, "a.b.c.d" in C; decimal parts
    int station = 0;                 ///< 0 to 255
    ValueType type = ValueType::U16; ///< how the value is shown
    QString description;             ///< free text, may be empty
};

/// True when all six fields are equal.
bool operator==(const Tag &a, const Tag &b);

/// Returns "X", "D" or "C".
QString areaName(Area area);

/// Returns "bool", "u8", "s16", "u16" or "hex".
QString typeName(ValueType type);

/// Returns the bytes that one value of `area` has: 2 in D, else 1.
int valueSize(Area area);

} // namespace kvt

#endif
