#include "host/statistics_json.h"

#include "host/verdict.h"

#include <QJsonArray>

namespace kvt
{

namespace
{

const char *const ATTEMPT_END_NAMES[ATTEMPT_ENDS] = {"replied",    "refused", "no_reply",
                                                     "broken_off", "foreign", "disturbed"};

double number(quint64 count)
{
    return static_cast<double>(count);
}

double millisecondsOf(qint64 time_ns)
{
    return static_cast<double>(time_ns) / 1e6;
}

QJsonObject outcomesToJson(const std::array<quint64, VERDICTS> &counts)
{
    QJsonObject object;
    for (size_t i = 0; i < counts.size(); ++i)
        object.insert(jsonWord(verdictText(static_cast<Verdict>(i))), number(counts.at(i)));
    return object;
}

QJsonObject attemptEndsToJson(const StationStatistics &station)
{
    QJsonObject object;
    for (size_t i = 0; i < station.attemptEnds.size(); ++i)
        object.insert(QLatin1String(ATTEMPT_END_NAMES[i]), number(station.attemptEnds.at(i)));
    return object;
}

QJsonObject writesToJson(const Statistics &statistics)
{
    QJsonObject object;
    for (size_t i = 0; i < statistics.writes.size(); ++i)
        object.insert(jsonWord(writeStateName(static_cast<WriteState>(i))),
                      number(statistics.writes.at(i)));
    return object;
}

QJsonObject scanTimesToJson(const Histogram &scan)
{
    QJsonObject object = timesToJson(scan);
    object.insert(QStringLiteral("jitter_ms"),
                  millisecondsOf(scan.greatest_ns() - scan.least_ns()));
    return object;
}

QJsonObject countsToJson(const StationStatistics &station)
{
    const std::array<quint64, VERDICTS> outcomes = verdictCounts(station);
    const quint64 ok = outcomes.at(static_cast<size_t>(Verdict::Ok));
    return {
        {QStringLiteral("exchanges"), number(station.exchanges)},
        {QStringLiteral("ok"), number(ok)},
        {QStringLiteral("failed"), number(station.exchanges - ok)},
        {QStringLiteral("outcomes"), outcomesToJson(outcomes)},
        {QStringLiteral("attempts"), number(station.attempts)},
        {QStringLiteral("attempt_ends"), attemptEndsToJson(station)},
        {QStringLiteral("retries"), number(station.retries)},
        {QStringLiteral("recoveries"), number(station.recoveries)},
        {QStringLiteral("doubtful_replies"), number(station.doubtfulReplies)},
        {QStringLiteral("doubtful_taken"), number(station.doubtfulTaken)},
        {QStringLiteral("stale_bytes"), number(station.staleBytes)},
        {QStringLiteral("late_bytes"), number(station.lateBytes)},
        {QStringLiteral("echo_bytes"), number(station.echoBytes)},
        {QStringLiteral("state_changes"), number(station.stateChanges)},
        {QStringLiteral("reply_time"), timesToJson(station.replyTime)},
    };
}

QJsonArray classesToJson(const Statistics &statistics)
{
    QJsonArray classes;
    for (const ClassPace &pace : statistics.classes) {
        QJsonObject object{{QStringLiteral("interval_ms"), millisecondsOf(pace.interval_ns())},
                           {QStringLiteral("reads"), pace.entries()},
                           {QStringLiteral("count"), number(pace.count())},
                           {QStringLiteral("late"), pace.isLate()}};
        if (pace.latest_ns() > 0)
            object.insert(QStringLiteral("latest_ms"), millisecondsOf(pace.latest_ns()));
        if (pace.count() > 0) {
            object.insert(QStringLiteral("mean_ms"), millisecondsOf(pace.mean_ns()));
            object.insert(QStringLiteral("max_ms"), millisecondsOf(pace.longest_ns()));
        }
        classes.append(object);
    }
    return classes;
}

QJsonArray stationsToJson(const Statistics &statistics)
{
    QJsonArray stations;
    for (auto station = statistics.stations.cbegin(); station != statistics.stations.cend();
         ++station) {
        QJsonObject object = countsToJson(*station);
        object.insert(QStringLiteral("station"), station.key());
        stations.append(object);
    }
    return stations;
}

} // namespace

QString jsonWord(QString text)
{
    return text.replace(QLatin1Char(' '), QLatin1Char('_'));
}

QJsonObject timesToJson(const Histogram &times)
{
    QJsonObject object{{QStringLiteral("count"), number(times.count())}};
    if (times.count() == 0)
        return object;
    object.insert(QStringLiteral("min_ms"), millisecondsOf(times.least_ns()));
    object.insert(QStringLiteral("median_ms"), millisecondsOf(times.quantile_ns(0.5)));
    object.insert(QStringLiteral("mean_ms"), millisecondsOf(times.mean_ns()));
    object.insert(QStringLiteral("p99_ms"), millisecondsOf(times.quantile_ns(0.99)));
    object.insert(QStringLiteral("max_ms"), millisecondsOf(times.greatest_ns()));
    return object;
}

QJsonObject statisticsToJson(const Statistics &statistics, qint64 now_ns, qint64 characterTime_ns)
{
    const qint64 elapsed_ns = statistics.started ? now_ns - statistics.startedAt_ns : 0;
    QJsonObject object{
        {QStringLiteral("elapsed_ms"), millisecondsOf(elapsed_ns)},
        {QStringLiteral("total"), countsToJson(statistics.total)},
        {QStringLiteral("stations"), stationsToJson(statistics)},
        {QStringLiteral("scan_time"), scanTimesToJson(statistics.scan.times())},
        {QStringLiteral("classes"), classesToJson(statistics)},
        {QStringLiteral("writes"), writesToJson(statistics)},
        {QStringLiteral("held_back_readings"), number(statistics.heldBackReadings)},
        {QStringLiteral("queue_mismatches"), number(statistics.queueMismatches)},
        {QStringLiteral("line_failures"), number(statistics.lineFailures)},
        {QStringLiteral("checkpoints"), number(statistics.checkpoints)},
        {QStringLiteral("times_out_of_step"), number(statistics.timesOutOfStep)},
        {QStringLiteral("wire_bytes"), number(statistics.wireBytes)},
    };
    if (characterTime_ns > 0)
        object.insert(QStringLiteral("utilisation_percent"),
                      100 * statistics.utilisation(now_ns, characterTime_ns));
    return object;
}

} // namespace kvt
