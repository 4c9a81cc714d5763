#include "tags/exact_scaling.h"

namespace kvt
{

namespace
{

// What is shown is below four times as much, so that it can always be entered again.
constexpr Int128 LARGEST_PART = Int128(1) << 122;
constexpr Int128 LARGEST_ENTERED = Int128(1) << 125;

bool isWithin(Int128 number, Int128 limit)
{
    return number < limit && number > -limit;
}

} // namespace

std::optional<ExactScaling> ExactScaling::make(const ValueRatio &ratio, int decimals,
                                               const RawRange &range)
{
    ValueRatio units = ratio;
    if (!multiplyByTens(&units.factor, decimals) || !multiplyByTens(&units.offset, decimals))
        return std::nullopt;
    reduce(&units);
    Int128 lowest = range.lowest;
    Int128 highest = range.highest;
    const bool fits = multiply(&lowest, units.factor) && multiply(&highest, units.factor) &&
                      isWithin(lowest, LARGEST_PART) && isWithin(highest, LARGEST_PART) &&
                      isWithin(units.offset, LARGEST_PART) && isWithin(units.divisor, LARGEST_PART);
    return fits ? std::make_optional(ExactScaling(units, decimals, range)) : std::nullopt;
}

/// True when a value is more than a unit beyond all that can be shown; `*nearest` is then the raw
/// number at that end.
bool ExactScaling::isFarOutside(const Decimal &value, Int128 *nearest) const
{
    const bool rising = ratio_.factor > 0;
    const Int128 bottom = rising ? range_.lowest : range_.highest;
    const Int128 top = rising ? range_.highest : range_.lowest;
    const bool below = compare(value, {shown(bottom) - 1, decimals_}) < 0;
    *nearest = below ? bottom : top;
    return below || compare(value, {shown(top) + 1, decimals_}) > 0;
}

bool ExactScaling::isShown(const Decimal &value, Int128 raw) const
{
    return compare(value, {shown(raw), decimals_}) == 0;
}

/// Returns the raw number nearest to number / divisor, which may lie outside the range.
Int128 ExactScaling::nearestRaw(Int128 number, Int128 divisor, const Decimal &value) const
{
    if (divisor < 0) {
        number = -number;
        divisor = -divisor;
    }
    const Division division = divide(number, divisor);
    const Int128 missing = divisor - division.rest;
    const Int128 above = division.quotient + 1;
    if (division.rest == missing)
        return above <= range_.highest && isShown(value, above) ? above : division.quotient;
    return division.rest < missing ? division.quotient : above;
}

std::optional<Int128> ExactScaling::next(Int128 raw, bool above) const
{
    const Int128 next = above == (ratio_.factor > 0) ? raw + 1 : raw - 1;
    const bool isIn = next >= range_.lowest && next <= range_.highest;
    return isIn ? std::make_optional(next) : std::nullopt;
}

ScaledRaw ExactScaling::enter(const Decimal &value) const
{
    ScaledRaw entered;
    if (isFarOutside(value, &entered.raw))
        return entered;
    // value = number / (10^finer * divisor of the line), all of it whole
    const int finer = qMax(value.places - decimals_, 0);
    Int128 number = value.mantissa;
    Int128 offset = ratio_.offset;
    Int128 divisor = ratio_.factor;
    const bool fits = multiplyByTens(&number, qMax(decimals_ - value.places, 0)) &&
                      multiply(&number, ratio_.divisor) && multiplyByTens(&offset, finer) &&
                      multiplyByTens(&divisor, finer) && isWithin(number, LARGEST_ENTERED) &&
                      isWithin(offset, LARGEST_ENTERED);
    if (!fits) { // more decimals than any value has: the nearest among those that are shown
        Int128 tens = 1;
        multiplyByTens(&tens, finer);
        entered = enter({divideRounded(value.mantissa, tens), decimals_});
        entered.isExact = false;
        return entered;
    }
    number -= offset;
    const Int128 raw = nearestRaw(number, divisor, value);
    entered.raw = qBound(range_.lowest, raw, range_.highest);
    entered.isExact =
        isShown(value, entered.raw) || (entered.raw == raw && raw * divisor == number);
    entered.inRange = entered.isExact || entered.raw == raw;
    return entered;
}

} // namespace kvt
