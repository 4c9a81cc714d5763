// What kvt tune finds out and prints.
#ifndef KVT_APPS_KVT_TUNE_REPORT_H
#define KVT_APPS_KVT_TUNE_REPORT_H

#include "host/statistics.h"

#include <QJsonObject>
#include <QVector>

namespace kvt
{

/// One setting and what came of it.
struct TuneTrial {
    int timeout_ms = 0;
    quint64 attempts = 0;
    quint64 failures = 0;
    qint64 scan_ns = 0; ///< mean; 0 when there was no whole scan

    double errorRate() const;
};

/// What has been measured, and what follows.
struct TuneReport {
    int margin_percent = 50;
    Statistics first; ///< of the measurement with the long time-out
    QVector<TuneTrial> trials;
    int quiet_ms = 0;            ///< silence after a failure in the trials
    QVector<int> silentStations; ///< without a single good reply
    bool complete = false;       ///< nothing cut the measurement short
    int timeout_ms = 0;          ///< recommended; 0: nothing can be said
    int retries = 0;             ///< recommended
};

/// Longest reply time of all stations, in nanoseconds.
qint64 slowestReply_ns(const Statistics &statistics);

/// The time-outs that are worth a trial for replies that take so long, rising, in milliseconds.
/// The last but one is the slowest reply with the margin.
QVector<int> timeoutsToTry_ms(qint64 slowestReply_ns, int margin_percent);

/// Fills in what is recommended: of the trials from the slowest reply with the margin on, the
/// shortest that did not fail more often than the best of them by more than chance; and as many
/// retries as make a final failure rarer than one in a million at the error rate of that trial, 1
/// to 5. Nothing follows from part of a measurement.
void recommend(TuneReport *report);

QString tuneText(const TuneReport &report);

QJsonObject tuneToJson(const TuneReport &report);

} // namespace kvt

#endif
