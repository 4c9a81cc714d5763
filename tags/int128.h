// Whole numbers of 128 bits.
//
// A raw value of 64 bits times a scale needs more than 64.
#ifndef KVT_TAGS_INT128_H
#define KVT_TAGS_INT128_H

#include <QtGlobal>

namespace kvt
{

__extension__ typedef __int128 Int128;
__extension__ typedef unsigned __int128 UInt128;

/// Returns the magnitude, which has room for the lowest number too.
constexpr UInt128 magnitude(Int128 number)
{
    return number < 0 ? UInt128(0) - static_cast<UInt128>(number) : static_cast<UInt128>(number);
}

/// Multiplies `*number` by `factor`. Returns false, and leaves `*number` alone, when the product
/// has no room.
inline bool multiply(Int128 *number, Int128 factor)
{
    Int128 product = 0;
    if (__builtin_mul_overflow(*number, factor, &product))
        return false;
    *number = product;
    return true;
}

/// Multiplies `*number` by 10^`exponent`, which is not negative; as `multiply`.
inline bool multiplyByTens(Int128 *number, int exponent)
{
    Int128 product = *number;
    for (; exponent > 0; --exponent)
        if (product != 0 && !multiply(&product, 10))
            return false;
        else if (product == 0)
            break;
    *number = product;
    return true;
}

/// A quotient that is rounded down, and the rest, 0 to divisor - 1.
struct Division {
    Int128 quotient;
    Int128 rest;
};

/// Divides by a divisor above 0. Small numbers take a tenth of the time of large ones.
inline Division divide(Int128 number, Int128 divisor)
{
    Division result = {};
    if (number == static_cast<qint64>(number) && divisor == static_cast<qint64>(divisor)) {
        const auto small = static_cast<qint64>(number);
        const auto by = static_cast<qint64>(divisor);
        result = {small / by, small % by};
    } else {
        result = {number / divisor, number % divisor};
    }
    if (result.rest < 0) {
        --result.quotient;
        result.rest += divisor;
    }
    return result;
}

/// Divides by a divisor above 0 and rounds to the nearest whole number, halves away from 0.
inline Int128 divideRounded(Int128 number, Int128 divisor)
{
    const Division result = divide(number, divisor);
    const Int128 missing = divisor - result.rest;
    const bool up = result.rest > missing || (result.rest == missing && number > 0);
    return up ? result.quotient + 1 : result.quotient;
}

} // namespace kvt

#endif
