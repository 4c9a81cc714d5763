#include "host/scan_plan.h"

#include "host/class_plan.h"
#include "host/reply_times.h"
#include "host/tag_index.h"

#include <QMap>
#include <QSet>

#include <algorithm>

namespace kvt
{

namespace
{

constexpr int READ_REQUEST_bytes = 8;
constexpr int ACKNOWLEDGEMENT_bytes = 6;

int replyLength(int area)
{
    switch (static_cast<Area>(area)) {
    case Area::X:
        return 6;
    case Area::D:
        return 8;
    case Area::C:
        break;
    }
    return 144;
}

int writeLength(Area area)
{
    return area == Area::D ? 12 : 10;
}

// Adds one request after the other to a plan.
class Planner
{
public:
    Planner(const PlanSettings &settings, const ClassPlan &classes);

    void addRead(const ReadKey &key);
    void addWritable(Area area);
    ScanPlan finish();

private:
    qint64 exchange_ns(const StationTiming &timing, int bytes) const;
    qint64 failedAttempt_ns(int station, int expectedLength) const;
    qint64 pauses_ns(qint64 requests) const;
    void planDeath(StationPlan *station, int longestReply) const;

    PlanSettings settings_;
    const ClassPlan &classPlan_;
    QVector<ReadLoad> classes_;
    ReadLoad cyclic_;
    ScanPlan plan_;
    QMap<int, StationPlan> stations_;
    QMap<int, int> longestReply_; // by station
};

Planner::Planner(const PlanSettings &settings, const ClassPlan &classes)
    : settings_(settings), classPlan_(classes), classes_(classes.classes().size())
{
    for (int i = 0; i < classes_.size(); ++i)
        classes_[i].interval_ns = classes.classes().at(i).interval_ns;
}

qint64 Planner::exchange_ns(const StationTiming &timing, int bytes) const
{
    return bytes * settings_.engine.characterTime_ns + settings_.turnaround_ns +
           settings_.overhead_ns + timing.gapAfterReply_ns;
}

// The request, the wait for a reply that does not come, and the silence behind it.
qint64 Planner::failedAttempt_ns(int station, int expectedLength) const
{
    return READ_REQUEST_bytes * settings_.engine.characterTime_ns +
           settings_.engine.replyTimeout_ns(station, expectedLength) +
           settings_.engine.quietTime_ns(station, expectedLength);
}

void Planner::addRead(const ReadKey &key)
{
    const int bytes = READ_REQUEST_bytes + replyLength(key.area);
    const qint64 time_ns = exchange_ns(settings_.engine.timingOf(key.station), bytes);
    ++plan_.reads;
    plan_.bytes += bytes;
    const int entry = classPlan_.entryOf(key);
    ReadLoad &load = entry < 0 ? cyclic_ : classes_[classPlan_.entries().at(entry).readClass];
    ++load.reads;
    load.round_ns += time_ns;
    plan_.longestRead_ns = std::max(plan_.longestRead_ns, time_ns);
    StationPlan &station = stations_[key.station];
    station.station = key.station;
    ++station.reads;
    station.share_ns += time_ns;
    longestReply_[key.station] = std::max(longestReply_.value(key.station), replyLength(key.area));
}

void Planner::addWritable(Area area)
{
    // Gaps of single stations are part of the reads; a write's is that of the common timing.
    const int bytes = writeLength(area) + ACKNOWLEDGEMENT_bytes;
    plan_.write_ns = std::max(plan_.write_ns, exchange_ns(settings_.engine.defaultTiming, bytes));
}

// Every attempt at a station that is On is made retryLimit + 1 times; a probe is made once.
void Planner::planDeath(StationPlan *station, int longestReply) const
{
    const qint64 attempt_ns = failedAttempt_ns(station->station, longestReply);
    const qint64 failure_ns = (settings_.retryLimit + 1) * attempt_ns;
    station->deathOnce_ns = settings_.supervisor.failuresToSwitchOff * failure_ns;
    station->deathProbe_ns = attempt_ns;
    station->deathUnsupervised_ns = station->reads * failure_ns - station->share_ns;
}

// Every few requests share a pause that proves their replies.
qint64 Planner::pauses_ns(qint64 requests) const
{
    if (settings_.engine.checkpointShare <= 0 && !settings_.engine.confirm)
        return 0;
    return (requests + BURST - 1) / BURST * ReplyTimes::pauseAfter_ns(settings_.turnaround_ns);
}

// A write can come just after a request has gone out and must wait for its answer. At worst that
// is the fifth write in a row: then five one-time reads and a cyclic read are served first, and
// again after every five of the writes in front.
ScanPlan Planner::finish()
{
    // Pauses take their share of all that the line does.
    plan_.classes = forecastClasses(classes_, cyclic_, settings_.engine.checkpointShare);
    plan_.scan_ns = plan_.classes.cyclic_ns;
    for (StationPlan &station : stations_) {
        planDeath(&station, longestReply_.value(station.station));
        plan_.stations.append(station);
    }
    if (plan_.write_ns > 0) {
        const qint64 turns = 1 + settings_.writesAhead / BURST;
        const qint64 others_ns = (BURST + 1) * plan_.longestRead_ns;
        const qint64 writes = settings_.writesAhead + 2; // one under way, and the operator's own
        plan_.writeAlone_ns = plan_.longestRead_ns + plan_.write_ns + pauses_ns(1);
        plan_.writeBusy_ns =
            writes * plan_.write_ns + turns * others_ns + pauses_ns(writes + turns * (BURST + 1));
    }
    return plan_;
}

} // namespace

ScanPlan planScan(const QVector<Tag> &tags, const PlanSettings &settings)
{
    const TagIndex index(tags);
    const ClassPlan classes(tags, index);
    Planner planner(settings, classes);
    QSet<ReadKey> known;
    for (int cell = 0; cell < index.cells().size(); ++cell) {
        const ReadKey key = index.readKeyOf(cell);
        if (!known.contains(key))
            planner.addRead(key);
        known.insert(key);
    }
    // All words of a value but the last are read twice.
    for (int tag = 0; tag < tags.size(); ++tag)
        if (index.takesSeveralRequests(tag) && !tags.at(tag).acceptsTorn)
            for (int i = 0; i + 1 < index.cellsOf(tag).size(); ++i)
                planner.addRead(index.readKeyOf(index.cellsOf(tag).at(i)));
    for (const Tag &tag : tags)
        if (tag.area != Area::C)
            planner.addWritable(tag.area);
    return planner.finish();
}

} // namespace kvt
