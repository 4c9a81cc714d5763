// Raw values of one element: bytes to text and back.
#ifndef KVT_TAGS_TAG_VALUE_H
#define KVT_TAGS_TAG_VALUE_H

#include "tags/tag.h"

#include <QByteArray>

namespace kvt
{

/// Returns the text of a value. `bytes` is little-endian; bytes beyond the area's size are not
/// looked at. Empty when there are fewer, or when BCD has a digit above 9. Hex is "0x" and two or
/// four upper-case digits.
QString formatValue(Area area, ValueType type, const QByteArray &bytes);

/// The bytes of an entered value, or what is wrong with it.
struct ParsedValue {
    QByteArray bytes; ///< little-endian, as many as the area has
    QString error;    ///< empty when all is well
};

/// Reads the text of a value, blanks around it allowed: whole decimal numbers; for bool also true,
/// false, on and off; for hex, digits with or without "0x".
ParsedValue parseValue(Area area, ValueType type, const QString &text);

} // namespace kvt

#endif
