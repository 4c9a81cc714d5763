// How the elements of a tag are asked for and written.
#ifndef KVT_TAGS_TAG_ELEMENTS_H
#define KVT_TAGS_TAG_ELEMENTS_H

#include "tags/tag.h"

#include <QStringList>

namespace kvt
{

/// Returns the address texts of a tag's elements, rising; its own alone where that is bad.
QStringList elementTexts(const Tag &tag);

/// Says why a tag of area X or D cannot be written element by element though it can be read; empty
/// when it can.
QString writeFault(const Tag &tag);

/// True when the bits of a value are those of its one element, as they stand.
bool isOneElement(const ValueForm &form, Area area);

/// Reads the column "torn": "accept", "refuse" or nothing. Returns an empty text, or says what is
/// wrong.
QString readTorn(const QString &text, bool *accepts);

/// Reads the column "write_order": "up", "down" or nothing, in the same way.
QString readWriteOrder(const QString &text, bool *isDown);

} // namespace kvt

#endif
