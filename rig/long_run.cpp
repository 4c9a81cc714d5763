#include "rig/long_run.h"

#include "rig/long_witness.h"
#include "rig/plant.h"
#include "rig/storm.h"

#include <QFile>

#include <algorithm>
#include <limits>

namespace kvt
{

namespace
{

constexpr int STATIONS = 10;
constexpr int BAUD = 9600;
constexpr quint32 RARITY = 500; // one request in so many is struck
constexpr qint64 DAY_ns = seconds(86400);
// Where the clock begins: within the run it passes 2^53, from where on a double has no nanoseconds.
constexpr qint64 START_ns = (Q_INT64_C(1) << 53) - DAY_ns / 2;
constexpr qint64 ALLOWED_GROWTH_kB = 1024;

// The words and bytes of command 41 and 49 are written, the others move with every read.
QVector<Tag> tagsOfPlant()
{
    QVector<Tag> tags;
    for (int station = 1; station <= STATIONS; ++station) {
        for (int i = 0; i < 6; ++i)
            tags.append(plantTag(Area::D, station, QStringLiteral("40.%1.0").arg(i)));
        for (int i = 0; i < 3; ++i)
            tags.append(plantTag(Area::X, station, QStringLiteral("48.%1.0").arg(i)));
        for (int i = 0; i < 2; ++i)
            tags.append(plantTag(Area::D, station, QStringLiteral("41.%1.0").arg(i)));
        tags.append(plantTag(Area::X, station, QStringLiteral("49.0.0")));
        tags.append(plantTag(Area::D, station, QStringLiteral("18.1.0")));
        for (const int element : {0, 69})
            tags.append(plantTag(Area::C, station, QStringLiteral("96.0.0.%1").arg(element)));
    }
    return tags;
}

qint64 memoryInUse_kB()
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray text = file.readAll();
    return text.mid(text.indexOf("VmRSS:") + 6).trimmed().split(' ').first().toLongLong();
}

// Everything that happens from outside, at random times.
class Life
{
public:
    Life(Rig *rig, LongWitness *witness, quint64 seed) : rig_(rig), witness_(witness), random_(seed)
    {
        const QVector<Tag> &tags = rig->session().tags();
        for (int i = 0; i < tags.size(); ++i)
            if (QStringList({QStringLiteral("41"), QStringLiteral("49"), QStringLiteral("18")})
                    .contains(tags.at(i).address.section(QLatin1Char('.'), 0, 0)))
                writable_.append(i);
        for (Action &action : actions_)
            action.due_ns = rig->line().now_ns() + delay_ns(action.mean_ns);
    }

    /// Does what is due. False when the host could not be started anew.
    bool act()
    {
        const qint64 now_ns = rig_->line().now_ns();
        if (now_ns < next_ns_)
            return true;
        next_ns_ = NEVER;
        for (Action &action : actions_) {
            if (action.due_ns <= now_ns) {
                (this->*action.run)();
                ++action.count;
                action.due_ns = now_ns + delay_ns(action.mean_ns);
            }
            next_ns_ = std::min(next_ns_, action.due_ns);
        }
        for (auto dead = dead_.begin(); dead != dead_.end();) {
            const bool isOver = dead.value() <= now_ns;
            if (isOver)
                rig_->plc().setStationOff(dead.key(), false);
            dead = isOver ? dead_.erase(dead) : std::next(dead);
        }
        return error.isEmpty();
    }

    QString figures() const
    {
        QStringList texts;
        for (const Action &action : actions_)
            texts.append(QStringLiteral("%1 %2").arg(QLatin1String(action.name)).arg(action.count));
        return texts.join(QStringLiteral(", "));
    }

    int unsettled = 0;
    quint64 exchangesBefore = 0; ///< of hosts that have ended
    quint64 mismatches = 0;
    QString error;

private:
    struct Action {
        const char *name;
        qint64 mean_ns;
        void (Life::*run)();
        qint64 due_ns = 0;
        qint64 count = 0;
    };

    qint64 delay_ns(qint64 mean_ns)
    {
        return mean_ns / 2 + static_cast<qint64>(random_.next() % static_cast<quint64>(mean_ns));
    }

    void write()
    {
        if (witness_->openWrites() > 20)
            return;
        const int count = 1 + static_cast<int>(random_.below(6));
        for (int i = 0; i < count; ++i) {
            const int tag = writable_.at(
                static_cast<int>(random_.below(static_cast<quint32>(writable_.size()))));
            QByteArray bytes(1, static_cast<char>(random_.below(256)));
            if (rig_->session().tags().at(tag).area == Area::D)
                bytes.append(static_cast<char>(random_.below(256)));
            witness_->requested(rig_->session().write(tag, bytes));
        }
        rig_->session().readOnce(
            static_cast<int>(random_.below(static_cast<quint32>(rig_->session().tags().size()))));
    }

    void die()
    {
        const int station = 1 + static_cast<int>(random_.below(STATIONS));
        rig_->plc().setStationOff(station, true);
        dead_.insert(station, rig_->line().now_ns() + delay_ns(seconds(300)));
    }

    void unplug() { rig_->line().breakLine(delay_ns(seconds(20))); }

    // As a panel does that shows another picture. While a read is under way the driver would take
    // its end for that of the new list's first entry, and its failure for one of that entry's
    // station.
    void rebuild()
    {
        witness_->betweenExchanges([this] { replaceList(); });
    }

    void replaceList()
    {
        QList<HOST_VAR> variables;
        for (const Tag &tag : rig_->session().tags()) {
            HOST_VAR variable;
            variable.areaType = static_cast<quint8>(tag.area);
            variable.station = static_cast<quint8>(tag.station);
            variable.addressText = tag.address;
            if (random_.below(4) != 0)
                variables.insert(
                    static_cast<int>(random_.below(static_cast<quint32>(variables.size() + 1))),
                    variable);
        }
        rig_->driver().ReCreatReadVarList(&variables);
    }

    void restart()
    {
        const Statistics statistics = rig_->session().statistics();
        exchangesBefore += statistics.total.exchanges;
        mismatches += statistics.queueMismatches;
        if (!rig_->restartHost(&error))
            return;
        unsettled += witness_->hostEnded();
        witness_->watch(&rig_->session(), &rig_->line());
    }

    Rig *rig_;
    LongWitness *witness_;
    Random random_;
    QVector<int> writable_;
    QHash<int, qint64> dead_; // stations, and until when
    qint64 next_ns_ = 0;
    Action actions_[5] = {{"bursts of writes", seconds(3), &Life::write},
                          {"deaths", seconds(1800), &Life::die},
                          {"times unplugged", seconds(7200), &Life::unplug},
                          {"lists", seconds(3600), &Life::rebuild},
                          {"hosts", seconds(40000), &Life::restart}};
};

RigSettings rigSettings(const LongRun &run)
{
    RigSettings settings;
    settings.driverPath = run.driverPath;
    settings.tags = tagsOfPlant();
    settings.baud = run.paced ? BAUD : 0;
    settings.latency_ns = settings.session.engine.latency_ns;
    settings.seed = run.seed;
    settings.start_ns = START_ns;
    // Reached by a host of its own in years only.
    settings.session.lastRequestId = std::numeric_limits<int>::max() - 1000;
    settings.plc.turnaround_ns = run.paced ? milliseconds(20) : milliseconds(40);
    settings.plc.signalPlan.all = SignalKind::Serial;
    return settings;
}

QString dayText(int day, Rig *rig, const Life &life, const Storm &storm, const LongWitness &witness)
{
    const LongCounts &counts = witness.counts();
    const Statistics statistics = rig->session().statistics();
    return QStringLiteral(
               "day %1: exchanges %2, faults %3, values %4, wrong %5 (longest %6 ms), "
               "beyond the bound %7, behind several faults %8; writes %9, belied %10, "
               "open %11; stations switched off %12, out of step %13; memory %14 kB; %15")
        .arg(day)
        .arg(life.exchangesBefore + statistics.total.exchanges)
        .arg(storm.faults())
        .arg(counts.values)
        .arg(witness.wrong().count)
        .arg(witness.wrong().longest_ns / milliseconds(1))
        .arg(witness.wrong().beyond)
        .arg(witness.wrong().beyondOfSeveral)
        .arg(counts.writes)
        .arg(counts.writesBelied)
        .arg(witness.openWrites())
        .arg(counts.stationsOff)
        .arg(counts.outOfStep)
        .arg(memoryInUse_kB())
        .arg(life.figures());
}

// Ends the host and judges the run, which grew by so much.
ProofResult endOf(const LongRun &run, Rig *rig, Life *life, LongWitness *witness, qint64 growth_kB)
{
    rig->session().stop();
    const Statistics statistics = rig->session().statistics();
    const LongCounts &counts = witness->counts();
    const qint64 unsettled = life->unsettled + witness->hostEnded() + counts.writesUnsettled;
    const quint64 mismatches = life->mismatches + statistics.queueMismatches;
    const WrongValues &wrong = witness->wrong();
    ProofResult result;
    result.held = life->error.isEmpty() && counts.values > 0 && wrong.beyond == 0 &&
                  counts.writesBelied == 0 && unsettled == 0 && mismatches == 0 &&
                  growth_kB <= ALLOWED_GROWTH_kB;
    result.text =
        QStringLiteral("long life: seed %1, %2 days %3; values %4, wrong %5, for longer than the "
                       "bound of up to %6 ms %7, behind several faults %8; writes %9: %10; belied "
                       "%11, unsettled %12; queue mismatches %13; memory +%14 kB since day 2 %15")
            .arg(run.seed)
            .arg(run.days)
            .arg(run.paced ? QStringLiteral("paced") : QStringLiteral("unpaced"))
            .arg(counts.values)
            .arg(wrong.count)
            .arg(wrong.largestBound_ns / milliseconds(1))
            .arg(wrong.beyond)
            .arg(wrong.beyondOfSeveral)
            .arg(counts.writes)
            .arg(writeEndsText(counts.writeEnds))
            .arg(counts.writesBelied)
            .arg(unsettled)
            .arg(mismatches)
            .arg(growth_kB)
            .arg(life->error);
    return result;
}

} // namespace

ProofResult proveLongLife(const LongRun &run, const DayReport &report)
{
    RigSettings settings = rigSettings(run);
    LongWitness witness(settings.tags);
    settings.session.engine.tap = witness.tap();
    ProofResult failure;
    const std::unique_ptr<Rig> rig = Rig::make(settings, &witness, &failure.text);
    if (!rig)
        return failure;
    witness.watch(&rig->session(), &rig->line());
    const StormLog log = {[&](const QByteArray &request, const QByteArray &reply) {
                              witness.answered(request, reply);
                          },
                          [&](qint64 now_ns) { witness.struck(now_ns); }};
    Storm storm(rig->session().engine().settings(), RARITY, log, run.seed);
    rig->line().setFault(&storm);
    Life life(rig.get(), &witness, run.seed + 1);
    qint64 memory_kB = 0;
    bool alive = true;
    for (int day = 1; day <= run.days && alive; ++day) {
        while (alive && rig->line().now_ns() < START_ns + day * DAY_ns && rig->line().step()) {
            witness.look();
            alive = life.act();
        }
        report(dayText(day, rig.get(), life, storm, witness));
        if (day <= 2)
            memory_kB = memoryInUse_kB();
    }
    rig->line().setFault(nullptr);
    return endOf(run, rig.get(), &life, &witness, memoryInUse_kB() - memory_kB);
}

} // namespace kvt
