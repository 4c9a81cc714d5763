#include "apps/kvt/tune_report.h"

#include "apps/kvt/common/failure_odds.h"
#include "apps/kvt/outcome_text.h"
#include "apps/kvt/wall_clock.h"
#include "host/statistics_json.h"

#include <QJsonArray>

#include <algorithm>
#include <cmath>

namespace kvt
{

namespace
{

constexpr double ACCEPTED_FAILURE_RATE = 1e-6;
constexpr int MOST_RETRIES = 5;
constexpr double SIGNIFICANCE = 0.05; // what is less likely is no chance

int wholeMilliseconds(double time_ns)
{
    return std::max(1, static_cast<int>(std::ceil(time_ns / 1e6)));
}

double withMargin(qint64 time_ns, int margin_percent)
{
    return static_cast<double>(time_ns) * (1.0 + margin_percent / 100.0);
}

QJsonObject stationToJson(int number, const StationStatistics &station)
{
    return {{QStringLiteral("station"), number},
            {QStringLiteral("attempts"), static_cast<double>(station.attempts)},
            {QStringLiteral("reply_time"), timesToJson(station.replyTime)}};
}

QJsonObject trialToJson(const TuneTrial &trial)
{
    return {{QStringLiteral("timeout_ms"), trial.timeout_ms},
            {QStringLiteral("attempts"), static_cast<double>(trial.attempts)},
            {QStringLiteral("failed"), static_cast<double>(trial.failures)},
            {QStringLiteral("failed_percent"), 100 * trial.errorRate()},
            {QStringLiteral("scan_ms"), millisecondsOf(trial.scan_ns)}};
}

QJsonObject summaryToJson(const TuneReport &report)
{
    QJsonObject object{{QStringLiteral("complete"), report.complete}};
    if (report.timeout_ms > 0)
        object.insert(QStringLiteral("recommended"),
                      QJsonObject{{QStringLiteral("timeout_ms"), report.timeout_ms},
                                  {QStringLiteral("retries"), report.retries},
                                  {QStringLiteral("asked_margin_percent"), report.margin_percent},
                                  {QStringLiteral("slowest_reply_ms"),
                                   millisecondsOf(slowestReply_ns(report.first))}});
    return object;
}

// "-" where no reply was timed.
QString timeOrNone(const Histogram &times, qint64 time_ns)
{
    return times.count() > 0 ? timeText(time_ns) : QStringLiteral("-");
}

QString stationText(int number, const StationStatistics &station)
{
    const Histogram &times = station.replyTime;
    return QStringLiteral("%1 %2 %3 %4 %5 %6 %7\n")
        .arg(number, 7)
        .arg(station.attempts, 8)
        .arg(times.count(), 7)
        .arg(timeOrNone(times, times.least_ns()), 10)
        .arg(timeOrNone(times, times.quantile_ns(0.5)), 10)
        .arg(timeOrNone(times, times.quantile_ns(0.99)), 10)
        .arg(timeOrNone(times, times.greatest_ns()), 10);
}

bool isSilent(const StationStatistics &station)
{
    return station.attemptEnds.at(static_cast<size_t>(AttemptEnd::NoReply)) == station.attempts;
}

QString stationsText(const TuneReport &report)
{
    QString text =
        QStringLiteral("station attempts replies        min     median    99 %        max\n");
    for (auto station = report.first.stations.begin(); station != report.first.stations.end();
         ++station)
        text += stationText(station.key(), *station);
    for (const int station : report.silentStations)
        text += QStringLiteral("station %1 %2\n")
                    .arg(station)
                    .arg(isSilent(report.first.stations.value(station))
                             ? QStringLiteral("does not answer")
                             : QStringLiteral("gives no good reply"));
    return text;
}

QString trialsText(const TuneReport &report)
{
    if (report.trials.isEmpty())
        return QString();
    QString text = QStringLiteral("\ntime-out  attempts  failed   rate        scan\n");
    for (const TuneTrial &trial : report.trials)
        text += QStringLiteral("%1 ms %2 %3 %4 % %5\n")
                    .arg(trial.timeout_ms, 5)
                    .arg(trial.attempts, 9)
                    .arg(trial.failures, 7)
                    .arg(100 * trial.errorRate(), 6, 'f', 2)
                    .arg(trial.scan_ns > 0 ? timeText(trial.scan_ns) : QStringLiteral("-"), 11);
    const bool failed = std::any_of(report.trials.begin(), report.trials.end(),
                                    [](const TuneTrial &trial) { return trial.failures > 0; });
    if (failed)
        text += QStringLiteral("after each failure the line was left alone for %1 ms, which the "
                               "scan contains\n")
                    .arg(report.quiet_ms);
    return text;
}

FailureCount countOf(const TuneTrial &trial)
{
    return {trial.failures, trial.attempts};
}

// Of the trials from `least_ms` on the one with the lowest rate, or the shortest whose failures may
// be as few but for chance. Null when there is none that succeeded at all.
const TuneTrial *shortestOfTheBest(const QVector<TuneTrial> &trials, int least_ms)
{
    QVector<const TuneTrial *> fit;
    for (const TuneTrial &trial : trials)
        if (trial.timeout_ms >= least_ms && trial.failures < trial.attempts)
            fit.append(&trial);
    if (fit.isEmpty())
        return nullptr;
    const TuneTrial *best =
        *std::min_element(fit.begin(), fit.end(), [](const TuneTrial *one, const TuneTrial *other) {
            return one->errorRate() < other->errorRate();
        });
    return *std::find_if(fit.begin(), fit.end(), [best](const TuneTrial *trial) {
        return chanceOfExcess(countOf(*trial), countOf(*best)) >= SIGNIFICANCE;
    });
}

} // namespace

double TuneTrial::errorRate() const
{
    return attempts == 0 ? 0 : static_cast<double>(failures) / static_cast<double>(attempts);
}

qint64 slowestReply_ns(const Statistics &statistics)
{
    return statistics.total.replyTime.greatest_ns();
}

QVector<int> timeoutsToTry_ms(qint64 slowestReply_ns, int margin_percent)
{
    const auto slowest = static_cast<double>(slowestReply_ns);
    const double wanted = withMargin(slowestReply_ns, margin_percent);
    QVector<int> timeouts;
    for (const double time_ns :
         {0.25 * slowest, 0.5 * slowest, 0.75 * slowest, slowest, wanted, 2 * wanted})
        timeouts.append(wholeMilliseconds(time_ns));
    std::sort(timeouts.begin(), timeouts.end());
    timeouts.erase(std::unique(timeouts.begin(), timeouts.end()), timeouts.end());
    return timeouts;
}

void recommend(TuneReport *report)
{
    const qint64 slowest_ns = slowestReply_ns(report->first);
    if (slowest_ns == 0 || !report->complete)
        return;
    report->timeout_ms = wholeMilliseconds(withMargin(slowest_ns, report->margin_percent));
    const TuneTrial *chosen = shortestOfTheBest(report->trials, report->timeout_ms);
    const double rate = chosen != nullptr ? chosen->errorRate() : 1;
    if (chosen != nullptr)
        report->timeout_ms = chosen->timeout_ms;
    report->retries = 1;
    while (report->retries < MOST_RETRIES &&
           std::pow(rate, report->retries + 1) > ACCEPTED_FAILURE_RATE)
        ++report->retries;
}

QString tuneText(const TuneReport &report)
{
    const QString text = stationsText(report) + trialsText(report);
    if (!report.complete)
        return text + QStringLiteral("\ncut short: nothing is recommended from a part of the "
                                     "measurement\n");
    if (report.timeout_ms == 0)
        return text + QStringLiteral("\nnothing can be recommended: no station answered\n");
    const double slowest_ms = millisecondsOf(slowestReply_ns(report.first));
    const double margin = 100 * (report.timeout_ms - slowest_ms) / slowest_ms;
    return text +
           QStringLiteral("\nrecommended: --timeout %1 --retries %2 (slowest reply %3 ms, so a "
                          "margin of %4 %; the fewest retries, 1 to 5, with which under one "
                          "request in a million fails)\n")
               .arg(report.timeout_ms)
               .arg(report.retries)
               .arg(slowest_ms, 0, 'f', 1)
               .arg(margin, 0, 'f', 0);
}

QJsonObject tuneToJson(const TuneReport &report)
{
    QJsonArray stations;
    for (auto station = report.first.stations.begin(); station != report.first.stations.end();
         ++station)
        stations.append(stationToJson(station.key(), *station));
    QJsonArray trials;
    for (const TuneTrial &trial : report.trials)
        trials.append(trialToJson(trial));
    QJsonArray silent;
    for (const int station : report.silentStations)
        silent.append(station);
    return {{QStringLiteral("time"), isoNow()},
            {QStringLiteral("stations"), stations},
            {QStringLiteral("silent_stations"), silent},
            {QStringLiteral("trials"), trials},
            {QStringLiteral("summary"), summaryToJson(report)}};
}

} // namespace kvt
