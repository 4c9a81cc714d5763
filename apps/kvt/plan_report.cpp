#include "apps/kvt/plan_report.h"

#include "apps/kvt/character_format.h"
#include "apps/kvt/common/counted.h"
#include "apps/kvt/outcome_text.h"
#include "tags/duration_text.h"

namespace kvt
{

namespace
{

// The lowest speed at which the scan is fast enough; 0 when none is.
int sufficientSpeed(const PlanReport &report)
{
    for (auto speed = report.scanAt_ns.begin(); speed != report.scanAt_ns.end(); ++speed)
        if (*speed <= milliseconds(report.asked_ms))
            return speed.key();
    return 0;
}

QString askedText(const PlanReport &report)
{
    if (report.asked_ms == 0)
        return QString();
    const QString figures = QStringLiteral("%1 ms asked, %2 achievable")
                                .arg(report.asked_ms)
                                .arg(timeText(report.plan.scan_ns));
    if (isAchievable(report))
        return figures + QLatin1Char('\n');
    const int speed = sufficientSpeed(report);
    if (speed == 0)
        return figures + QStringLiteral("; no speed up to %1 baud is enough\n")
                             .arg(report.scanAt_ns.lastKey());
    return figures + QStringLiteral("; %1 baud would do\n").arg(speed);
}

QString writeText(const PlanReport &report)
{
    if (report.plan.write_ns == 0)
        return QStringLiteral("write: no tag of this list can be written\n");
    const int ahead = report.settings.writesAhead;
    const QString place = ahead == 0   ? QStringLiteral("as the only write")
                          : ahead == 1 ? QStringLiteral("behind one other write")
                                       : QStringLiteral("behind %1 other writes").arg(ahead);
    return QStringLiteral("write: at most %1 while there are only cyclic reads\n"
                          "       at most %2 %3 with all lists busy: five one-time reads and a "
                          "cyclic read after every five writes\n")
        .arg(timeText(report.plan.writeAlone_ns), timeText(report.plan.writeBusy_ns), place);
}

QString stationsText(const PlanReport &report)
{
    QString text = QStringLiteral("\n%1 %2 %3   one dead station costs %4 %5 %6\n")
                       .arg(QStringLiteral("station"), QStringLiteral("reads"))
                       .arg(QStringLiteral("all of them"), 12)
                       .arg(QStringLiteral("until it is off"), 16)
                       .arg(QStringLiteral("each probe"), 12)
                       .arg(QStringLiteral("each scan if never off"), 23);
    for (const StationPlan &station : report.plan.stations)
        text += QStringLiteral("%1 %2 %3   %4 %5 %6 %7\n")
                    .arg(station.station, 7)
                    .arg(station.reads, 5)
                    .arg(timeText(station.share_ns), 12)
                    .arg(QString(), 22)
                    .arg(timeText(station.deathOnce_ns), 16)
                    .arg(timeText(station.deathProbe_ns), 12)
                    .arg(timeText(station.deathUnsupervised_ns), 23);
    return text + QStringLiteral("a probe every %1 at most while the station stays dead\n")
                      .arg(timeText(report.settings.supervisor.longestPause_ns));
}

QString percentText(double part)
{
    return QStringLiteral("%1 %").arg(100 * part, 0, 'f', 1);
}

QString scanText(const PlanReport &report)
{
    const bool hasClasses = !report.plan.classes.classes.isEmpty();
    if (report.plan.scan_ns == 0 && hasClasses)
        return QStringLiteral("scan: every tag has an interval\n");
    return QStringLiteral("scan%1: %2\n")
        .arg(hasClasses ? QStringLiteral(" of the tags without interval") : QString(),
             timeText(report.plan.scan_ns));
}

QString speedsText(const PlanReport &report)
{
    QString text = QStringLiteral("\n   baud          scan\n");
    for (auto speed = report.scanAt_ns.begin(); speed != report.scanAt_ns.end(); ++speed)
        text += QStringLiteral("%1  %2\n").arg(speed.key(), 7).arg(timeText(*speed), 12);
    return text;
}

QJsonObject stationToJson(const StationPlan &station)
{
    return {
        {QStringLiteral("station"), station.station},
        {QStringLiteral("reads"), station.reads},
        {QStringLiteral("share_ms"), millisecondsOf(station.share_ns)},
        {QStringLiteral("death_once_ms"), millisecondsOf(station.deathOnce_ns)},
        {QStringLiteral("death_probe_ms"), millisecondsOf(station.deathProbe_ns)},
        {QStringLiteral("death_unsupervised_ms"), millisecondsOf(station.deathUnsupervised_ns)}};
}

QJsonObject summaryToJson(const PlanReport &report)
{
    QJsonObject object{
        {QStringLiteral("baud"), report.serial.baud},
        {QStringLiteral("format"), formatName(report.serial)},
        {QStringLiteral("reads"), report.plan.reads},
        {QStringLiteral("scan_bytes"), report.plan.bytes},
        {QStringLiteral("scan_ms"), millisecondsOf(report.plan.scan_ns)},
        {QStringLiteral("write_alone_ms"), millisecondsOf(report.plan.writeAlone_ns)},
        {QStringLiteral("write_busy_ms"), millisecondsOf(report.plan.writeBusy_ns)},
    };
    addClassLoad(report.plan.classes, &object);
    if (report.asked_ms > 0) {
        object.insert(QStringLiteral("asked_ms"), report.asked_ms);
        object.insert(QStringLiteral("achievable"), isAchievable(report));
    }
    return object;
}

} // namespace

QString classesText(const LineForecast &forecast)
{
    if (forecast.classes.isEmpty())
        return QString();
    QString text =
        QStringLiteral("intervals: they take %1 of the line; ").arg(percentText(forecast.load));
    text += forecast.isOverloaded() ? QStringLiteral("too much, each becomes %1 times as long\n")
                                          .arg(forecast.stretch, 0, 'f', 2)
                                    : QStringLiteral("all are kept\n");
    text += QStringLiteral("\n   interval requests     expected of the line\n");
    for (const ClassForecast &one : forecast.classes)
        text += QStringLiteral("%1 %2 %3 %4\n")
                    .arg(durationText(one.interval_ns), 11)
                    .arg(one.reads, 8)
                    .arg(timeText(one.expected_ns), 12)
                    .arg(percentText(one.share), 11);
    return text + QLatin1Char('\n');
}

QJsonArray classesToJson(const LineForecast &forecast)
{
    QJsonArray classes;
    for (const ClassForecast &one : forecast.classes)
        classes.append(QJsonObject{{QStringLiteral("interval_ms"), millisecondsOf(one.interval_ns)},
                                   {QStringLiteral("reads"), one.reads},
                                   {QStringLiteral("expected_ms"), millisecondsOf(one.expected_ns)},
                                   {QStringLiteral("share_percent"), 100 * one.share}});
    return classes;
}

void addClassLoad(const LineForecast &forecast, QJsonObject *summary)
{
    if (forecast.classes.isEmpty())
        return;
    summary->insert(QStringLiteral("class_load_percent"), 100 * forecast.load);
    summary->insert(QStringLiteral("stretch"), forecast.stretch);
    summary->insert(QStringLiteral("overloaded"), forecast.isOverloaded());
}

bool isAchievable(const PlanReport &report)
{
    return report.plan.scan_ns <= milliseconds(report.asked_ms);
}

QString planText(const PlanReport &report)
{
    return QStringLiteral("%1 %2: %3, %4 bytes, turnaround %5, %6 of host and interface each\n"
                          "%7")
               .arg(report.serial.baud)
               .arg(formatName(report.serial), counted(report.plan.reads, "request", "requests"))
               .arg(report.plan.bytes)
               .arg(timeText(report.settings.turnaround_ns), timeText(report.settings.overhead_ns),
                    scanText(report)) +
           askedText(report) + classesText(report.plan.classes) + writeText(report) +
           stationsText(report) + speedsText(report);
}

QJsonObject planToJson(const PlanReport &report)
{
    QJsonArray stations;
    for (const StationPlan &station : report.plan.stations)
        stations.append(stationToJson(station));
    QJsonArray speeds;
    for (auto speed = report.scanAt_ns.begin(); speed != report.scanAt_ns.end(); ++speed)
        speeds.append(QJsonObject{{QStringLiteral("baud"), speed.key()},
                                  {QStringLiteral("scan_ms"), millisecondsOf(*speed)}});
    return {{QStringLiteral("stations"), stations},
            {QStringLiteral("speeds"), speeds},
            {QStringLiteral("classes"), classesToJson(report.plan.classes)},
            {QStringLiteral("summary"), summaryToJson(report)}};
}

} // namespace kvt
