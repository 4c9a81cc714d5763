#include "tests/fuzz/support/slave_plant.h"

#include "tags/tag_address.h"

namespace
{

struct Place {
    kvt::Area area;
    int station;
    const char *address;
};

// Commands 32 and 33 for what can be written: IssuedValues counts on it.
const Place MIXED[] = {{kvt::Area::D, 1, "32.0.0"}, {kvt::Area::D, 1, "32.0.1"},
                       {kvt::Area::X, 1, "33.1.0"}, {kvt::Area::D, 2, "32.0.0"},
                       {kvt::Area::X, 2, "33.1.0"}, {kvt::Area::X, 2, "33.1.1"}};
const Place ALIKE[] = {{kvt::Area::D, 1, "32.0.0"},
                       {kvt::Area::D, 1, "32.0.1"},
                       {kvt::Area::D, 1, "32.1.0"},
                       {kvt::Area::D, 1, "32.1.1"}};
const Place BLOCKS[] = {{kvt::Area::D, 1, "32.0.0"},
                        {kvt::Area::D, 1, "32.0.1"},
                        {kvt::Area::C, 1, "96.0.0.0"},
                        {kvt::Area::C, 1, "96.0.0.69"},
                        {kvt::Area::C, 1, "96.0.1.7"}};

template <size_t COUNT>
QVector<kvt::Tag> tagsAt(const Place (&places)[COUNT])
{
    QVector<kvt::Tag> tags;
    for (const Place &place : places) {
        kvt::Tag tag;
        tag.area = place.area;
        tag.station = place.station;
        tag.form = place.area == kvt::Area::D ? kvt::ValueType::U16 : kvt::ValueType::U8;
        tag.address = QLatin1String(place.address);
        tag.name = QStringLiteral("%1 %2").arg(place.station).arg(tag.address);
        tags.append(tag);
    }
    return tags;
}

QByteArray readFrame(const kvt::Tag &tag)
{
    kvt::TagAddress address;
    kvt::parseTagAddress(tag.area, tag.address, &address);
    const char bytes[] = {static_cast<char>(tag.station), static_cast<char>(address.a),
                          static_cast<char>(kvt::readAddressByte(address))};
    return '\x05' + QByteArray(bytes, sizeof bytes).toHex().toUpper() + '\r';
}

QHash<QByteArray, kvt::Area> areasOfReads()
{
    QHash<QByteArray, kvt::Area> areas;
    for (int kind = 0; kind < PLANT_KINDS; ++kind)
        for (const kvt::Tag &tag : slaveTags(static_cast<PlantKind>(kind)))
            areas.insert(readFrame(tag), tag.area);
    return areas;
}

} // namespace

const QVector<kvt::Tag> &slaveTags(PlantKind kind)
{
    static const QVector<kvt::Tag> plants[PLANT_KINDS] = {tagsAt(MIXED), tagsAt(ALIKE),
                                                          tagsAt(BLOCKS)};
    return plants[static_cast<int>(kind)];
}

bool areaOfRead(const QByteArray &frame, kvt::Area *area)
{
    static const QHash<QByteArray, kvt::Area> areas = areasOfReads();
    const auto found = areas.constFind(frame);
    if (found == areas.constEnd())
        return false;
    *area = *found;
    return true;
}
