#include "tags/value_ratio.h"

namespace kvt
{

namespace
{

Int128 commonDivisor(Int128 a, Int128 b)
{
    UInt128 left = magnitude(a);
    UInt128 right = magnitude(b);
    while (right != 0) {
        const UInt128 rest = left % right;
        left = right;
        right = rest;
    }
    return static_cast<Int128>(left);
}

std::optional<ValueRatio> settled(ValueRatio ratio)
{
    if (ratio.factor == 0 || ratio.divisor == 0)
        return std::nullopt;
    if (ratio.divisor < 0) {
        ratio.factor = -ratio.factor;
        ratio.offset = -ratio.offset;
        ratio.divisor = -ratio.divisor;
    }
    reduce(&ratio);
    return ratio;
}

/// Gives two numbers as many decimals as the one has that has more. Returns them, or none if they
/// have too many digits.
std::optional<int> align(Decimal *a, Decimal *b)
{
    const int places = qMax(a->places, b->places);
    const bool fits = multiplyByTens(&a->mantissa, places - a->places) &&
                      multiplyByTens(&b->mantissa, places - b->places);
    a->places = places;
    b->places = places;
    return fits ? std::make_optional(places) : std::nullopt;
}

bool subtractProduct(Int128 *number, Int128 a, Int128 b)
{
    Int128 difference = 0;
    if (!multiply(&a, b) || __builtin_sub_overflow(*number, a, &difference))
        return false;
    *number = difference;
    return true;
}

/// How often a number can be divided by `factor`; it is divided so often.
int takeOut(Int128 *number, int factor)
{
    int times = 0;
    for (; *number % factor == 0; ++times)
        *number /= factor;
    return times;
}

} // namespace

void reduce(ValueRatio *ratio)
{
    const Int128 common =
        commonDivisor(commonDivisor(ratio->factor, ratio->offset), ratio->divisor);
    ratio->factor /= common;
    ratio->offset /= common;
    ratio->divisor /= common;
}

std::optional<ValueRatio> ratioOfScale(const Decimal &scale, const Decimal &offset)
{
    Decimal factor = scale;
    Decimal shift = offset;
    const std::optional<int> places = align(&factor, &shift);
    Int128 divisor = 1;
    if (!places || !multiplyByTens(&divisor, *places))
        return std::nullopt;
    return settled({factor.mantissa, shift.mantissa, divisor});
}

// With all raw ends in units of 10^-i and all shown ones in units of 10^-j, the value is
// (low * (rawHigh - rawLow) + (raw * 10^i - rawLow) * (high - low)) / ((rawHigh - rawLow) * 10^j).
std::optional<ValueRatio> ratioOfRange(const DecimalRange &raw, const DecimalRange &shown)
{
    DecimalRange from = raw;
    DecimalRange to = shown;
    const std::optional<int> rawPlaces = align(&from.low, &from.high);
    const std::optional<int> shownPlaces = align(&to.low, &to.high);
    if (!rawPlaces || !shownPlaces)
        return std::nullopt;
    const Int128 width = from.high.mantissa - from.low.mantissa;
    const Int128 height = to.high.mantissa - to.low.mantissa;
    ValueRatio ratio{height, to.low.mantissa, width};
    const bool fits = multiplyByTens(&ratio.factor, *rawPlaces) && multiply(&ratio.offset, width) &&
                      subtractProduct(&ratio.offset, from.low.mantissa, height) &&
                      multiplyByTens(&ratio.divisor, *shownPlaces);
    return fits ? settled(ratio) : std::nullopt;
}

int decimalsOf(const ValueRatio &ratio)
{
    Int128 rest = ratio.divisor;
    const int twos = takeOut(&rest, 2);
    const int fives = takeOut(&rest, 5);
    if (rest == 1 && qMax(twos, fives) <= MOST_DECIMALS)
        return qMax(twos, fives);
    int decimals = 0;
    UInt128 step = magnitude(ratio.factor);
    while (decimals < MOST_DECIMALS && step < static_cast<UInt128>(ratio.divisor)) {
        step *= 10;
        ++decimals;
    }
    return decimals;
}

} // namespace kvt
