#include "apps/kvt/common/failure_odds.h"

#include <algorithm>
#include <cmath>

namespace kvt
{

namespace
{

// std::lgamma leaves the sign in a variable that all threads share.
double logFactorial(double n)
{
    int sign = 0;
    return lgamma_r(n + 1, &sign);
}

double logChoose(quint64 from, quint64 count)
{
    const auto n = static_cast<double>(from);
    const auto k = static_cast<double>(count);
    return logFactorial(n) - logFactorial(k) - logFactorial(n - k);
}

} // namespace

double chanceOfExcess(const FailureCount &suspect, const FailureCount &other)
{
    if (suspect.attempts == 0 || other.attempts == 0)
        return 1;
    const quint64 failures = suspect.failures + other.failures;
    const quint64 attempts = suspect.attempts + other.attempts;
    const quint64 most = std::min(failures, suspect.attempts);
    double chance = 0;
    for (quint64 hit = suspect.failures; hit <= most; ++hit) {
        if (failures - hit > other.attempts)
            continue;
        chance +=
            std::exp(logChoose(suspect.attempts, hit) + logChoose(other.attempts, failures - hit) -
                     logChoose(attempts, failures));
    }
    return std::min(chance, 1.0);
}

} // namespace kvt
