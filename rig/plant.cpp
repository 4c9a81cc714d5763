#include "rig/plant.h"

namespace kvt
{

namespace
{

// Commands 32 and up keep clear of the one whose writes carry no value.
QString cellAddress(int index)
{
    return QStringLiteral("%1.%2.%3").arg(32 + index / 32).arg(index / 2 % 16).arg(index % 2);
}

void addStation(QVector<Tag> *tags, const PlantSize &size, int station)
{
    for (int i = 0; i < size.words; ++i)
        tags->append(plantTag(Area::D, station, cellAddress(i)));
    for (int i = 0; i < size.bits; ++i)
        tags->append(plantTag(Area::X, station, cellAddress(size.words + i)));
    for (int i = 0; i < size.blocks; ++i)
        for (const int element : {0, 69})
            tags->append(
                plantTag(Area::C, station, QStringLiteral("96.0.%1.%2").arg(i).arg(element)));
}

} // namespace

Tag plantTag(Area area, int station, const QString &address)
{
    Tag tag;
    tag.name = QStringLiteral("%1%2_%3").arg(areaName(area)).arg(station).arg(address);
    tag.area = area;
    tag.address = address;
    tag.station = station;
    tag.form = area == Area::D ? ValueType::U16 : ValueType::U8;
    return tag;
}

QVector<Tag> makePlant(const PlantSize &size)
{
    QVector<Tag> tags;
    for (int station = 1; station <= size.stations; ++station)
        addStation(&tags, size, station);
    return tags;
}

} // namespace kvt
