// Predictions of scans and writes against what is measured: on the virtual clock, and on a
// pseudo-terminal whose simulated PLC keeps the pace of the line. Prints the table of
// docs/plan.md; the exit status is 0 only if every difference is within its limit.
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
#include <condition_variable>

namespace
{

using namespace kvt;

constexpr int SPEEDS[] = {9600, 38400, 115200};
constexpr qint64 TURNAROUND_ns = milliseconds(2);
constexpr int CALIBRATION_BAUD = 460800;
constexpr double VIRTUAL_LIMIT_percent = 2;
constexpr double PTY_LIMIT_percent = 5;
constexpr int VIRTUAL_SCANS = 50;

struct Plant {
    const char *name;
    PlantSize size;
};
const Plant PLANTS[] = {
    {"1 station, 20 words", {1, 20, 0, 0}},
    {"4 stations, 5 words and 5 bits each", {4, 5, 5, 0}},
    {"3 stations, 4 words, 4 bits and 2 blocks each", {3, 4, 4, 2}},
};

struct Case {
    QVector<Tag> tags;
    int baud = 0;
    ScanPlan plan;
};

Case makeCase(const Plant &plant, int baud, qint64 overhead_ns)
{
    Case result;
    result.tags = makePlant(plant.size);
    result.baud = baud;
    PlanSettings settings;
    settings.engine.characterTime_ns = byteTime_ns(baud, BITS_PER_CHARACTER);
    settings.turnaround_ns = TURNAROUND_ns;
    settings.overhead_ns = overhead_ns;
    result.plan = planScan(result.tags, settings);
    return result;
}

// Keeps one-time reads waiting, and requests a write as soon as the one before it is on the line:
// the worst that can happen to a write in front of the queue.
class BusyOperator final : public HostEvents
{
public:
    // The first reading tells that the line is in use.
    void tagRead(int, const Reading &) override
    {
        if (requestedAt_ns_.isEmpty())
            requestWrite();
        keepReadsWaiting();
    }
    void onceReadEnded(int, int, bool) override
    {
        --reads_;
        keepReadsWaiting();
    }
    void writeChanged(const WriteReport &report) override
    {
        if (report.state == WriteState::Sent)
            requestWrite();
    }
    // What is predicted is when the station acknowledges it, not when that is proved.
    void attemptEnded(const Attempt &attempt) override
    {
        const auto requested = requestedAt_ns_.constFind(attempt.request->id);
        if (attempt.isFinal() && requested != requestedAt_ns_.cend())
            longest_ns = std::max(longest_ns, attempt.endedAt_ns - *requested);
    }
    void requestWrite()
    {
        // Not the tag of the write on the line, which would be replaced.
        tag_ = (tag_ + 1) % 2;
        requestedAt_ns_.insert(session->write(tag_, QByteArray("\x12\x34")), line->now_ns());
    }

    HostSession *session = nullptr;
    VirtualLine *line = nullptr;
    int tagToRead = 0; ///< one that takes longest
    qint64 longest_ns = 0;

private:
    void keepReadsWaiting()
    {
        for (; reads_ < 2 * BURST; ++reads_)
            session->readOnce(tagToRead);
    }

    QHash<int, qint64> requestedAt_ns_;
    int reads_ = 0;
    int tag_ = 0;
};

std::unique_ptr<Rig> makeRig(const Case &what, HostEvents *events)
{
    RigSettings settings;
    settings.driverPath = QStringLiteral(KVT_LIBRARY);
    settings.tags = what.tags;
    settings.baud = what.baud;
    settings.plc.turnaround_ns = TURNAROUND_ns;
    QString error;
    std::unique_ptr<Rig> rig = Rig::make(settings, events, &error);
    if (!rig)
        QTextStream(stderr) << "kvt_plan_table: " << error << '\n';
    return rig;
}

qint64 scanOnVirtualClock_ns(const Case &what)
{
    HostEvents events;
    const std::unique_ptr<Rig> rig = makeRig(what, &events);
    if (!rig)
        return 0;
    rig->line().runUntil(VIRTUAL_SCANS * what.plan.scan_ns);
    return rig->session().statistics().scan.times().mean_ns();
}

qint64 longestWriteOnVirtualClock_ns(const Case &what)
{
    BusyOperator user;
    const std::unique_ptr<Rig> rig = makeRig(what, &user);
    if (!rig)
        return 0;
    user.session = &rig->session();
    user.line = &rig->line();
    if (what.tags.last().area == Area::C)
        user.tagToRead = what.tags.size() - 1;
    rig->line().runUntil(VIRTUAL_SCANS * what.plan.writeBusy_ns);
    return user.longest_ns;
}

// Measures scans, from one reading of a tag to its next.
class ScanWatch final : public HostEvents
{
public:
    void tagRead(int tag, const Reading &reading) override
    {
        if (tag != 0)
            return;
        const std::lock_guard<std::mutex> lock(mutex_);
        if (lastReading_ns_ > 0)
            scans_ns_.append(reading.readAt_ns - lastReading_ns_);
        lastReading_ns_ = reading.readAt_ns;
        changed_.notify_all();
    }

    /// The middle one of so many: a scan during which the machine did something else counts
    /// little. 0 when they do not come within a minute.
    qint64 median_ns(int scans)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        if (!changed_.wait_for(lock, std::chrono::minutes(1),
                               [&] { return scans_ns_.size() >= scans; }))
            return 0;
        std::sort(scans_ns_.begin(), scans_ns_.end());
        return scans_ns_.at(scans_ns_.size() / 2);
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    QVector<qint64> scans_ns_;
    qint64 lastReading_ns_ = 0;
};

qint64 scanOnPty_ns(const Case &what, int scans)
{
    PlcConfig config;
    config.byteTime_ns = byteTime_ns(what.baud, BITS_PER_CHARACTER);
    config.turnaround_ns = TURNAROUND_ns;
    SimulatedPlc plc(what.tags, config, 1);
    PtyPort port;
    PlcRunner runner(&plc, &port);
    DriverLibrary library;
    QString error;
    if (!library.load(QStringLiteral(KVT_LIBRARY), &error) || !runner.start(&error)) {
        QTextStream(stderr) << "kvt_plan_table: " << error << '\n';
        return 0;
    }
    SerialSettings serial;
    serial.path = port.name();
    serial.baud = what.baud;
    ScanWatch watch;
    Poller poller(library.api(), PollerSettings(), what.tags, std::make_unique<SerialLine>(serial),
                  &watch);
    poller.start();
    return watch.median_ns(scans);
}

double millisecondsOf(qint64 time_ns)
{
    return static_cast<double>(time_ns) / 1e6;
}

// Appends " predicted | measured | difference |"; false when the difference is beyond the limit.
bool appendCells(QString *row, qint64 predicted_ns, qint64 measured_ns, double limit_percent)
{
    const double difference =
        100 * (millisecondsOf(measured_ns) / millisecondsOf(predicted_ns) - 1);
    *row += QStringLiteral(" %1 | %2 | %3 % |")
                .arg(millisecondsOf(predicted_ns), 0, 'f', 2)
                .arg(millisecondsOf(measured_ns), 0, 'f', 2)
                .arg(difference, 0, 'f', 2);
    return qAbs(difference) <= limit_percent;
}

// What host and pseudo-terminal add to each exchange on this machine, as it is now: measured at a
// speed that is none of the table's.
qint64 ptyOverhead_ns(int scans)
{
    const Case what = makeCase(PLANTS[0], CALIBRATION_BAUD, 0);
    return (scanOnPty_ns(what, scans) - what.plan.scan_ns) / what.plan.reads;
}

bool printRow(QTextStream &out, const Plant &plant, int baud, int ptyScans, qint64 overhead_ns)
{
    const Case exact = makeCase(plant, baud, 0);
    QString row = QStringLiteral("| %1 | %2 |").arg(QLatin1String(plant.name)).arg(baud);
    bool good =
        appendCells(&row, exact.plan.scan_ns, scanOnVirtualClock_ns(exact), VIRTUAL_LIMIT_percent);
    good = appendCells(&row, exact.plan.writeBusy_ns, longestWriteOnVirtualClock_ns(exact),
                       VIRTUAL_LIMIT_percent) &&
           good;
    if (ptyScans > 0) {
        const Case real = makeCase(plant, baud, overhead_ns);
        good =
            appendCells(&row, real.plan.scan_ns, scanOnPty_ns(real, ptyScans), PTY_LIMIT_percent) &&
            good;
    }
    out << row << (good ? "" : " beyond the limit") << '\n';
    out.flush();
    return good;
}

bool printTable(QTextStream &out, int ptyScans)
{
    const qint64 overhead_ns = ptyScans > 0 ? ptyOverhead_ns(2 * ptyScans) : 0;
    if (ptyScans > 0)
        out << "Host and pseudo-terminal add " << overhead_ns / 1000 << " us to each exchange.\n\n";
    QString head = QStringLiteral("| tag list | baud | scan, ms | virtual clock | difference |"
                                  " write, ms | virtual clock | difference |");
    QString rule = QStringLiteral("|---|---:|---:|---:|---:|---:|---:|---:|");
    if (ptyScans > 0) {
        head += QStringLiteral(" scan, ms | pty | difference |");
        rule += QStringLiteral("---:|---:|---:|");
    }
    out << head << '\n' << rule << '\n';
    bool good = true;
    for (const Plant &plant : PLANTS)
        for (const int baud : SPEEDS)
            good = printRow(out, plant, baud, ptyScans, overhead_ns) && good;
    return good;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Compares predicted scan and write times with measured ones and prints a table."));
    parser.addHelpOption();
    parser.addOption({QStringLiteral("pty-scans"),
                      QStringLiteral("Scans measured on a pseudo-terminal for each row, 0 to 1000 "
                                     "(default: 20); 0 leaves it to the virtual clock."),
                      QStringLiteral("number"), QStringLiteral("20")});
    parser.process(app);
    bool isNumber = false;
    const int scans = parser.value(QStringLiteral("pty-scans")).toInt(&isNumber);
    if (!isNumber || scans < 0 || scans > 1000 || !parser.positionalArguments().isEmpty()) {
        QTextStream(stderr) << "kvt_plan_table: --pty-scans takes a number from 0 to 1000, and "
                               "there are no arguments\n";
        return 2;
    }
    QTextStream out(stdout);
    return printTable(out, scans) ? 0 : 1;
}
