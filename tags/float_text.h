// Floats as text, so that every bit comes back from it.
#ifndef KVT_TAGS_FLOAT_TEXT_H
#define KVT_TAGS_FLOAT_TEXT_H

#include "tags/value_type.h"

#include <QString>

namespace kvt
{

class NumberText;

/// Returns the number that bits of f32 or f64 stand for.
double floatNumber(ValueType type, quint64 bits);

/// Returns the bits of the value of `type` that is nearest to a number; beyond the highest, of an
/// infinity.
quint64 floatBits(ValueType type, double number);

/// Returns the highest finite number of f32 or f64.
double floatHighest(ValueType type);

/// True for bits that are not a number.
bool isNan(ValueType type, quint64 bits);

/// Appends the shortest text from which the bits are read back: "21.4", "1e-45", "-0", "inf"; "nan"
/// and "-nan" for quiet ones without further bits, else all bits as in "nan(0x7FC00001)".
void appendFloat(ValueType type, quint64 bits, NumberText *text);

/// The bits of a float as it was entered, or what is wrong with it.
struct EnteredFloat {
    quint64 bits = 0;
    QString error; ///< empty when all is well
};

/// Reads what `appendFloat` appends and any decimal number with a point, whatever the locale. The
/// value nearest to the number is taken; a number beyond the type's range, or so small that nothing
/// but 0 is near, is refused.
EnteredFloat enterFloat(ValueType type, const QString &text);

} // namespace kvt

#endif
