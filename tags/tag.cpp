#include "tags/tag.h"

namespace kvt
{

bool operator==(const Tag &a, const Tag &b)
{
    return a.name == b.name && a.area == b.area && a.address == b.address &&
           a.station == b.station && a.type == b.type && a.description == b.description;
}

QString areaName(Area area)
{
    switch (area) {
    case Area::X:
        return QStringLiteral("X");
    case Area::D:
        return QStringLiteral("D");
    case Area::C:
        return QStringLiteral("C");
    }
    return QString();
}

QString typeName(ValueType type)
{
    switch (type) {
    case ValueType::Bool:
        return QStringLiteral("bool");
    case ValueType::U8:
        return QStringLiteral("u8");
    case ValueType::S16:
        return QStringLiteral("s16");
    case ValueType::U16:
        return QStringLiteral("u16");
    case ValueType::Hex:
        return QStringLiteral("hex");
    }
    return QString();
}

int valueSize(Area area)
{
    return area == Area::D ? 2 : 1;
}

} // namespace kvt
