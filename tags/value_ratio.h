// How raw values become engineering values: a straight line, kept as whole numbers.
#ifndef KVT_TAGS_VALUE_RATIO_H
#define KVT_TAGS_VALUE_RATIO_H

#include "tags/decimal.h"

#include <optional>

namespace kvt
{

/// An engineering value is (raw * factor + offset) / divisor, exactly. In lowest terms; `divisor`
/// is above 0, `factor` is not 0.
struct ValueRatio {
    Int128 factor = 1;
    Int128 offset = 0;
    Int128 divisor = 1;
};

/// Most digits behind the point that a value is shown with.
constexpr int MOST_DECIMALS = 15;

/// Returns the line raw * scale + offset; none when `scale` is 0 or the numbers have too many
/// digits.
std::optional<ValueRatio> ratioOfScale(const Decimal &scale, const Decimal &offset);

/// Ends of a range.
struct DecimalRange {
    Decimal low;
    Decimal high;
};

/// Returns the line through two points, raw.low to shown.low and raw.high to shown.high; none when
/// either range is empty or the numbers have too many digits.
std::optional<ValueRatio> ratioOfRange(const DecimalRange &raw, const DecimalRange &shown);

/// Divides the three numbers by what they have in common.
void reduce(ValueRatio *ratio);

/// Returns the fewest decimals with which every value is shown exactly. Where no number of them
/// does, or more than 15, the fewest with which no two raw values have one text; at most 15.
int decimalsOf(const ValueRatio &ratio);

} // namespace kvt

#endif
