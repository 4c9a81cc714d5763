// The tags that a hostile slave has, and the frames that ask for them.
#ifndef KVT_TESTS_FUZZ_SUPPORT_SLAVE_PLANT_H
#define KVT_TESTS_FUZZ_SUPPORT_SLAVE_PLANT_H

#include "tags/tag.h"

#include <QHash>
#include <QVector>

/// Which tags are polled.
enum class PlantKind { Mixed, Alike, Blocks };
constexpr int PLANT_KINDS = 3;

/// Two stations with words and bytes; or one of words alone, whose replies all look the same; or
/// one that has a block of area C as well.
const QVector<kvt::Tag> &slaveTags(PlantKind kind);

/// The area that a read frame of any of these tags asks for; false when it is none of theirs.
bool areaOfRead(const QByteArray &frame, kvt::Area *area);

#endif
