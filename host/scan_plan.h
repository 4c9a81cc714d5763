// Predicts how fast a tag list can be polled, from nothing but the list and the line's figures.
#ifndef KVT_HOST_SCAN_PLAN_H
#define KVT_HOST_SCAN_PLAN_H

#include "host/class_forecast.h"
#include "host/engine_settings.h"
#include "host/station_supervisor.h"
#include "tags/tag.h"

#include <QVector>

namespace kvt
{

/// What a prediction is made from; times in nanoseconds, not negative.
struct PlanSettings {
    EngineSettings engine;    ///< character time, time-outs and silences
    qint64 turnaround_ns = 0; ///< from a request's last byte to its reply's first
    qint64 overhead_ns = 0;   ///< what host and interface add to each exchange
    int retryLimit = 2;       ///< extra attempts for each request
    int writesAhead = 0;      ///< writes that wait in front of the operator's
    SupervisorSettings supervisor;
};

/// One station's part in the plan; times in nanoseconds.
struct StationPlan {
    int station = 0;
    int reads = 0;                   ///< entries of the read list
    qint64 share_ns = 0;             ///< to read all of them once
    qint64 deathOnce_ns = 0;         ///< lost while it dies, until it is switched off
    qint64 deathProbe_ns = 0;        ///< lost at each probe from then on
    qint64 deathUnsupervised_ns = 0; ///< added to every scan if it were not switched off
};

/// The prediction; times in nanoseconds.
struct ScanPlan {
    int reads = 0;             ///< requests of the list
    qint64 bytes = 0;          ///< of them all, both ways
    qint64 scan_ns = 0;        ///< one round of those without interval, with those that have one
                               ///< beside them and nothing else to do; 0: all have one
    LineForecast classes;      ///< those that have one
    qint64 longestRead_ns = 0; ///< longest single exchange of the scan
    qint64 write_ns = 0;       ///< exchange of the longest write; 0 when no tag can be written
    qint64 writeAlone_ns = 0;  ///< longest time of a write while there are only cyclic reads
    qint64 writeBusy_ns = 0;   ///< the same behind `writesAhead` others, with every list busy
    QVector<StationPlan> stations; ///< by rising number
};

/// Number of requests of one kind that the driver serves before it goes on to the next.
constexpr int BURST = 5;

/// Plans the poll of a tag list without errors. All stations answer, at once and rightly, but for
/// the one that is dead in `StationPlan`.
ScanPlan planScan(const QVector<Tag> &tags, const PlanSettings &settings);

} // namespace kvt

#endif
