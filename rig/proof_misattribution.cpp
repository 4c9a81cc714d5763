#include "rig/plant.h"
#include "rig/proofs.h"
#include "rig/rig.h"
#include "simulator/fault_text.h"

namespace kvt
{

namespace
{

// Compares every value that reaches a tag with the one place it can have come from.
class Witness : public HostEvents
{
public:
    void watch(const QVector<Tag> &tags, const PlcMemory *memory)
    {
        tags_ = tags;
        memory_ = memory;
    }

    void tagRead(int tag, const Reading &reading) override
    {
        // What is said to be doubtful misleads nobody.
        if (reading.doubtful)
            return;
        const Tag &description = tags_.at(tag);
        ++values;
        if (memory_->serialOwner(description.area, static_cast<int>(reading.raw)) !=
            description.name)
            ++misattributed;
        else if (!memory_->wasSentTo(description.station, description.area, description.address,
                                     static_cast<int>(reading.raw), reading.readAt_ns - seconds(1)))
            ++outdated;
    }

    qint64 values = 0;
    qint64 misattributed = 0;
    qint64 outdated = 0;

private:
    QVector<Tag> tags_;
    const PlcMemory *memory_ = nullptr;
};

// A late reply begins after the time-out has passed and before the silence behind it ends.
QString faults(const RigSettings &settings, const QuietTrial &trial)
{
    const EngineSettings &engine = settings.session.engine;
    const qint64 timeout_us = engine.defaultTiming.replyTimeout_ns / 1000;
    const qint64 span_us = timeout_us * (trial.latestPercent - 101) / 100;
    return QStringLiteral("noreply=1%,late=1%:%1us~%2us,truncate=1%,duplicate=1%,foreign=1%")
        .arg(timeout_us * 101 / 100)
        .arg(span_us);
}

RigSettings settingsFor(const ProofRun &run, const QuietTrial &trial)
{
    RigSettings settings;
    settings.driverPath = run.driverPath;
    settings.tags = makePlant({10, 10, 2, 1});
    settings.seed = run.seed;
    EngineSettings &engine = settings.session.engine;
    if (!trial.checkpoints)
        engine.checkpointShare = 0;
    engine.defaultTiming.replyTimeout_ns = milliseconds(60);
    engine.defaultTiming.quietTime_ns =
        qMax<qint64>(1, milliseconds(60) * trial.quietPercent / 100);
    settings.plc.turnaround_ns = milliseconds(2);
    settings.plc.signalPlan.all = SignalKind::Serial;
    settings.plc.faults = parseFaults(faults(settings, trial)).rules;
    return settings;
}

QString faultCounts(const PlcCounters &counters)
{
    QStringList texts;
    for (int i = 0; i < FAULT_KINDS; ++i) {
        const qint64 count = counters.faults.at(static_cast<size_t>(i));
        if (count > 0)
            texts.append(
                QStringLiteral("%1 %2").arg(QLatin1String(faultName(FaultKind(i)))).arg(count));
    }
    return texts.join(QStringLiteral(", "));
}

} // namespace

ProofResult proveNoMisattribution(const ProofRun &run, const QuietTrial &trial)
{
    ProofResult result;
    Witness witness;
    const RigSettings settings = settingsFor(run, trial);
    const std::unique_ptr<Rig> rig = Rig::make(settings, &witness, &result.text);
    if (!rig)
        return result;
    witness.watch(settings.tags, &rig->plc().memory());
    while (rig->plc().counters().exchanges < run.count && rig->line().step()) {
    }
    const Statistics statistics = rig->session().statistics();
    const PlcCounters &counters = rig->plc().counters();
    result.text =
        QStringLiteral("misattribution: seed %1, %2 exchanges at 38,400 in %3 s of the line; "
                       "faults: %4; late bytes dropped %5, stale %6, recoveries %7; "
                       "values delivered %8, to a wrong tag %9, outdated %10")
            .arg(run.seed)
            .arg(counters.exchanges)
            .arg(rig->line().now_ns() / seconds(1))
            .arg(faultCounts(counters))
            .arg(statistics.total.lateBytes)
            .arg(statistics.total.staleBytes)
            .arg(statistics.total.recoveries)
            .arg(witness.values)
            .arg(witness.misattributed)
            .arg(witness.outdated);
    result.held = counters.exchanges >= run.count && witness.values > run.count / 2 &&
                  witness.misattributed == 0 && witness.outdated == 0;
    return result;
}

} // namespace kvt
