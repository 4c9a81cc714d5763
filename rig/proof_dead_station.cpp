#include "rig/plant.h"
#include "rig/proofs.h"
#include "rig/rig.h"

namespace kvt
{

namespace
{

constexpr int DEAD_STATION = 10;

class ReadingCounter : public HostEvents
{
public:
    void tagRead(int, const Reading &) override { ++readings; }
    void stationSwitched(int, bool) override { ++switches; }

    qint64 readings = 0;
    qint64 switches = 0;
};

// Readings of stations 1 to 9 within the run; -1 when it could not be made.
qint64 readingsOf(const ProofRun &run, int stations, ReadingCounter *counter, QString *error)
{
    RigSettings settings;
    settings.driverPath = run.driverPath;
    settings.tags = makePlant({stations, 20, 0, 0});
    settings.seed = run.seed;
    settings.plc.turnaround_ns = milliseconds(2);
    const std::unique_ptr<Rig> rig = Rig::make(settings, counter, error);
    if (!rig)
        return -1;
    rig->plc().setStationOff(DEAD_STATION, true);
    rig->line().runUntil(seconds(run.count));
    return counter->readings;
}

} // namespace

ProofResult proveDeadStationCostsLittle(const ProofRun &run)
{
    ProofResult result;
    ReadingCounter nine;
    ReadingCounter ten;
    const qint64 without = readingsOf(run, 9, &nine, &result.text);
    const qint64 with = readingsOf(run, 10, &ten, &result.text);
    if (without <= 0 || with <= 0)
        return result;
    const double ratio = static_cast<double>(without) / static_cast<double>(with);
    const double scan_ms = 180.0 * static_cast<double>(run.count) * 1000.0;
    result.held = ratio <= 1.1 && ten.switches > 0;
    result.text =
        QStringLiteral("dead station: seed %1, %2 s at 38,400; scan of nine stations %3 ms, "
                       "with a dead tenth %4 ms, ratio %5")
            .arg(run.seed)
            .arg(run.count)
            .arg(scan_ms / static_cast<double>(without), 0, 'f', 1)
            .arg(scan_ms / static_cast<double>(with), 0, 'f', 1)
            .arg(ratio, 0, 'f', 4);
    return result;
}

} // namespace kvt
