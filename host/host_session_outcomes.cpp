// What follows from a request's end: readings, the ends of writes and one-time reads, and what of
// it waits for a proof.
#include "host/host_session.h"

#include <utility>

namespace kvt
{

void HostSession::requestEnded(const Attempt &attempt)
{
    const Request &request = *attempt.request;
    const ReadKey key{request.station, request.area, request.address};
    if (request.kind == RequestKind::Write)
        endWrite(attempt);
    else if (attempt.isSuccess())
        storeReadings(key, attempt);
    else
        readingsFailed(index_.cellsRead(key));
    if (request.kind == RequestKind::OnceRead)
        endOnceRead(attempt);
    if (attempt.isSuccess() && attempt.doubtful)
        tellDoubt(request.station);

    if (!attempt.isSuccess())
        requestFailed(attempt);
    else if (supervisor_.succeeded(request.station))
        countStationSwitch(request.station, true);
}

void HostSession::requestFailed(const Attempt &attempt)
{
    const int station = attempt.request->station;
    writes_.stationFailed(station);
    onceReads_.stationFailed(station);
    const bool wasPolled = supervisor_.state(station) == StationState::On;
    if (!supervisor_.failed(station, attempt.endedAt_ns))
        return;
    api_.EnCommStation(station, 0);
    readingsFailed(index_.cellsOfStation(station));
    if (wasPolled)
        countStationSwitch(station, false);
}

void HostSession::storeReadings(const ReadKey &key, const Attempt &attempt)
{
    const QVector<int> &cells = index_.cellsRead(key);
    for (const int cell : cells)
        storeReading(cell, attempt);
}

void HostSession::storeReading(int cell, const Attempt &attempt)
{
    const TagCell &source = index_.cells().at(cell);
    const int found = api_.GetRegisterData(QString(), source.area, source.addressText,
                                           source.station, reading_, 1);
    if (found == 0 || reading_.size() < 2)
        return;
    Reading reading;
    reading.raw = static_cast<quint16>(static_cast<quint8>(reading_.at(0)) |
                                       (static_cast<quint8>(reading_.at(1)) << 8));
    reading.readAt_ns = attempt.endedAt_ns;
    reading.doubtful = attempt.doubtful;
    if (attempt.unproven)
        holdBack(cell, reading);
    else
        publish(cell, reading);
}

void HostSession::publish(int cell, const Reading &reading)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!values_.read(cell, reading)) {
            ++statistics_.heldBackReadings;
            return;
        }
    }
    for (const int tag : index_.cells().at(cell).tags)
        events_->tagRead(tag, reading);
}

void HostSession::holdBack(int cell, const Reading &reading)
{
    Unproven entry;
    entry.kind = Unproven::Kind::Reading;
    entry.reading = reading;
    entry.cell = cell;
    const std::lock_guard<std::mutex> lock(mutex_);
    entry.writesBefore = values_.writesTo(cell);
    unproven_.push_back(entry);
}

void HostSession::readingsFailed(const QVector<int> &cells)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const int cell : cells)
        values_.readFailed(cell);
}

void HostSession::endWrite(const Attempt &attempt)
{
    const int tag = writes_.retired(attempt.request->id);
    if (tag < 0)
        return;
    WriteReport report = verdictOn(attempt);
    report.id = attempt.request->id;
    report.tag = tag;
    report.timesSent = attempt.timesSent;
    if (!attempt.isSuccess() || !needsProof()) {
        onWriteChanged(report);
        return;
    }
    Unproven entry;
    entry.kind = Unproven::Kind::Write;
    entry.write = report;
    unproven_.push_back(entry);
}

WriteReport HostSession::verdictOn(const Attempt &attempt) const
{
    WriteReport report;
    report.state = WriteState::TimedOut;
    if (attempt.isSuccess()) {
        report.state = WriteState::Uncertain;
        if (attempt.doubtful)
            report.reason = WriteReason::DoubtfulReply;
        else if (attempt.request->isCommand && attempt.timesSent > 1)
            report.reason = WriteReason::SentTwice;
        else
            report.state = WriteState::Acknowledged;
    } else if (attempt.end == AttemptEnd::Refused) {
        report.state = WriteState::Refused;
        report.reason = WriteReason::RefusedByStation;
    } else {
        report.reason =
            attempt.end == AttemptEnd::NoReply ? WriteReason::NoReply : WriteReason::BadReply;
    }
    return report;
}

void HostSession::endOnceRead(const Attempt &attempt)
{
    const int id = attempt.request->id;
    const int tag = onceReads_.ended(id);
    if (tag < 0)
        return;
    if (!attempt.isSuccess() || !needsProof()) {
        events_->onceReadEnded(id, tag, attempt.isSuccess());
        return;
    }
    Unproven entry;
    entry.kind = Unproven::Kind::OnceRead;
    entry.id = id;
    entry.tag = tag;
    unproven_.push_back(entry);
}

void HostSession::prove(const Unproven &entry)
{
    switch (entry.kind) {
    case Unproven::Kind::Write:
        onWriteChanged(entry.write);
        break;
    case Unproven::Kind::OnceRead:
        events_->onceReadEnded(entry.id, entry.tag, true);
        break;
    case Unproven::Kind::Reading:
        // A write that has been requested since may have changed the value.
        if (writesTo(entry.cell) == entry.writesBefore)
            publish(entry.cell, entry.reading);
        break;
    }
}

quint32 HostSession::writesTo(int cell) const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return values_.writesTo(cell);
}

void HostSession::giveUp(const Unproven &entry, WriteReason reason)
{
    WriteReport report = entry.write;
    switch (entry.kind) {
    case Unproven::Kind::Write:
        report.state = WriteState::Uncertain;
        if (report.reason == WriteReason::None)
            report.reason = reason;
        onWriteChanged(report);
        break;
    case Unproven::Kind::OnceRead:
        events_->onceReadEnded(entry.id, entry.tag, false);
        break;
    case Unproven::Kind::Reading:
        break;
    }
}

void HostSession::giveUpUnproven(WriteReason reason)
{
    const std::vector<Unproven> lost = std::exchange(unproven_, {});
    for (const Unproven &entry : lost)
        giveUp(entry, reason);
    events_->proofEnded();
}

void HostSession::tellDoubt(int station)
{
    if (doubtfulStations_.contains(station))
        return;
    doubtfulStations_.insert(station);
    events_->stationDoubtful(station);
}

void HostSession::countStationSwitch(int station, bool on)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        statistics_.stationSwitched(station);
    }
    events_->stationSwitched(station, on);
}

} // namespace kvt
