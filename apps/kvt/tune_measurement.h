// Measures a line with one setting.
#ifndef KVT_APPS_KVT_TUNE_MEASUREMENT_H
#define KVT_APPS_KVT_TUNE_MEASUREMENT_H

#include "apps/kvt/line_options.h"

#include <functional>

namespace kvt
{

/// What a measurement needs.
struct MeasurementSettings {
    LineOptions line;
    QVector<Tag> tags;
    int timeout_ms = 1000;
    int quiet_ms = 0;   ///< silence after a failed attempt; 0: as long as the time-out
    int exchanges = 50; ///< with each station
    std::function<void(int done, int all)> progress; ///< called in between; may be empty
    bool giveUpStations = true; ///< leave a station alone after three failures in a row
};

/// How a measurement ended, and what it counted.
struct Measurement {
    enum class End {
        Complete,
        Interrupted, ///< by Ctrl-C
        NoDriver,    ///< a message has been printed
        NoLine       ///< `lineError` says why
    };

    End end = End::Complete;
    QString lineError;
    Statistics statistics;
};

/// Returns how many exchanges a measurement has at least, with all stations.
int exchangesOf(const MeasurementSettings &settings);

/// Polls the tags, one attempt at each request, until every station has had its exchanges. Needs
/// an event loop that is not running, and runs it. One at a time.
Measurement measure(const MeasurementSettings &settings);

} // namespace kvt

#endif
