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
    // It has left the driver's queue, which what follows may fill anew.
    const int askedTag = request.kind == RequestKind::OnceRead ? onceReads_.ended(request.id) : -1;
    if (request.kind == RequestKind::ClassRead)
        endClassRead(attempt);
    if (request.kind == RequestKind::Write)
        endWrite(attempt);
    else if (attempt.isSuccess())
        storeReadings(key, attempt);
    else
        readingsFailed(index_.cellsRead(key));
    if (askedTag >= 0)
        endOnceRead(askedTag, attempt);
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
    classes_.stationFailed(station);
    const bool wasPolled = supervisor_.state(station) == StationState::On;
    if (!supervisor_.failed(station, attempt.endedAt_ns))
        return;
    api_.EnCommStation(station, 0);
    classes_.stationSwitched(station, false, attempt.endedAt_ns);
    readingsFailed(index_.cellsOfStation(station));
    if (wasPolled)
        countStationSwitch(station, false);
}

void HostSession::storeReadings(const ReadKey &key, const Attempt &attempt)
{
    ++replies_;
    const QVector<int> &cells = index_.cellsRead(key);
    for (const int cell : cells)
        storeReading(cell, attempt);
}

/// Reads what the driver has of a cell.
bool HostSession::fetch(int cell, quint64 *raw)
{
    const TagCell &source = index_.cells().at(cell);
    const int found = api_.GetRegisterData(QString(), source.area, source.addressText,
                                           source.station, reading_, 1);
    if (found == 0 || reading_.size() < 2)
        return false;
    *raw = static_cast<quint64>(static_cast<quint8>(reading_.at(0)) |
                                (static_cast<quint8>(reading_.at(1)) << 8));
    return true;
}

void HostSession::storeReading(int cell, const Attempt &attempt)
{
    Reading reading;
    if (!fetch(cell, &reading.raw))
        return;
    reading.readAt_ns = attempt.endedAt_ns;
    reading.reply = replies_;
    reading.doubtful = attempt.doubtful;
    if (attempt.unproven)
        holdBack(cell, reading);
    else
        publish(cell, reading);
}

void HostSession::readingsFailed(const QVector<int> &cells)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        for (const int cell : cells) {
            values_.readFailed(cell);
            assembly_.readFailed(cell);
        }
        alarms_.lookNext();
    }
    followAssembly();
}

void HostSession::endOnceRead(int tag, const Attempt &attempt)
{
    const int id = attempt.request->id;
    if (partedWrites_.find(id) != nullptr)
        endReadToWrite(id, tag, attempt);
    else if (!attempt.isSuccess() || !needsProof())
        events_->onceReadEnded(id, tag, attempt.isSuccess());
    else
        waitForProof(id, tag);
}

void HostSession::waitForProof(int id, int tag)
{
    Unproven entry;
    entry.kind = Unproven::Kind::OnceRead;
    entry.id = id;
    entry.tag = tag;
    unproven_.push_back(entry);
}

void HostSession::endClassRead(const Attempt &attempt)
{
    const ClassReader::Ended ended = classes_.ended(attempt);
    if (ended.readClass < 0)
        return;
    ClassPace pace;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        ClassPace &kept = statistics_.classes[static_cast<size_t>(ended.readClass)];
        if (!kept.read(ended.since_ns, attempt.endedAt_ns))
            return;
        pace = kept;
    }
    events_->classPaceChanged(pace);
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
        else
            readingLost(entry.cell);
        break;
    case Unproven::Kind::ReadToWrite:
        writeBit(entry.id, entry.reading);
        break;
    }
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
        readingLost(entry.cell);
        break;
    case Unproven::Kind::ReadToWrite:
        onceReadFailed(entry.id, entry.tag);
        break;
    }
}

void HostSession::giveUpUnproven(WriteReason reason)
{
    partedWrites_.decided(reason);
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
