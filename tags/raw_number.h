// Whole numbers as the bits of a value: every type but floats and strings.
#ifndef KVT_TAGS_RAW_NUMBER_H
#define KVT_TAGS_RAW_NUMBER_H

#include "tags/int128.h"
#include "tags/value_type.h"

#include <optional>

namespace kvt
{

class NumberText;

/// The lowest and highest number that a type holds.
struct RawRange {
    Int128 lowest;
    Int128 highest;
};

/// Returns the range of a type that is no float and no string; of hex that of its area's element.
RawRange rawRange(ValueType type, Area area);

/// Returns the number that bits stand for; none when they are BCD with a digit above 9. Any thread.
std::optional<Int128> rawNumber(ValueType type, quint64 bits);

/// Returns the bits of a number within the type's range.
quint64 rawBits(ValueType type, Int128 number);

/// Appends the number that bits stand for, hex as "0x" and two or four digits. Returns false, and
/// appends nothing, where `rawNumber` has none.
bool appendRaw(ValueType type, Area area, quint64 bits, NumberText *text);

/// A whole number as it was entered, or what is wrong with it.
struct EnteredRaw {
    Int128 number = 0;
    QString error; ///< empty when all is well
};

/// Reads the text of a raw value, blanks around it allowed: whole decimal numbers, hexadecimal ones
/// behind "0x"; for bool and bit true, false, on and off as well; for hex, digits with or without
/// "0x".
EnteredRaw enterRaw(ValueType type, Area area, const QString &text);

} // namespace kvt

#endif
