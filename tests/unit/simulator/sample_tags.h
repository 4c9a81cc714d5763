// Tags for the simulator's tests.
#ifndef KVT_TESTS_UNIT_SIMULATOR_SAMPLE_TAGS_H
#define KVT_TESTS_UNIT_SIMULATOR_SAMPLE_TAGS_H

#include "tags/tag.h"

#include <QVector>

/// Returns a tag named like its place: "D5.2.1@1".
inline kvt::Tag makeTag(kvt::Area area, const char *address, int station,
                        kvt::ValueType type = kvt::ValueType::Hex)
{
    const QString text = QLatin1String(address);
    const QString name = kvt::areaName(area) + text + QLatin1Char('@') + QString::number(station);
    return {name, area, text, station, type, QString()};
}

/// Returns a cell of each area at station 1 and of D at station 2.
inline QVector<kvt::Tag> sampleTags()
{
    return {makeTag(kvt::Area::D, "5.2.1", 1), makeTag(kvt::Area::X, "1.2.0", 1),
            makeTag(kvt::Area::C, "9.1.1.5", 1), makeTag(kvt::Area::D, "3.4.0", 2)};
}

#endif
