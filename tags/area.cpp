#include "tags/area.h"

namespace kvt
{

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

} // namespace kvt
