#include "apps/kvt/statistics_text.h"

#include "apps/kvt/outcome_text.h"

#include <QStringList>

#include <array>

namespace kvt
{

namespace
{

using Counts = std::array<quint64, OUTCOMES>;

// Of the driver's classes, the two for a request to this PLC and to another one.
quint64 sumOf(const Counts &counts, Outcome local, Outcome remote)
{
    return counts.at(static_cast<size_t>(local)) + counts.at(static_cast<size_t>(remote));
}

// The driver sees a refusal as a bad reply or one of the wrong length; here it is neither.
QString failuresText(const StationStatistics &station)
{
    const auto unrefused = [&](Outcome local, Outcome remote) {
        return sumOf(station.outcomes, local, remote) - sumOf(station.refused, local, remote);
    };
    return QStringLiteral(" (no reply %1, refused %2, bad reply %3, wrong length %4)")
        .arg(unrefused(Outcome::LocalNoReply, Outcome::RemoteNoReply))
        .arg(station.refusals())
        .arg(unrefused(Outcome::LocalBadReply, Outcome::RemoteBadReply))
        .arg(unrefused(Outcome::LocalWrongLength, Outcome::RemoteWrongLength));
}

QString countsText(const StationStatistics &station)
{
    const quint64 good = sumOf(station.outcomes, Outcome::Success, Outcome::SuccessNotStored);
    QString text = QStringLiteral("exchanges %1, good %2, failed %3")
                       .arg(station.exchanges)
                       .arg(good)
                       .arg(station.exchanges - good);
    if (station.exchanges != good)
        text += failuresText(station);
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
