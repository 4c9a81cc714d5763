#include "host/statistics.h"

#include <numeric>

namespace kvt
{

namespace
{

template <typename Enum>
size_t indexOf(Enum value)
{
    return static_cast<size_t>(value);
}

} // namespace

Outcome outcomeOf(int resultCode)
{
    struct Class {
        int base;
        Outcome outcome;
    };
    static constexpr Class CLASSES[] = {
        {RESULT_LOCAL_BAD_REPLY, Outcome::LocalBadReply},
        {RESULT_LOCAL_NO_REPLY, Outcome::LocalNoReply},
        {RESULT_LOCAL_WRONG_LENGTH, Outcome::LocalWrongLength},
        {RESULT_REMOTE_BAD_REPLY, Outcome::RemoteBadReply},
        {RESULT_REMOTE_NO_REPLY, Outcome::RemoteNoReply},
        {RESULT_REMOTE_WRONG_LENGTH, Outcome::RemoteWrongLength},
    };
    if (resultCode == RESULT_SUCCESS)
        return Outcome::Success;
    if (resultCode == RESULT_REMOTE_SUCCESS)
        return Outcome::SuccessNotStored;
    for (const Class &entry : CLASSES)
        if (resultCode > entry.base && resultCode <= entry.base + RESULT_REQUESTERS)
            return entry.outcome;
    return Outcome::Unknown;
}

quint64 StationStatistics::failuresAt(AttemptEnd end) const
{
    const std::array<quint64, OUTCOMES> &counts = failures.at(indexOf(end));
    return std::accumulate(counts.begin(), counts.end(), quint64{0});
}

void StationStatistics::add(const Attempt &attempt)
{
    ++attempts;
    ++attemptEnds.at(indexOf(attempt.end));
    if (attempt.number > 1)
        ++retries;
    if (attempt.doubtful)
        ++doubtfulReplies;
    if (attempt.doubtful && attempt.isSuccess())
        ++doubtfulTaken;
    if (attempt.isSuccess() && attempt.number == 1)
        replyTime.add(attempt.endedAt_ns - attempt.sentAt_ns);
    if (!attempt.isFinal())
        return;
    ++exchanges;
    const size_t outcome = indexOf(outcomeOf(attempt.resultCode));
    ++outcomes.at(outcome);
    if (!attempt.isSuccess())
        ++failures.at(indexOf(attempt.end)).at(outcome);
    else if (attempt.number > 1)
        ++recoveries;
}

void StationStatistics::addDropped(DroppedBytes kind, int count)
{
    const auto bytes = static_cast<quint64>(count);
    switch (kind) {
    case DroppedBytes::Stale:
        staleBytes += bytes;
        break;
    case DroppedBytes::Late:
        lateBytes += bytes;
        break;
    case DroppedBytes::Echo:
        echoBytes += bytes;
        break;
    }
}

void Statistics::attemptEnded(const Attempt &attempt)
{
    total.add(attempt);
    stations[attempt.request->station].add(attempt);
    wireBytes += static_cast<quint64>(attempt.request->frame.size() + attempt.receivedBytes);
}

void Statistics::bytesDropped(DroppedBytes kind, int station, int count)
{
    total.addDropped(kind, count);
    if (station >= 0)
        stations[station].addDropped(kind, count);
    // An echo is on the line at the same time as the request.
    if (kind != DroppedBytes::Echo)
        wireBytes += static_cast<quint64>(count);
}

void Statistics::stationSwitched(int station)
{
    ++total.stateChanges;
    ++stations[station].stateChanges;
}

void Statistics::writeChanged(const WriteReport &report)
{
    ++writes.at(indexOf(report.state));
}

void Statistics::lineChanged(bool up, qint64 now_ns)
{
    if (up && !started) {
        started = true;
        startedAt_ns = now_ns;
    }
    if (!up && lineIsUp) {
        ++lineFailures;
        scan.interrupted();
    }
    lineIsUp = up;
}

void Statistics::checkpointPassed(qint64 began_ns)
{
    ++checkpoints;
    provedUntil_ns = began_ns;
}

double Statistics::utilisation(qint64 now_ns, qint64 characterTime_ns) const
{
    const qint64 elapsed_ns = now_ns - startedAt_ns;
    if (!started || elapsed_ns <= 0)
        return 0;
    const double busy_ns = static_cast<double>(wireBytes) * static_cast<double>(characterTime_ns);
    return busy_ns / static_cast<double>(elapsed_ns);
}

} // namespace kvt
