// Forecasts of scan classes against what is measured: on the virtual clock, and on a
// pseudo-terminal whose simulated PLC keeps the pace of the line. Prints the table of docs/plan.md;
// the exit status is 0 only if every difference is within its limit and an overloaded line is in
// use all the time.
#include "host/poller.h"
#include "host/scan_plan.h"
#include "host/serial_line.h"
#include "rig/plant.h"
#include "rig/rig.h"
#include "simulator/line_speed.h"
#include "simulator/plc_runner.h"
#include "simulator/pty_port.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

#include <algorithm>
#include <thread>

namespace
{

using namespace kvt;

constexpr int BAUD = 38400;
constexpr int CALIBRATION_BAUD = 460800;
constexpr qint64 TURNAROUND_ns = milliseconds(2);
constexpr double VIRTUAL_LIMIT_percent = 2;
constexpr double PTY_LIMIT_percent = 5;
constexpr double LEAST_USE = 0.99;
constexpr int WARM_UP_s = 60;
constexpr int VIRTUAL_s = 2000;
constexpr int TAGS = 1000;

struct Part {
    const char *interval; // empty: as often as the line allows
    int tags;
};
struct Plant {
    const char *name;
    Part parts[4];
};
// TAGS words each.
const Plant PLANTS[] = {
    {"time to spare", {{"1s", 20}, {"5s", 180}, {"10s", 800}, {"", 0}}},
    {"too much", {{"100ms", 10}, {"1s", 90}, {"10s", 900}, {"", 0}}},
    {"far too much", {{"50ms", 50}, {"1s", 450}, {"10s", 500}, {"", 0}}},
    {"beside tags without interval", {{"1s", 20}, {"5s", 80}, {"10s", 400}, {"", 500}}},
    {"too much, beside tags without interval",
     {{"100ms", 10}, {"1s", 90}, {"10s", 800}, {"", 100}}},
};

QVector<Tag> tagsOf(const Plant &plant)
{
    QVector<Tag> tags = makePlant({2, 500, 0, 0});
    int next = 0;
    for (const Part &part : plant.parts)
        for (int i = 0; i < part.tags; ++i)
            tags[next++].watch[WatchColumn::Interval] = QLatin1String(part.interval);
    return tags;
}

ScanPlan planOf(const QVector<Tag> &tags, int baud, qint64 turnaround_ns, qint64 overhead_ns)
{
    PlanSettings settings;
    settings.engine.characterTime_ns = byteTime_ns(baud, BITS_PER_CHARACTER);
    settings.turnaround_ns = turnaround_ns;
    settings.overhead_ns = overhead_ns;
    return planScan(tags, settings);
}

// Measures the readings of each part of a plant from a certain time on.
class PartWatch final : public HostEvents
{
public:
    PartWatch(const Plant &plant, qint64 from_ns) : plant_(plant), from_ns_(from_ns), tags_(TAGS) {}

    void tagRead(int tag, const Reading &reading) override
    {
        if (reading.readAt_ns < from_ns_)
            return;
        Readings &readings = tags_[tag];
        if (readings.count++ == 0)
            readings.first_ns = reading.readAt_ns;
        readings.last_ns = reading.readAt_ns;
    }

    /// Mean time from one reading of a tag to its next; 0 when none was read twice. The host has
    /// ended.
    double interval_ns(int part) const
    {
        int first = 0;
        for (int i = 0; i < part; ++i)
            first += plant_.parts[i].tags;
        qint64 sum_ns = 0;
        qint64 intervals = 0;
        for (int tag = first; tag < first + plant_.parts[part].tags; ++tag) {
            sum_ns += tags_[tag].last_ns - tags_[tag].first_ns;
            intervals += std::max<qint64>(tags_[tag].count - 1, 0);
        }
        return intervals == 0 ? 0 : static_cast<double>(sum_ns) / static_cast<double>(intervals);
    }

private:
    struct Readings {
        qint64 count = 0;
        qint64 first_ns = 0;
        qint64 last_ns = 0;
    };

    const Plant &plant_;
    qint64 from_ns_;
    QVector<Readings> tags_;
};

std::unique_ptr<Rig> makeRig(const QVector<Tag> &tags, qint64 turnaround_ns, bool pauses,
                             HostEvents *events)
{
    RigSettings settings;
    settings.driverPath = QStringLiteral(KVT_LIBRARY);
    settings.tags = tags;
    settings.baud = BAUD;
    settings.plc.turnaround_ns = turnaround_ns;
    if (!pauses)
        settings.session.engine.checkpointShare = 0;
    QString error;
    std::unique_ptr<Rig> rig = Rig::make(settings, events, &error);
    if (!rig)
        QTextStream(stderr) << "kvt_class_table: " << error << '\n';
    return rig;
}

/// Appends " forecast | measured | difference |"; false when the difference is beyond the limit.
bool appendCells(QString *row, qint64 forecast_ns, double measured_ns, double limit_percent)
{
    const double difference = 100 * (measured_ns / static_cast<double>(forecast_ns) - 1);
    *row += QStringLiteral(" %1 | %2 | %3 % |")
                .arg(static_cast<double>(forecast_ns) / 1e6, 0, 'f', 1)
                .arg(measured_ns / 1e6, 0, 'f', 1)
                .arg(difference, 0, 'f', 2);
    return qAbs(difference) <= limit_percent;
}

/// What is forecast for a part: an interval, or the round of those without.
qint64 forecastOf_ns(const ScanPlan &plan, int part)
{
    return part < plan.classes.classes.size() ? plan.classes.classes.at(part).expected_ns
                                              : plan.scan_ns;
}

bool printParts(QTextStream &out, const Plant &plant, const ScanPlan &plan, const PartWatch &watch,
                double limit_percent)
{
    bool good = true;
    for (int part = 0; part < 4; ++part) {
        if (plant.parts[part].tags == 0)
            continue;
        const QString interval = QLatin1String(plant.parts[part].interval);
        const double share = part < plan.classes.classes.size()
                                 ? plan.classes.classes.at(part).share
                                 : 1 - plan.classes.load / plan.classes.stretch;
        QString row =
            QStringLiteral("| %1 | %2 | %3 | %4 % |")
                .arg(QLatin1String(plant.name), interval.isEmpty() ? QStringLiteral("-") : interval)
                .arg(plant.parts[part].tags)
                .arg(100 * share, 0, 'f', 1);
        const bool isNear =
            appendCells(&row, forecastOf_ns(plan, part), watch.interval_ns(part), limit_percent);
        out << row << (isNear ? "" : " beyond the limit") << '\n';
        good = good && isNear;
    }
    out.flush();
    return good;
}

bool tryOnVirtualClock(QTextStream &out, const Plant &plant)
{
    PartWatch watch(plant, seconds(WARM_UP_s));
    const QVector<Tag> tags = tagsOf(plant);
    const std::unique_ptr<Rig> rig = makeRig(tags, TURNAROUND_ns, true, &watch);
    if (!rig)
        return false;
    rig->line().runUntil(seconds(VIRTUAL_s));
    return printParts(out, plant, planOf(tags, BAUD, TURNAROUND_ns, 0), watch,
                      VIRTUAL_LIMIT_percent);
}

double useOf(const Plant &plant, bool pauses)
{
    HostEvents events;
    const std::unique_ptr<Rig> rig = makeRig(tagsOf(plant), 0, pauses, &events);
    if (!rig)
        return 0;
    rig->line().runUntil(seconds(VIRTUAL_s));
    return rig->session().statistics().utilisation(rig->line().now_ns(), rig->characterTime_ns());
}

/// Without turnaround an overloaded line is in use all the time, but for the listening pauses.
bool tryLineUse(QTextStream &out, const Plant &plant)
{
    const double without = useOf(plant, false);
    const double with = useOf(plant, true);
    const bool good = without >= LEAST_USE && with >= LEAST_USE * without;
    out << "line use, " << plant.name << ", no turnaround: "
        << QStringLiteral("%1 %, with pauses %2 %")
               .arg(100 * without, 0, 'f', 3)
               .arg(100 * with, 0, 'f', 3)
        << (good ? "" : " below the limit") << '\n';
    out.flush();
    return good;
}

/// Polls tags on a pseudo-terminal for so long. The statistics are empty when it could not.
Statistics pollPty(const QVector<Tag> &tags, int baud, qint64 duration_ns, HostEvents *events)
{
    PlcConfig config;
    config.byteTime_ns = byteTime_ns(baud, BITS_PER_CHARACTER);
    config.turnaround_ns = TURNAROUND_ns;
    SimulatedPlc plc(tags, config, 1);
    PtyPort port;
    PlcRunner runner(&plc, &port);
    DriverLibrary library;
    QString error;
    if (!library.load(QStringLiteral(KVT_LIBRARY), &error) || !runner.start(&error)) {
        QTextStream(stderr) << "kvt_class_table: " << error << '\n';
        return Statistics();
    }
    SerialSettings serial;
    serial.path = port.name();
    serial.baud = baud;
    Poller poller(library.api(), PollerSettings(), tags, std::make_unique<SerialLine>(serial),
                  events);
    poller.start();
    std::this_thread::sleep_for(std::chrono::nanoseconds(duration_ns));
    poller.stop();
    return poller.statistics();
}

/// What host and pseudo-terminal add to each exchange on this machine, as it is now.
qint64 ptyOverhead_ns()
{
    HostEvents events;
    const QVector<Tag> tags = makePlant({1, 20, 0, 0});
    const Statistics statistics = pollPty(tags, CALIBRATION_BAUD, seconds(5), &events);
    const ScanPlan plan = planOf(tags, CALIBRATION_BAUD, TURNAROUND_ns, 0);
    return (statistics.scan.times().mean_ns() - plan.scan_ns) / plan.reads;
}

bool tryOnPty(QTextStream &out, const Plant &plant, int duration_s, qint64 overhead_ns)
{
    const qint64 begin_ns = monotonicNow_ns() + seconds(duration_s / 4);
    PartWatch watch(plant, begin_ns);
    const QVector<Tag> tags = tagsOf(plant);
    pollPty(tags, BAUD, seconds(duration_s), &watch);
    return printParts(out, plant, planOf(tags, BAUD, TURNAROUND_ns, overhead_ns), watch,
                      PTY_LIMIT_percent);
}

bool printTables(QTextStream &out, int pty_s)
{
    const QString head =
        QStringLiteral("| list | interval | tags | of the line | forecast, ms | %1, ms "
                       "| difference |\n|---|---:|---:|---:|---:|---:|---:|\n");
    bool good = true;
    out << head.arg(QStringLiteral("virtual clock"));
    for (const Plant &plant : PLANTS)
        good = tryOnVirtualClock(out, plant) && good;
    out << '\n';
    good = tryLineUse(out, PLANTS[1]) && good;
    good = tryLineUse(out, PLANTS[4]) && good;
    if (pty_s == 0)
        return good;
    const qint64 overhead_ns = ptyOverhead_ns();
    out << "\nHost and pseudo-terminal add " << overhead_ns / 1000 << " us to each exchange.\n\n"
        << head.arg(QStringLiteral("pty"));
    // Those in which each tag is read several times in a minute.
    for (const int plant : {0, 1, 3})
        good = tryOnPty(out, PLANTS[plant], pty_s, overhead_ns) && good;
    return good;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Compares forecast intervals with measured ones and prints a table."));
    parser.addHelpOption();
    parser.addOption({QStringLiteral("pty-seconds"),
                      QStringLiteral("Length of each run on a pseudo-terminal, 0 or 40 to 3600 "
                                     "(default: 60); 0 leaves it to the virtual clock."),
                      QStringLiteral("number"), QStringLiteral("60")});
    parser.process(app);
    bool isNumber = false;
    const int pty_s = parser.value(QStringLiteral("pty-seconds")).toInt(&isNumber);
    const bool isGood = isNumber && (pty_s == 0 || (pty_s >= 40 && pty_s <= 3600));
    if (!isGood || !parser.positionalArguments().isEmpty()) {
        QTextStream(stderr)
            << "kvt_class_table: --pty-seconds takes 0 or a number from 40 to 3600, "
               "and there are no arguments\n";
        return 2;
    }
    QTextStream out(stdout);
    return printTables(out, pty_s) ? 0 : 1;
}
