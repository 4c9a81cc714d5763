#include "apps/kvt/statistics_text.h"

#include "apps/kvt/outcome_text.h"

#include <QStringList>

#include <array>
#include <utility>

namespace kvt
{

namespace
{

// Of the driver's classes, the two for a request to this PLC and to another one.
quint64 sumOf(const std::array<quint64, OUTCOMES> &counts, Outcome local, Outcome remote)
{
    return counts.at(static_cast<size_t>(local)) + counts.at(static_cast<size_t>(remote));
}

// Each failure under the word that it has as a tag's result; the driver, which has fewer classes,
// judges only what was handed to it.
QString failuresText(const StationStatistics &station)
{
    const auto &judged = station.failures.at(static_cast<size_t>(AttemptEnd::Replied));
    const quint64 empty = sumOf(judged, Outcome::LocalNoReply, Outcome::RemoteNoReply);
    const quint64 wrongLength =
        sumOf(judged, Outcome::LocalWrongLength, Outcome::RemoteWrongLength);
    const std::pair<const char *, quint64> kinds[] = {
        {"no reply", station.failuresAt(AttemptEnd::NoReply) + empty},
        {"refused", station.failuresAt(AttemptEnd::Refused)},
        {"bad reply", station.failuresAt(AttemptEnd::Replied) - empty - wrongLength},
        {"wrong length", wrongLength},
        {"broken off", station.failuresAt(AttemptEnd::BrokenOff)},
        {"reply of another station", station.failuresAt(AttemptEnd::Foreign)},
        {"line disturbed", station.failuresAt(AttemptEnd::Disturbed)},
    };
    QStringList texts;
    for (const auto &[name, count] : kinds)
        if (count > 0)
            texts.append(QStringLiteral("%1 %2").arg(QLatin1String(name)).arg(count));
    return QStringLiteral(" (%1)").arg(texts.join(QStringLiteral(", ")));
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
    text += QStringLiteral(", attempts repeated %1").arg(station.retries);
    if (station.doubtfulReplies > 0)
        text += QStringLiteral(", doubtful replies %1").arg(station.doubtfulReplies);
    return text;
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
