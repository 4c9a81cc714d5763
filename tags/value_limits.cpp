#include "tags/value_limits.h"

namespace kvt
{

namespace
{

bool isBelow(const Decimal &value, const std::optional<Decimal> &limit)
{
    return limit && compare(value, *limit) < 0;
}

bool isAbove(const Decimal &value, const std::optional<Decimal> &limit)
{
    return limit && compare(value, *limit) > 0;
}

/// Returns the next number with `decimals` digits that is not below, or not above, another.
Decimal rounded(const Decimal &number, int decimals, bool up)
{
    if (number.places <= decimals)
        return number;
    Int128 tens = 1;
    multiplyByTens(&tens, number.places - decimals);
    const Division division = divide(number.mantissa, tens);
    return {division.quotient + (up && division.rest != 0 ? 1 : 0), decimals};
}

} // namespace

bool ValueLimits::contains(const Decimal &value) const
{
    return !isBelow(value, min) && !isAbove(value, max);
}

std::optional<Decimal> nearestTaken(const ExactScaling &scaling, const ValueLimits &limits,
                                    const Decimal &value)
{
    const auto shown = [&](Int128 raw) { return Decimal{scaling.shown(raw), scaling.decimals()}; };
    const Decimal wanted = isBelow(value, limits.min)   ? *limits.min
                           : isAbove(value, limits.max) ? *limits.max
                                                        : value;
    const ScaledRaw scaled = scaling.enter(wanted);
    if (scaled.isExact)
        return wanted;
    if (limits.contains(shown(scaled.raw)))
        return shown(scaled.raw);
    // Beyond a limit: the first value on this side of it.
    const bool up = isBelow(shown(scaled.raw), limits.min);
    const Decimal inside = rounded(up ? *limits.min : *limits.max, scaling.decimals(), up);
    std::optional<Int128> raw = scaling.enter(inside).raw;
    if (!limits.contains(shown(*raw)))
        raw = scaling.next(*raw, up);
    return raw && limits.contains(shown(*raw)) ? std::make_optional(shown(*raw)) : std::nullopt;
}

} // namespace kvt
