#include "host/host_session.h"

#include <limits>
#include <utility>

namespace kvt
{

HostSession::HostSession(const DriverApi &api, const SessionSettings &settings,
                         const QVector<Tag> &tags, HostEvents *events)
    : api_(api), settings_(settings), tags_(tags), events_(events), index_(tags),
      setup_(api, tags, settings.retryLimit, settings.engine.remoteMode),
      supervisor_(settings.supervisor, index_.stations()),
      writes_([this](const WriteReport &report) { onWriteChanged(report); }),
      onceReads_([this](int id, int tag, bool good) { events_->onceReadEnded(id, tag, good); }),
      engine_(api, settings.engine, this), values_(index_.cells().size())
{
    if (!settings.readCyclically)
        setup_.stopCyclicReads();
}

void HostSession::stop()
{
    writes_.stopped();
    QVector<Command> left;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        left = std::exchange(commands_, QVector<Command>());
    }
    for (const Command &command : std::as_const(left)) {
        if (command.isWrite)
            onWriteChanged(
                {command.id, command.tag, WriteState::Dropped, WriteReason::HostStopped});
        else
            events_->onceReadEnded(command.id, command.tag, false);
    }
    onceReads_.stopped();
}

int HostSession::write(int tag, const QByteArray &bytes)
{
    Command command;
    command.tag = tag;
    command.isWrite = true;
    command.bytes = bytes;
    return post(command);
}

int HostSession::readOnce(int tag)
{
    Command command;
    command.tag = tag;
    return post(command);
}

int HostSession::post(Command command)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    lastId_ = lastId_ == std::numeric_limits<int>::max() ? 1 : lastId_ + 1;
    command.id = lastId_;
    commands_.append(command);
    // From here on a reading on its way may be older than the write.
    if (command.isWrite && isTag(command.tag))
        values_.writeRequested(index_.cellOf(command.tag));
    return command.id;
}

QVector<CellValue> HostSession::values(qint64 now_ns) const
{
    QVector<CellValue> values;
    values.reserve(tags_.size());
    const std::lock_guard<std::mutex> lock(mutex_);
    for (int tag = 0; tag < tags_.size(); ++tag) {
        const qint64 limit_ns =
            settings_.staleAfterOf_ns.value(tags_.at(tag).name, settings_.staleAfter_ns);
        values.append(values_.value(index_.cellOf(tag), now_ns, limit_ns));
    }
    return values;
}

Statistics HostSession::statistics() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return statistics_;
}

void HostSession::beforeRequest(qint64 now_ns)
{
    for (const int station : supervisor_.takeDueProbes(now_ns))
        api_.EnCommStation(station, 1);
    QVector<Command> commands;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        commands.swap(commands_);
    }
    for (const Command &command : std::as_const(commands))
        run(command);
}

void HostSession::run(const Command &command)
{
    if (command.isWrite)
        queueWrite(command);
    else
        queueOnceRead(command);
}

bool HostSession::isWritable(int tag, const QByteArray &bytes) const
{
    return isTag(tag) && tags_.at(tag).area != Area::C && !bytes.isEmpty();
}

void HostSession::queueWrite(const Command &command)
{
    if (!isWritable(command.tag, command.bytes)) {
        refuse(command, WriteReason::NotWritable);
        return;
    }
    const TagCell &cell = index_.cells().at(index_.cellOf(command.tag));
    const QueuedWrite write{command.id, command.tag, cell.station, cell.area, cell.address};
    if (supervisor_.state(cell.station) == StationState::Off) {
        refuse(command, WriteReason::StationOff);
        return;
    }
    if (writes_.wouldOverflow(write)) {
        refuse(command, WriteReason::QueueFull);
        return;
    }
    QByteArray bytes = command.bytes;
    const int queued = api_.SetRegisterData(QString(), cell.area, cell.addressText, cell.station,
                                            bytes, 1, 0, command.id);
    writes_.queued(write);
    if (queued != writes_.count()) {
        const std::lock_guard<std::mutex> lock(mutex_);
        ++statistics_.queueMismatches;
    }
}

void HostSession::queueOnceRead(const Command &command)
{
    if (!isTag(command.tag)) {
        events_->onceReadEnded(command.id, command.tag, false);
        return;
    }
    const TagCell &cell = index_.cells().at(index_.cellOf(command.tag));
    if (supervisor_.state(cell.station) == StationState::Off) {
        events_->onceReadEnded(command.id, command.tag, false);
        return;
    }
    RW_VAR request;
    request.ownerSubId = command.id;
    request.plcNo = setup_.comInfo().localPlcNo;
    request.areaType = cell.area;
    request.addressText = cell.addressText;
    request.station = cell.station;
    // A full queue does not grow.
    if (api_.AddListOnceReadVar(&request, 0) > onceReads_.count())
        onceReads_.queued(command.id, command.tag, cell.station);
    else
        events_->onceReadEnded(command.id, command.tag, false);
}

void HostSession::refuse(const Command &command, WriteReason reason)
{
    onWriteChanged({command.id, command.tag, WriteState::Refused, reason});
}

void HostSession::onWriteChanged(const WriteReport &report)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        statistics_.writeChanged(report);
        if (report.isFinal() && isTag(report.tag))
            values_.writeEnded(index_.cellOf(report.tag));
    }
    events_->writeChanged(report);
}

void HostSession::requestChosen(const Request &request, qint64)
{
    const bool probe = supervisor_.state(request.station) == StationState::Probing;
    setup_.comInfo().retryLimit = probe ? 0 : settings_.retryLimit;
    // The driver keeps the count over a success; each request has a budget of its own.
    setup_.comInfo().retryCount = 0;
    if (request.kind == RequestKind::Write)
        writes_.sent(request.id);
}

void HostSession::attemptEnded(const Attempt &attempt, const RW_VAR &)
{
    const Request &request = *attempt.request;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        statistics_.attemptEnded(attempt);
        if (attempt.isFinal() && request.kind == RequestKind::CyclicRead)
            statistics_.scan.cyclicReadEnded({request.station, request.area, request.address},
                                             setup_.readListLength(), attempt.endedAt_ns);
    }
    events_->attemptEnded(attempt);
    if (attempt.isFinal())
        requestEnded(attempt);
}

void HostSession::bytesDropped(DroppedBytes kind, int station, int count)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    statistics_.bytesDropped(kind, station, count);
}

void HostSession::lineChanged(bool up, qint64 now_ns)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        statistics_.lineChanged(up, now_ns);
    }
    events_->lineChanged(up, up ? QString() : lineReason_);
}

void HostSession::requestEnded(const Attempt &attempt)
{
    const Request &request = *attempt.request;
    const ReadKey key{request.station, request.area, request.address};
    if (request.kind == RequestKind::Write)
        endWrite(attempt);
    else if (attempt.isSuccess())
        storeReadings(key, attempt.endedAt_ns);
    else
        readingsFailed(index_.cellsRead(key));
    if (request.kind == RequestKind::OnceRead)
        onceReads_.ended(request.id, attempt.isSuccess());

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

void HostSession::storeReadings(const ReadKey &key, qint64 now_ns)
{
    const QVector<int> cells = index_.cellsRead(key);
    for (const int cell : cells)
        storeReading(cell, now_ns);
}

void HostSession::storeReading(int cell, qint64 now_ns)
{
    const TagCell &source = index_.cells().at(cell);
    const int found = api_.GetRegisterData(QString(), source.area, source.addressText,
                                           source.station, reading_, 1);
    if (found == 0 || reading_.size() < 2)
        return;
    const auto raw = static_cast<quint16>(static_cast<quint8>(reading_.at(0)) |
                                          (static_cast<quint8>(reading_.at(1)) << 8));
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!values_.read(cell, raw, now_ns)) {
            ++statistics_.heldBackReadings;
            return;
        }
    }
    for (const int tag : source.tags)
        events_->tagRead(tag, raw, now_ns);
}

void HostSession::readingsFailed(const QVector<int> &cells)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const int cell : cells)
        values_.readFailed(cell);
}

void HostSession::endWrite(const Attempt &attempt)
{
    const int id = attempt.request->id;
    if (attempt.isSuccess())
        writes_.retired(id, WriteState::Acknowledged, WriteReason::None);
    else if (attempt.end == AttemptEnd::Refused)
        writes_.retired(id, WriteState::Refused, WriteReason::RefusedByStation);
    else if (attempt.end == AttemptEnd::NoReply)
        writes_.retired(id, WriteState::TimedOut, WriteReason::NoReply);
    else
        writes_.retired(id, WriteState::TimedOut, WriteReason::BadReply);
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
