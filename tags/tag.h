// One tag: a named value of the PLC, as an engineer lists it.
#ifndef KVT_TAGS_TAG_H
#define KVT_TAGS_TAG_H

#include "tags/meaning_texts.h"
#include "tags/value_type.h"
#include "tags/watch_texts.h"

#include <QString>

namespace kvt
{

/// A named value; its form fits its area.
struct Tag {
    QString name;               ///< unique in its list, not empty
    Area area = Area::D;        ///< area of the PLC
    QString address;            ///< "a.b.c" in X and D, "a.b.c.d" in C; decimal parts
    int station = 0;            ///< 0 to 255
    ValueForm form;             ///< its type, and what that takes
    QString description;        ///< free text, may be empty
    MeaningTexts meaning = {};  ///< what its values mean
    WatchTexts watch = {};      ///< how often it is read, what is reported, when it is an alarm
    bool acceptsTorn = false;   ///< of several words: they are taken as they come
    bool isWrittenDown = false; ///< of several words: the last is written first
};

/// True when all fields are equal.
bool operator==(const Tag &a, const Tag &b);

} // namespace kvt

#endif
