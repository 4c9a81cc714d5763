#include "host/host_session.h"

#include "tags/tag_watch.h"

#include <algorithm>
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
      onceReads_([this](int id, int tag) { onceReadFailed(id, tag); }), classes_(tags, index_),
      engine_(api, settings.engine, this), values_(index_.cells().size()), assembly_(tags_, index_),
      alarms_(tags_), lastId_(settings.lastRequestId)
{
    statistics_.classes = classes_.paces();
    setLimits();
    if (settings.readCyclically)
        return;
    setup_.stopCyclicReads();
    classes_.stop();
}

/// A tag that is read seldom is not stale before it can have been read again.
void HostSession::setLimits()
{
    for (const Tag &tag : tags_) {
        const qint64 usual_ns = std::max(settings_.staleAfter_ns, 3 * intervalOf_ns(tag));
        staleAfter_ns_.append(settings_.staleAfterOf_ns.value(tag.name, usual_ns));
    }
}

void HostSession::stop()
{
    isStopping_ = true;
    giveUpUnproven(WriteReason::HostStopped);
    writes_.stopped();
    QVector<Command> left;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        left = std::exchange(commands_, QVector<Command>());
    }
    for (const Command &command : waitingWrites_ + left) {
        if (command.isWrite)
            onWriteChanged(
                {command.id, command.tag, WriteState::Dropped, WriteReason::HostStopped});
        else
            events_->onceReadEnded(command.id, command.tag, false);
    }
    waitingWrites_.clear();
    onceReads_.stopped();
    for (const AskedRead &read : std::exchange(askedReads_, {}))
        events_->onceReadEnded(read.id, read.tag, false);
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
        for (const int cell : index_.cellsOf(command.tag))
            values_.writeRequested(cell);
    return command.id;
}

/// A tag's value without writes that are pending and what is the same for all. The lock is held.
TagValue HostSession::valueOf(int tag, qint64 now_ns) const
{
    const qint64 limit_ns = staleAfter_ns_.at(tag);
    return index_.isAssembled(tag) ? assembly_.value(tag, now_ns, limit_ns)
                                   : values_.value(index_.cellOf(tag), now_ns, limit_ns);
}

QVector<TagValue> HostSession::values(qint64 now_ns) const
{
    QVector<TagValue> values;
    values.reserve(tags_.size());
    const std::lock_guard<std::mutex> lock(mutex_);
    for (int tag = 0; tag < tags_.size(); ++tag) {
        TagValue value = valueOf(tag, now_ns);
        const QVector<int> &cells = index_.cellsOf(tag);
        value.writePending = std::any_of(cells.begin(), cells.end(),
                                         [this](int cell) { return values_.isWritePending(cell); });
        value.provedUntil_ns = statistics_.provedUntil_ns;
        values.append(value);
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
        switchOn(station, now_ns);
    if (!waitingWrites_.isEmpty())
        runWaiting();
    if (haveCommands_)
        runCommands();
    if (!alarms_.isEmpty())
        followAlarms(now_ns);
    if (!classes_.isEmpty())
        classes_.queueDue(api_, setup_.comInfo().localPlcNo, now_ns);
}

void HostSession::switchOn(int station, qint64 now_ns)
{
    api_.EnCommStation(station, 1);
    classes_.stationSwitched(station, true, now_ns);
}

void HostSession::runCommands()
{
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
    if (!command.isWrite)
        queueOnceRead(command);
    else if (mustWait(command))
        waitingWrites_.append(command);
    else
        startWrite(command);
}

void HostSession::queueOnceRead(const Command &command)
{
    if (!isTag(command.tag)) {
        events_->onceReadEnded(command.id, command.tag, false);
        return;
    }
    if (index_.takesSeveralRequests(command.tag))
        beginAskedRead({command.id, command.tag});
    else if (!queueRead(command.id, command.tag, index_.cellOf(command.tag)))
        events_->onceReadEnded(command.id, command.tag, false);
}

/// Queues a one-time read. Returns false when the station is off or the driver's queue is full.
bool HostSession::queueRead(int id, int tag, int number)
{
    const TagCell &cell = index_.cells().at(number);
    if (supervisor_.state(cell.station) == StationState::Off)
        return false;
    RW_VAR request = onceRead(cell, id, setup_.comInfo().localPlcNo);
    // A full queue does not grow.
    if (api_.AddListOnceReadVar(&request, 0) <= onceReads_.count() + classes_.queued())
        return false;
    onceReads_.queued(id, tag, cell.station);
    return true;
}

void HostSession::onceReadFailed(int id, int tag)
{
    if (id <= OWN_READ_ID)
        readingLost(OWN_READ_ID - id);
    else if (partedWrites_.find(id) != nullptr)
        onWriteChanged({id, tag, WriteState::Dropped,
                        isStopping_ ? WriteReason::HostStopped : WriteReason::NotRead});
    else
        events_->onceReadEnded(id, tag, false);
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
    const bool isLast = writes_.count() == 0 && onceReads_.asked() == 0;
    if (unproven_.size() >= MOST_UNPROVEN || (!unproven_.empty() && isLast))
        engine_.askForProof();
}

void HostSession::checkpointPassed(qint64 began_ns)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        statistics_.checkpointPassed(began_ns);
    }
    partedWrites_.decided();
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
    QVector<int> assembled;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        cells = values_.withdraw(provedUntil_ns);
        assembled = assembly_.withdraw(provedUntil_ns);
        alarms_.lookNext();
    }
    for (const int cell : std::as_const(cells))
        for (const int tag : index_.cells().at(cell).tags)
            events_->tagSuspect(tag);
    for (const int tag : std::as_const(assembled))
        events_->tagSuspect(tag);
    followAssembly();
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
    if (up && settings_.readCyclically)
        classes_.lineUp(now_ns);
    // What waits for the next pause will not be proved by it: another line may come up.
    if (!up && needsProof())
        withdraw(provedUntil_ns);
    events_->lineChanged(up, up ? QString() : lineReason_);
    if (!up)
        loseAlarms(now_ns);
}

} // namespace kvt
