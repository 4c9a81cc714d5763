// What may be entered for a value, of all that its type and scaling have.
#ifndef KVT_TAGS_VALUE_LIMITS_H
#define KVT_TAGS_VALUE_LIMITS_H

#include "tags/exact_scaling.h"

namespace kvt
{

/// The limits of what may be entered; one that is left out holds nothing back.
struct ValueLimits {
    std::optional<Decimal> min;
    std::optional<Decimal> max;

    bool contains(const Decimal &value) const;
};

/// Returns the value nearest to one that was entered that is within the limits and taken when it
/// is entered itself; none where there is no such value. Any thread.
std::optional<Decimal> nearestTaken(const ExactScaling &scaling, const ValueLimits &limits,
                                    const Decimal &value);

} // namespace kvt

#endif
