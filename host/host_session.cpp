#include "host/host_session.h"

#include <limits>
#include <utility>

namespace kvt
{

namespace
{

// As many as the driver serves of one kind before it goes on to the next.
constexpr size_t MOST_UNPROVEN = 5;

} // namespace

HostSession::HostSession(const DriverApi &api, const SessionSettings &settings,
                         const QVector<Tag> &tags, HostEvents *events)
    : api_(api), settings_(settings), tags_(tags), events_(events), index_(tags),
      setup_(api, tags, settings.retryLimit, settings.engine.remoteMode),
      supervisor_(settings.supervisor, index_.stations()),
      writes_([this](const WriteReport &report) { onWriteChanged(report); }),
      onceReads_([this](int id, int tag) { events_->onceReadEnded(id, tag, false); }),
      engine_(api, settings.engine, this), values_(index_.cells().size()),
      lastId_(settings.lastRequestId)
{
    if (!settings.readCyclically)
        setup_.stopCyclicReads();
}

void HostSession::stop()
{
    giveUpUnproven(WriteReason::HostStopped);
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
    haveCommands_ = true;
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
        values.last().provedUntil_ns = statistics_.provedUntil_ns;
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
    if (!haveCommands_)
        return;
    QVector<Command> commands;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        commands.swap(commands_);
        haveCommands_ = false;
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

void HostSession::requestChosen(const Request &request)
{
    const bool probe = supervisor_.state(request.station) == StationState::Probing;
    const int limit = request.isCommand ? settings_.commandRetryLimit : settings_.retryLimit;
    setup_.comInfo().retryLimit = probe ? 0 : limit;
    // The driver keeps the count over a success; each request has a budget of its own.
    setup_.comInfo().retryCount = 0;
    if (request.kind == RequestKind::Write)
        writes_.sent(request.id);
}

void HostSession::attemptEnded(const Attempt &attempt)
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
    // A few requests share a proof; the last of them does not wait for more.
    const bool isLast = writes_.count() == 0 && onceReads_.count() == 0;
    if (unproven_.size() >= MOST_UNPROVEN || (!unproven_.empty() && isLast))
        engine_.askForProof();
}

void HostSession::checkpointPassed(qint64 began_ns)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        statistics_.checkpointPassed(began_ns);
    }
    const std::vector<Unproven> proved = std::exchange(unproven_, {});
    for (const Unproven &entry : proved)
        prove(entry);
    events_->proofEnded();
}

void HostSession::checkpointVoid()
{
    giveUpUnproven(WriteReason::NotProved);
}

void HostSession::outOfStep(qint64 provedUntil_ns)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        ++statistics_.timesOutOfStep;
    }
    events_->outOfStep();
    withdraw(provedUntil_ns);
}

void HostSession::withdraw(qint64 provedUntil_ns)
{
    QVector<int> cells;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        cells = values_.withdraw(provedUntil_ns);
    }
    for (const int cell : std::as_const(cells))
        for (const int tag : index_.cells().at(cell).tags)
            events_->tagSuspect(tag);
    giveUpUnproven(WriteReason::NotProved);
}

void HostSession::bytesDropped(DroppedBytes kind, int station, int count)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    statistics_.bytesDropped(kind, station, count);
}

void HostSession::lineChanged(bool up, qint64 now_ns)
{
    qint64 provedUntil_ns = 0;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        statistics_.lineChanged(up, now_ns);
        provedUntil_ns = statistics_.provedUntil_ns;
    }
    // What waits for the next pause will not be proved by it: another line may come up.
    if (!up && needsProof())
        withdraw(provedUntil_ns);
    events_->lineChanged(up, up ? QString() : lineReason_);
}

} // namespace kvt
