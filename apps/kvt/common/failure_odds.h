// Whether one rate of failures is really higher than another.
#ifndef KVT_APPS_KVT_COMMON_FAILURE_ODDS_H
#define KVT_APPS_KVT_COMMON_FAILURE_ODDS_H

#include <QtGlobal>

namespace kvt
{

/// Failures among a number of attempts, not more than that.
struct FailureCount {
    quint64 failures = 0;
    quint64 attempts = 0;
};

/// Returns how likely it is that at least so many of the failures of both fall to `suspect` by
/// chance alone, although both fail equally often: 0 to 1 (Fisher's exact test, one-sided). 1
/// where either has no attempts.
double chanceOfExcess(const FailureCount &suspect, const FailureCount &other);

} // namespace kvt

#endif
