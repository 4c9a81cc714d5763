#include "apps/kvt/statistics_text.h"

#include "apps/kvt/outcome_text.h"

#include <QStringList>

namespace kvt
{

namespace
{

quint64 outcomes(const StationStatistics &station, Outcome local, Outcome remote)
{
    return station.outcomes.at(static_cast<size_t>(local)) +
           station.outcomes.at(static_cast<size_t>(remote));
}

QString countsText(const StationStatistics &station)
{
    const quint64 good = outcomes(station, Outcome::Success, Outcome::SuccessNotStored);
    QString text = QStringLiteral("exchanges %1, good %2, failed %3")
                       .arg(station.exchanges)
                       .arg(good)
                       .arg(station.exchanges - good);
    if (station.exchanges != good)
        text += QStringLiteral(" (no reply %1, bad reply %2, wrong length %3)")
                    .arg(outcomes(station, Outcome::LocalNoReply, Outcome::RemoteNoReply))
                    .arg(outcomes(station, Outcome::LocalBadReply, Outcome::RemoteBadReply))
                    .arg(outcomes(station, Outcome::LocalWrongLength, Outcome::RemoteWrongLength));
    return text + QStringLiteral(", attempts repeated %1").arg(station.retries);
}

QString timesText(const Histogram &times)
{
    if (times.count() == 0)
        return QStringLiteral("none measured");
    return QStringLiteral("median %1, 99 % within %2, longest %3")
        .arg(timeText(times.quantile_ns(0.5)), timeText(times.quantile_ns(0.99)),
             timeText(times.greatest_ns()));
}

} // namespace

QString statisticsText(const Statistics &statistics, qint64 now_ns, qint64 characterTime_ns)
{
    QStringList lines = {
        countsText(statistics.total),
        QStringLiteral("reply time: ") + timesText(statistics.total.replyTime),
        QStringLiteral("scan time: ") + timesText(statistics.scan.times()),
    };
    if (characterTime_ns > 0)
        lines.append(QStringLiteral("line in use: %1 %")
                         .arg(100 * statistics.utilisation(now_ns, characterTime_ns), 0, 'f', 1));
    if (statistics.lineFailures > 0)
        lines.append(QStringLiteral("line failures: %1").arg(statistics.lineFailures));
    for (auto i = statistics.stations.cbegin(); i != statistics.stations.cend(); ++i)
        lines.append(QStringLiteral("station %1: %2").arg(i.key()).arg(countsText(*i)));
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

} // namespace kvt
