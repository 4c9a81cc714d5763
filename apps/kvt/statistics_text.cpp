#include "apps/kvt/statistics_text.h"

#include "apps/kvt/common/counted.h"
#include "apps/kvt/outcome_text.h"
#include "host/verdict.h"
#include "tags/duration_text.h"

#include <QStringList>

#include <array>

namespace kvt
{

namespace
{

// Each failure under the word that it has as a tag's result.
QString failuresText(const std::array<quint64, VERDICTS> &counts)
{
    QStringList texts;
    for (size_t i = 0; i < counts.size(); ++i)
        if (static_cast<Verdict>(i) != Verdict::Ok && counts.at(i) > 0)
            texts.append(QStringLiteral("%1 %2")
                             .arg(verdictText(static_cast<Verdict>(i)))
                             .arg(counts.at(i)));
    return QStringLiteral(" (%1)").arg(texts.join(QStringLiteral(", ")));
}

QString countsText(const StationStatistics &station)
{
    const std::array<quint64, VERDICTS> counts = verdictCounts(station);
    const quint64 ok = counts.at(static_cast<size_t>(Verdict::Ok));
    QString text = QStringLiteral("exchanges %1, ok %2, failed %3")
                       .arg(station.exchanges)
                       .arg(ok)
                       .arg(station.exchanges - ok);
    if (station.exchanges != ok)
        text += failuresText(counts);
    text += QStringLiteral(", retries %1").arg(station.retries);
    if (station.doubtfulReplies > 0)
        text += QStringLiteral(", doubtful replies %1").arg(station.doubtfulReplies);
    return text;
}

QString paceText(const ClassPace &pace)
{
    const QString text = QStringLiteral("%1 class: ").arg(durationText(pace.interval_ns())) +
                         counted(pace.entries(), "request", "requests");
    if (pace.count() == 0)
        return text + QStringLiteral(", none read twice yet");
    return text + QStringLiteral(", read every %1 on average, at the longest after %2%3")
                      .arg(timeText(pace.mean_ns()), timeText(pace.longest_ns()),
                           pace.isLate() ? QStringLiteral(", late at the end") : QString());
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
    for (const ClassPace &pace : statistics.classes)
        lines.append(paceText(pace));
    if (characterTime_ns > 0)
        lines.append(QStringLiteral("line in use: %1 %")
                         .arg(100 * statistics.utilisation(now_ns, characterTime_ns), 0, 'f', 1));
    if (statistics.timesOutOfStep > 0)
        lines.append(QStringLiteral("out of step: ") +
                     counted(static_cast<qint64>(statistics.timesOutOfStep), "time", "times"));
    if (statistics.lineFailures > 0)
        lines.append(QStringLiteral("line failures: %1").arg(statistics.lineFailures));
    for (auto i = statistics.stations.cbegin(); i != statistics.stations.cend(); ++i)
        lines.append(QStringLiteral("station %1: %2").arg(i.key()).arg(countsText(*i)));
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

} // namespace kvt
