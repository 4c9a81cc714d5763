#include "rig/plant.h"
#include "rig/proofs.h"
#include "rig/rig.h"
#include "simulator/fault_text.h"

#include <array>

namespace kvt
{

namespace
{

constexpr int MOST_OPEN_WRITES = 40;
constexpr const char *FAULTS = "noreply=1%,late=1%:65ms~40ms,truncate=1%,duplicate=1%,foreign=1%,"
                               "refuse=1%,silence=0.01%:20s";

// Follows every write from its request to its end.
class Ledger : public HostEvents
{
public:
    struct Entry {
        int tag = 0;
        int value = 0;
        int finals = 0;
        bool wasInMemory = false;
    };

    void watch(const QVector<Tag> &tags, const PlcMemory *memory)
    {
        tags_ = tags;
        memory_ = memory;
    }

    void requested(int id, int tag, int value)
    {
        entries_.insert(id, {tag, value});
        ++open;
    }

    void writeChanged(const WriteReport &report) override
    {
        if (!report.isFinal())
            return;
        Entry &entry = entries_[report.id];
        ++entry.finals;
        --open;
        ++perState.at(static_cast<size_t>(report.state));
        if (report.state == WriteState::Acknowledged && !entry.wasInMemory)
            ++notInMemory;
    }

    // When the acknowledgement came; by the time that it is proved another write may have followed.
    void attemptEnded(const Attempt &attempt) override
    {
        const auto found = entries_.find(attempt.request->id);
        if (found == entries_.end() || !attempt.isSuccess())
            return;
        const Tag &tag = tags_.at(found->tag);
        found->wasInMemory = memory_->value(tag.station, tag.area, tag.address) == found->value;
    }

    qint64 withOtherThanOneFinal() const
    {
        qint64 count = 0;
        for (const Entry &entry : entries_)
            count += entry.finals == 1 ? 0 : 1;
        return count;
    }

    qint64 writes() const { return entries_.size(); }

    qint64 open = 0;
    qint64 notInMemory = 0;
    std::array<qint64, WRITE_STATES> perState = {};

private:
    QVector<Tag> tags_;
    const PlcMemory *memory_ = nullptr;
    QHash<int, Entry> entries_;
};

RigSettings settingsFor(const ProofRun &run)
{
    RigSettings settings;
    settings.driverPath = run.driverPath;
    settings.tags = makePlant({10, 20, 5, 0});
    settings.seed = run.seed;
    settings.session.engine.defaultTiming.replyTimeout_ns = milliseconds(60);
    settings.plc.turnaround_ns = milliseconds(2);
    settings.plc.faults = parseFaults(QLatin1String(FAULTS)).rules;
    return settings;
}

void requestWrite(Rig *rig, Ledger *ledger, Random *random)
{
    const QVector<Tag> &tags = rig->session().tags();
    const int tag = static_cast<int>(random->below(static_cast<quint32>(tags.size())));
    const bool word = tags.at(tag).area == Area::D;
    const int value = static_cast<int>(random->below(word ? 65536 : 256));
    QByteArray bytes(1, static_cast<char>(value & 0xFF));
    if (word)
        bytes.append(static_cast<char>(value >> 8));
    ledger->requested(rig->session().write(tag, bytes), tag, value);
}

// Bursts of writes while the line works, until all are requested and have ended.
void runWrites(const ProofRun &run, Rig *rig, Ledger *ledger)
{
    Random random(run.seed);
    const qint64 limit_ns = seconds(run.count);
    while (ledger->writes() < run.count || ledger->open > 0) {
        const qint64 burst = random.below(1000) == 0 ? random.below(MOST_OPEN_WRITES) : 0;
        for (qint64 i = 0;
             i < burst && ledger->writes() < run.count && ledger->open < MOST_OPEN_WRITES; ++i)
            requestWrite(rig, ledger, &random);
        if (!rig->line().step() || rig->line().now_ns() > limit_ns)
            break;
    }
    rig->session().stop();
}

} // namespace

QString writeEndsText(const std::array<qint64, WRITE_STATES> &ends)
{
    QStringList texts;
    for (const WriteState state :
         {WriteState::Acknowledged, WriteState::Refused, WriteState::TimedOut, WriteState::Dropped,
          WriteState::Uncertain})
        texts.append(QStringLiteral("%1 %2")
                         .arg(writeStateName(state))
                         .arg(ends.at(static_cast<size_t>(state))));
    return texts.join(QStringLiteral(", "));
}

ProofResult proveWritesAreAccountedFor(const ProofRun &run)
{
    ProofResult result;
    Ledger ledger;
    const RigSettings settings = settingsFor(run);
    const std::unique_ptr<Rig> rig = Rig::make(settings, &ledger, &result.text);
    if (!rig)
        return result;
    ledger.watch(settings.tags, &rig->plc().memory());
    runWrites(run, rig.get(), &ledger);

    qint64 sum = 0;
    for (const qint64 count : ledger.perState)
        sum += count;
    const qint64 mismatches = static_cast<qint64>(rig->session().statistics().queueMismatches);
    const qint64 notOne = ledger.withOtherThanOneFinal();
    result.held = ledger.writes() == run.count && sum == run.count && notOne == 0 &&
                  ledger.notInMemory == 0 && mismatches == 0;
    result.text =
        QStringLiteral("writes: seed %1, %2 writes; %3; sum %4; without exactly one final "
                       "state %5; acknowledged but not in the memory %6; queue mismatches %7")
            .arg(run.seed)
            .arg(ledger.writes())
            .arg(writeEndsText(ledger.perState))
            .arg(sum)
            .arg(notOne)
            .arg(ledger.notInMemory)
            .arg(mismatches);
    return result;
}

} // namespace kvt
