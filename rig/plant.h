// Tag lists of made-up plants.
#ifndef KVT_RIG_PLANT_H
#define KVT_RIG_PLANT_H

#include "tags/tag.h"

#include <QVector>

namespace kvt
{

/// How many tags each station of a plant has.
struct PlantSize {
    int stations = 10; ///< numbered from 1
    int words = 10;    ///< area D, at most 512
    int bits = 0;      ///< area X, at most 512
    int blocks = 0;    ///< area C, at most 2; two elements of each are tags
};

/// Returns the tag of one cell, named by it: a word in area D, else a byte.
Tag plantTag(Area area, int station, const QString &address);

/// Returns the tags of a plant; every tag has a cell of its own.
QVector<Tag> makePlant(const PlantSize &size);

} // namespace kvt

#endif
