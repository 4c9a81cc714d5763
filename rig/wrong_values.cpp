#include "rig/wrong_values.h"

#include "host/host_session.h"

#include <algorithm>

namespace kvt
{

namespace
{

constexpr int ATTEMPTS = 3; // as a session has them
constexpr int LONGEST_REPLY_BYTES = 144;

} // namespace

void WrongValues::attemptEnded(const Attempt &attempt, qint64 began_ns)
{
    if (attempt.isSuccess() && attempt.timesSent == 1)
        times_.add(attempt.request->station, began_ns - attempt.sentAt_ns);
}

void WrongValues::shown(int tag, qint64 now_ns, bool several)
{
    ++count;
    wrong_.insert(tag, {now_ns, bound_ns(), several});
}

void WrongValues::hidden(int tag, qint64 now_ns)
{
    const auto found = wrong_.find(tag);
    if (found == wrong_.end())
        return;
    // Older than that it was stale, even if nothing happened on the line and nobody looked.
    const qint64 shown_ns = std::min(now_ns - found->since_ns, SessionSettings().staleAfter_ns);
    longest_ns = std::max(longest_ns, shown_ns);
    largestBound_ns = std::max(largestBound_ns, found->bound_ns);
    if (shown_ns > found->bound_ns)
        ++(found->several ? beyondOfSeveral : beyond);
    wrong_.erase(found);
}

void WrongValues::look(const QVector<TagValue> &values, qint64 now_ns)
{
    const QList<int> tags = wrong_.keys();
    for (const int tag : tags)
        if (values.at(tag).quality != Quality::Good)
            hidden(tag, now_ns);
}

void WrongValues::finish(qint64 now_ns)
{
    const QList<int> tags = wrong_.keys();
    for (const int tag : tags)
        hidden(tag, now_ns);
}

qint64 WrongValues::bound_ns() const
{
    if (engine_.confirm)
        return 0;
    qint64 pause_ns = 0;
    qint64 attempt_ns = 0;
    for (const int station : stations_) {
        pause_ns = std::max(pause_ns, times_.pause_ns(station));
        attempt_ns = std::max(attempt_ns, engine_.replyTimeout_ns(station, LONGEST_REPLY_BYTES) +
                                              engine_.quietTime_ns(station, LONGEST_REPLY_BYTES));
    }
    return static_cast<qint64>(static_cast<double>(pause_ns) / engine_.checkpointShare) + pause_ns +
           ATTEMPTS * attempt_ns;
}

} // namespace kvt
