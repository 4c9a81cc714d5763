#include "host/statistics_json.h"

#include <algorithm>

namespace kvt
{

namespace
{

const char *const OUTCOME_NAMES[OUTCOMES] = {"success",       "successNotStored",  "localBadReply",
                                             "localNoReply",  "localWrongLength",  "remoteBadReply",
                                             "remoteNoReply", "remoteWrongLength", "unknown"};

const char *const ATTEMPT_END_NAMES[ATTEMPT_ENDS] = {"replied",   "refused", "noReply",
                                                     "brokenOff", "foreign", "disturbed"};

const char *const WRITE_STATE_NAMES[WRITE_STATES] = {"queued",  "sent",     "acknowledged",
                                                     "refused", "timedOut", "dropped"};

double number(quint64 count)
{
    return static_cast<double>(count);
}

double microsecondsOf(qint64 time_ns)
{
    return static_cast<double>(time_ns) / 1000.0;
}

template <size_t N>
QJsonObject counts(const std::array<quint64, N> &values, const char *const (&names)[N])
{
    QJsonObject object;
    for (size_t i = 0; i < N; ++i)
        object.insert(QLatin1String(names[i]), number(values[i]));
    return object;
}

QJsonObject times(const Histogram &histogram)
{
    return {
        {QStringLiteral("count"), number(histogram.count())},
        {QStringLiteral("min_us"), microsecondsOf(histogram.least_ns())},
        {QStringLiteral("median_us"), microsecondsOf(histogram.quantile_ns(0.5))},
        {QStringLiteral("mean_us"), microsecondsOf(histogram.mean_ns())},
        {QStringLiteral("p99_us"), microsecondsOf(histogram.quantile_ns(0.99))},
        {QStringLiteral("max_us"), microsecondsOf(histogram.greatest_ns())},
    };
}

QJsonObject scanToJson(const Histogram &scan)
{
    QJsonObject object = times(scan);
    object.insert(QStringLiteral("jitter_us"),
                  microsecondsOf(scan.greatest_ns() - scan.least_ns()));
    return object;
}

QJsonObject stationToJson(const StationStatistics &station)
{
    return {
        {QStringLiteral("exchanges"), number(station.exchanges)},
        {QStringLiteral("attempts"), number(station.attempts)},
        {QStringLiteral("retries"), number(station.retries)},
        {QStringLiteral("recoveries"), number(station.recoveries)},
        {QStringLiteral("outcomes"), counts(station.outcomes, OUTCOME_NAMES)},
        {QStringLiteral("refusals"), number(station.failuresAt(AttemptEnd::Refused))},
        {QStringLiteral("attemptEnds"), counts(station.attemptEnds, ATTEMPT_END_NAMES)},
        {QStringLiteral("doubtfulReplies"), number(station.doubtfulReplies)},
        {QStringLiteral("staleBytes"), number(station.staleBytes)},
        {QStringLiteral("lateBytes"), number(station.lateBytes)},
        {QStringLiteral("echoBytes"), number(station.echoBytes)},
        {QStringLiteral("stateChanges"), number(station.stateChanges)},
        {QStringLiteral("replyTime"), times(station.replyTime)},
    };
}

} // namespace

QJsonObject statisticsToJson(const Statistics &statistics, qint64 now_ns, qint64 characterTime_ns)
{
    QJsonObject stations;
    for (auto station = statistics.stations.cbegin(); station != statistics.stations.cend();
         ++station)
        stations.insert(QString::number(station.key()), stationToJson(*station));
    const qint64 elapsed_ns = statistics.started ? now_ns - statistics.startedAt_ns : 0;

    QJsonObject object{
        {QStringLiteral("elapsed_us"), microsecondsOf(elapsed_ns)},
        {QStringLiteral("total"), stationToJson(statistics.total)},
        {QStringLiteral("stations"), stations},
        {QStringLiteral("scan"), scanToJson(statistics.scan.times())},
        {QStringLiteral("writes"), counts(statistics.writes, WRITE_STATE_NAMES)},
        {QStringLiteral("heldBackReadings"), number(statistics.heldBackReadings)},
        {QStringLiteral("queueMismatches"), number(statistics.queueMismatches)},
        {QStringLiteral("lineFailures"), number(statistics.lineFailures)},
        {QStringLiteral("wireBytes"), number(statistics.wireBytes)},
    };
    if (characterTime_ns > 0)
        object.insert(QStringLiteral("utilisation"),
                      statistics.utilisation(now_ns, characterTime_ns));
    return object;
}

} // namespace kvt
