// Areas of the PLC.
#ifndef KVT_TAGS_AREA_H
#define KVT_TAGS_AREA_H

#include <QString>

namespace kvt
{

/// Areas of the PLC; the numbers are the area codes that the driver takes.
enum class Area {
    X = 0, ///< one byte, read and written
    D = 1, ///< one 16-bit word, read and written
    C = 2  ///< one byte of a block of 70, read only
};

/// Elements of an area-C block, 0 to 69.
constexpr int ELEMENTS_PER_BLOCK = 70;

/// Returns "X", "D" or "C".
QString areaName(Area area);

/// Returns the bytes that one element of `area` has: 2 in D, else 1.
constexpr int valueSize(Area area)
{
    return area == Area::D ? 2 : 1;
}

} // namespace kvt

#endif
