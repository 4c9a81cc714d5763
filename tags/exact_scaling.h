// Engineering values of whole raw numbers, reckoned without rounding until they are shown.
#ifndef KVT_TAGS_EXACT_SCALING_H
#define KVT_TAGS_EXACT_SCALING_H

#include "tags/raw_number.h"
#include "tags/value_ratio.h"

namespace kvt
{

/// The raw number that an entered value stands for.
struct ScaledRaw {
    Int128 raw = 0;       ///< the nearest in range
    bool isExact = false; ///< the value is that of `raw`, or is what is shown for it
    bool inRange = false; ///< the value lies between those of the lowest and the highest raw number
};

/// Converts the raw numbers of a type to what is shown, and back. Any thread.
class ExactScaling
{
public:
    /// Prepares a line for raw numbers of a range; values are shown with `decimals` (0 to 15). None
    /// when the numbers are too large to be reckoned with exactly.
    static std::optional<ExactScaling> make(const ValueRatio &ratio, int decimals,
                                            const RawRange &range);

    /// Returns what is shown for a raw number in the range, in units of the last decimal; halves
    /// are rounded away from 0. Nothing is allocated.
    Int128 shown(Int128 raw) const
    {
        const Int128 number = raw * ratio_.factor + ratio_.offset;
        return ratio_.divisor == 1 ? number : divideRounded(number, ratio_.divisor);
    }

    /// Returns the raw number that is nearest to an entered value. Of two as near, the one that is
    /// shown as the value.
    ScaledRaw enter(const Decimal &value) const;

    /// Returns the raw number in range whose value is the next above, or below, that of another.
    std::optional<Int128> next(Int128 raw, bool above) const;

    int decimals() const { return decimals_; }

    /// True when no two raw numbers that follow each other are shown alike.
    bool tellsApart() const { return magnitude(ratio_.factor) >= magnitude(ratio_.divisor); }

private:
    ExactScaling(const ValueRatio &ratio, int decimals, const RawRange &range)
        : ratio_(ratio), decimals_(decimals), range_(range)
    {
    }

    bool isFarOutside(const Decimal &value, Int128 *nearest) const;
    Int128 nearestRaw(Int128 number, Int128 divisor, const Decimal &value) const;
    bool isShown(const Decimal &value, Int128 raw) const;

    ValueRatio ratio_; // to units of the last decimal
    int decimals_;
    RawRange range_;
};

} // namespace kvt

#endif
