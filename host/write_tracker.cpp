#include "host/write_tracker.h"

#include "driver/records.h"

#include <utility>

namespace kvt
{

namespace
{

bool sameTarget(const QueuedWrite &one, const QueuedWrite &other)
{
    return one.station == other.station && one.area == other.area && one.address == other.address;
}

} // namespace

QString writeStateName(WriteState state)
{
    switch (state) {
    case WriteState::Queued:
        return QStringLiteral("queued");
    case WriteState::Sent:
        return QStringLiteral("sent");
    case WriteState::Acknowledged:
        return QStringLiteral("acknowledged");
    case WriteState::Refused:
        return QStringLiteral("refused");
    case WriteState::TimedOut:
        return QStringLiteral("timed out");
    case WriteState::Dropped:
        return QStringLiteral("dropped");
    case WriteState::Uncertain:
        return QStringLiteral("uncertain");
    case WriteState::PartlyWritten:
        return QStringLiteral("partly written");
    }
    return QString();
}

QString writeReasonText(WriteReason reason)
{
    switch (reason) {
    case WriteReason::None:
        break;
    case WriteReason::NotWritable:
        return QStringLiteral("it cannot be written");
    case WriteReason::StationOff:
        return QStringLiteral("the station is switched off");
    case WriteReason::QueueFull:
        return QStringLiteral("too many writes are waiting");
    case WriteReason::RefusedByStation:
        return QStringLiteral("the station refused it");
    case WriteReason::NoReply:
        return QStringLiteral("the station did not answer");
    case WriteReason::BadReply:
        return QStringLiteral("the station's answer was no acknowledgement");
    case WriteReason::Replaced:
        return QStringLiteral("a newer value took its place");
    case WriteReason::PurgedByFailure:
        return QStringLiteral("another request to the station failed");
    case WriteReason::HostStopped:
        return QStringLiteral("the host was stopped");
    case WriteReason::DoubtfulReply:
        return QStringLiteral("its acknowledgement does not look like the station's");
    case WriteReason::NotProved:
        return QStringLiteral("its acknowledgement may be that of another request");
    case WriteReason::SentTwice:
        return QStringLiteral("it was sent more than once and may have been carried out each time");
    case WriteReason::NotRead:
        return QStringLiteral("what else its element holds could not be read");
    }
    return QString();
}

WriteTracker::WriteTracker(Report report) : report_(std::move(report)) {}

bool WriteTracker::wouldOverflow(const QueuedWrite &write) const
{
    return queue_.size() >= QUEUE_LIMIT && replaceableIndex(write) < 0;
}

void WriteTracker::queued(const QueuedWrite &write)
{
    const int index = replaceableIndex(write);
    if (index < 0) {
        queue_.append(write);
    } else {
        const QueuedWrite old = std::exchange(queue_[index], write);
        report(old, WriteState::Dropped, WriteReason::Replaced);
    }
    report(write, WriteState::Queued, WriteReason::None);
}

void WriteTracker::sent(int id)
{
    while (!queue_.isEmpty() && queue_.first().id != id)
        dropFront(WriteReason::StationOff);
    if (queue_.isEmpty())
        return;
    firstIsSent_ = true;
    report(queue_.first(), WriteState::Sent, WriteReason::None);
}

int WriteTracker::retired(int id)
{
    if (queue_.isEmpty() || queue_.first().id != id)
        return -1;
    firstIsSent_ = false;
    return queue_.takeFirst().tag;
}

void WriteTracker::stationFailed(int station)
{
    QList<QueuedWrite> kept;
    const QList<QueuedWrite> before = std::exchange(queue_, QList<QueuedWrite>());
    for (const QueuedWrite &write : before) {
        if (write.station == station)
            report(write, WriteState::Dropped, WriteReason::PurgedByFailure);
        else
            kept.append(write);
    }
    queue_ = kept;
}

void WriteTracker::stopped()
{
    if (firstIsSent_)
        report(queue_.takeFirst(), WriteState::TimedOut, WriteReason::HostStopped);
    firstIsSent_ = false;
    while (!queue_.isEmpty())
        dropFront(WriteReason::HostStopped);
}

int WriteTracker::replaceableIndex(const QueuedWrite &write) const
{
    for (int i = 1; i < queue_.size(); ++i)
        if (sameTarget(queue_.at(i), write))
            return i;
    return -1;
}

void WriteTracker::dropFront(WriteReason reason)
{
    report(queue_.takeFirst(), WriteState::Dropped, reason);
}

void WriteTracker::report(const QueuedWrite &write, WriteState state, WriteReason reason)
{
    WriteReport change;
    change.id = write.id;
    change.tag = write.tag;
    change.state = state;
    change.reason = reason;
    report_(change);
}

} // namespace kvt
