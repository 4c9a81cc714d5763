// How often the classes of a list will be read, and how busy the line is with them.
#ifndef KVT_HOST_CLASS_FORECAST_H
#define KVT_HOST_CLASS_FORECAST_H

#include <QVector>

namespace kvt
{

/// What is read of one kind: at an interval, or as often as the line allows.
struct ReadLoad {
    qint64 interval_ns = 0; ///< 0: as often as the line allows
    int reads = 0;          ///< requests of one round
    qint64 round_ns = 0;    ///< the line's time for one round of them
};

/// The forecast of one class; times in nanoseconds.
struct ClassForecast {
    qint64 interval_ns = 0; ///< as the list has it
    int reads = 0;          ///< requests
    qint64 expected_ns = 0; ///< from one reading of a request to its next
    double share = 0;       ///< of the line's time, 0 to 1
};

/// The forecast of a line. With requests that are read as often as the line allows it is always
/// busy; the driver serves one of them behind every five others at least.
struct LineForecast {
    QVector<ClassForecast> classes; ///< as in the loads
    double load = 0;    ///< of the line's time that keeping all intervals takes; above 1: too much
    double stretch = 1; ///< factor by which all intervals become longer; 1: they are kept
    qint64 cyclic_ns = 0; ///< one round of the requests without interval; 0: there are none
    bool isOverloaded() const { return stretch > 1; }
};

/// Forecasts classes, and the requests without interval beside them. `pauseShare` is the part of
/// the line's time, 0 to 1, that listening pauses add to all that it does.
LineForecast forecastClasses(const QVector<ReadLoad> &classes, const ReadLoad &cyclic,
                             double pauseShare);

} // namespace kvt

#endif
