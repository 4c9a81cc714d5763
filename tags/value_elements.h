// Elements of the PLC, put together to the bits of a value and taken apart again.
//
// An element is a word of area D or a byte of areas X and C. Values take them at rising addresses,
// in the order of their form.
#ifndef KVT_TAGS_VALUE_ELEMENTS_H
#define KVT_TAGS_VALUE_ELEMENTS_H

#include "tags/value_type.h"

#include <QByteArray>

namespace kvt
{

/// Returns the bits of a value that is no string; the last of its bytes is the lowest. `elements`
/// has as many as `elementCount` says, bytes in their low 8 bits. A bool is 0 or 1, whichever bit
/// of its element is set, and so is a bit. Nothing is allocated. Any thread.
quint64 joinElements(const ValueForm &form, Area area, const quint16 *elements);

/// Fills `elements`, as many as `elementCount` says, with the bits of a value that is no string. A
/// bit is put into its element, whose other bits stay as they are; all else is overwritten.
void splitElements(const ValueForm &form, Area area, quint64 bits, quint16 *elements);

/// Returns the bytes of a string, as many as its form has.
QByteArray stringBytes(const ValueForm &form, Area area, const quint16 *elements);

/// Fills `elements` with the bytes of a string, as many as its form has; missing ones are 0.
void putStringBytes(const ValueForm &form, Area area, const QByteArray &bytes, quint16 *elements);

} // namespace kvt

#endif
