// One tag: a named value of the PLC, as an engineer lists it.
#ifndef KVT_TAGS_TAG_H
#define KVT_TAGS_TAG_H

#include "tags/area.h"
#include "tags/value_type.h"

#include <QString>

namespace kvt
{

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

} // namespace kvt

#endif
