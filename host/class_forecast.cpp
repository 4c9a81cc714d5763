#include "host/class_forecast.h"

#include "host/scan_plan.h"

#include <algorithm>
#include <cmath>

namespace kvt
{

namespace
{

double asDouble(qint64 time_ns)
{
    return static_cast<double>(time_ns);
}

} // namespace

LineForecast forecastClasses(const QVector<ReadLoad> &classes, const ReadLoad &cyclic,
                             double pauseShare)
{
    LineForecast forecast;
    double perNs = 0; // requests of the classes in a nanosecond, if all intervals are kept
    for (const ReadLoad &one : classes) {
        perNs += one.reads / asDouble(one.interval_ns);
        forecast.load += asDouble(one.round_ns) * (1 + pauseShare) / asDouble(one.interval_ns);
    }
    const double cyclicRound_ns = asDouble(cyclic.round_ns) * (1 + pauseShare);
    // Of a busy line every sixth request is a cyclic one.
    const double cyclicNeed = cyclic.reads > 0 ? perNs / BURST * cyclicRound_ns / cyclic.reads : 0;
    forecast.stretch = std::max(1.0, forecast.load + cyclicNeed);
    for (const ReadLoad &one : classes) {
        ClassForecast result;
        result.interval_ns = one.interval_ns;
        result.reads = one.reads;
        result.expected_ns = std::llround(asDouble(one.interval_ns) * forecast.stretch);
        result.share = asDouble(one.round_ns) * (1 + pauseShare) / asDouble(result.expected_ns);
        forecast.classes.append(result);
    }
    if (cyclic.reads > 0)
        forecast.cyclic_ns =
            std::llround(forecast.isOverloaded() ? cyclic.reads * BURST * forecast.stretch / perNs
                                                 : cyclicRound_ns / (1 - forecast.load));
    return forecast;
}

} // namespace kvt
