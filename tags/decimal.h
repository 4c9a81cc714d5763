// Decimal numbers, exact as they are written.
#ifndef KVT_TAGS_DECIMAL_H
#define KVT_TAGS_DECIMAL_H

#include "tags/int128.h"

#include <QString>

namespace kvt
{

/// `mantissa` * 10^-`places`; a number that was read has as few places as will do.
struct Decimal {
    Int128 mantissa = 0;
    int places = 0; ///< 0 to 30
};

/// How the reading of a number has ended.
enum class NumberReading {
    Good,
    NotANumber,   ///< something else than a decimal number with a point
    TooManyDigits ///< a number of more than 36 digits or 30 decimals
};

/// Reads a number: digits, perhaps with a minus in front, a point among them and an exponent behind
/// ("1e-3"), whatever the locale. Zeros that do not matter cost nothing. Any thread.
NumberReading readDecimal(const QString &text, Decimal *number);

/// Returns a number below, equal to or above 0 as `a` is below, equal to or above `b`.
int compare(const Decimal &a, const Decimal &b);

/// Returns the nearest double.
double toDouble(const Decimal &number);

/// Returns the text of the number, with as many digits behind the point as it has places.
QString decimalText(const Decimal &number);

/// True for "21,4": a number but for the one comma, where a point is needed.
bool hasDecimalComma(const QString &text);

/// Says why a text is no number, or what is wrong with it.
QString numberFault(NumberReading reading, const QString &text);

} // namespace kvt

#endif
