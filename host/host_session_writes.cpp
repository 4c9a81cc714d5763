// The life of a write within the session: its requests to the driver, and how it ended.
#include "host/host_session.h"

#include "tags/tag_elements.h"
#include "tags/value_elements.h"

#include <algorithm>

namespace kvt
{

namespace
{

bool haveCommon(const QVector<int> &some, const QVector<int> &others)
{
    return std::any_of(some.begin(), some.end(), [&](int cell) { return others.contains(cell); });
}

} // namespace

bool HostSession::isWritable(int tag, const QByteArray &bytes) const
{
    if (!isTag(tag) || tags_.at(tag).area == Area::C || bytes.isEmpty())
        return false;
    const Tag &description = tags_.at(tag);
    if (description.form.type == ValueType::Bit)
        return description.form.bitIsWritten;
    const int elements = index_.cellsOf(tag).size();
    return elements == 1 || (bytes.size() == 2 * elements && writeFault(description).isEmpty());
}

/// A bit is put together with its element, so nothing else may write that meanwhile.
bool HostSession::mustWait(const Command &command) const
{
    if (!isTag(command.tag))
        return false;
    const auto clashes = [&](int other) {
        return (isBit(command.tag) || isBit(other)) &&
               haveCommon(index_.cellsOf(command.tag), index_.cellsOf(other));
    };
    return std::any_of(begunWrites_.begin(), begunWrites_.end(), clashes) ||
           std::any_of(waitingWrites_.begin(), waitingWrites_.end(),
                       [&](const Command &other) { return clashes(other.tag); });
}

void HostSession::runWaiting()
{
    const QVector<Command> waiting = std::exchange(waitingWrites_, QVector<Command>());
    for (const Command &command : waiting)
        run(command);
}

PartedWrite HostSession::partsOf(const Command &command) const
{
    PartedWrite write;
    write.id = command.id;
    write.tag = command.tag;
    write.cells = index_.cellsOf(command.tag);
    write.bytes = command.bytes;
    if (!tags_.at(command.tag).isWrittenDown || isBit(command.tag))
        return write;
    std::reverse(write.cells.begin(), write.cells.end());
    write.bytes.clear();
    for (int i = write.cells.size() - 1; i >= 0; --i)
        write.bytes += command.bytes.mid(2 * i, 2);
    return write;
}

void HostSession::startWrite(const Command &command)
{
    const auto isOff = [this](int cell) {
        return supervisor_.state(index_.cells().at(cell).station) == StationState::Off;
    };
    WriteReason fault = WriteReason::None;
    if (!isWritable(command.tag, command.bytes)) {
        fault = WriteReason::NotWritable;
    } else {
        begunWrites_.insert(command.id, command.tag);
        const int cell = index_.cellOf(command.tag);
        if (!isBit(command.tag) && index_.cellsOf(command.tag).size() == 1) {
            fault = queueElement(command.id, command.tag, cell, command.bytes);
        } else {
            partedWrites_.begin(partsOf(command));
            if (!isBit(command.tag))
                writePart(command.id);
            else if (queueRead(command.id, command.tag, cell))
                onWriteChanged({command.id, command.tag, WriteState::Queued, WriteReason::None});
            else
                fault = isOff(cell) ? WriteReason::StationOff : WriteReason::QueueFull;
        }
    }
    if (fault != WriteReason::None)
        onWriteChanged({command.id, command.tag, WriteState::Refused, fault});
}

/// Hands the driver a write of one element. Returns why it cannot be had, or None.
WriteReason HostSession::queueElement(int id, int tag, int number, QByteArray bytes)
{
    const TagCell &cell = index_.cells().at(number);
    const QueuedWrite write{id, tag, cell.station, cell.area, cell.address};
    if (supervisor_.state(cell.station) == StationState::Off)
        return WriteReason::StationOff;
    if (writes_.wouldOverflow(write))
        return WriteReason::QueueFull;
    const int queued =
        api_.SetRegisterData(QString(), cell.area, cell.addressText, cell.station, bytes, 1, 0, id);
    writes_.queued(write);
    if (queued != writes_.count()) {
        const std::lock_guard<std::mutex> lock(mutex_);
        ++statistics_.queueMismatches;
    }
    return WriteReason::None;
}

/// Hands the driver the next part of a write.
void HostSession::writePart(int id)
{
    const PartedWrite write = *partedWrites_.find(id);
    const WriteReason fault =
        queueElement(id, write.tag, write.cells.at(write.done), write.nextBytes());
    if (fault != WriteReason::None)
        onWriteChanged({id, write.tag, WriteState::Refused, fault});
}

/// The element of a bit that is to be written has been read.
void HostSession::endReadToWrite(int id, int tag, const Attempt &attempt)
{
    Unproven entry;
    entry.kind = Unproven::Kind::ReadToWrite;
    entry.id = id;
    entry.tag = tag;
    if (!attempt.isSuccess() || attempt.doubtful ||
        !fetch(index_.cellOf(tag), &entry.reading.raw)) {
        onceReadFailed(id, tag);
        return;
    }
    if (needsProof())
        unproven_.push_back(entry);
    else
        writeBit(id, entry.reading);
}

void HostSession::writeBit(int id, const Reading &reading)
{
    PartedWrite write = *partedWrites_.find(id);
    const Tag &tag = tags_.at(write.tag);
    auto element = static_cast<quint16>(reading.raw);
    const bool isSet =
        std::any_of(write.bytes.begin(), write.bytes.end(), [](char byte) { return byte != 0; });
    splitElements(tag.form, tag.area, isSet ? 1 : 0, &element);
    write.bytes = QByteArray(1, static_cast<char>(element & 0xFF)) +
                  QByteArray(1, static_cast<char>(element >> 8));
    if (tag.area == Area::X)
        write.bytes.truncate(1);
    partedWrites_.setBytes(id, write.bytes);
    writePart(id);
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
    if (attempt.isSuccess() && partedWrites_.find(report.id) != nullptr) {
        const std::optional<WriteReport> whole = partedWrites_.acknowledged(report, !needsProof());
        if (!whole) {
            writePart(report.id);
            return;
        }
        report = *whole;
    }
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

void HostSession::onWriteChanged(const WriteReport &report)
{
    if (partedWrites_.find(report.id) == nullptr) {
        tellWrite(report);
        return;
    }
    const std::optional<WriteReport> whole = partedWrites_.changed(report);
    if (whole)
        tellWrite(*whole);
}

void HostSession::tellWrite(const WriteReport &report)
{
    if (report.isFinal())
        begunWrites_.remove(report.id);
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        statistics_.writeChanged(report);
        if (report.isFinal() && isTag(report.tag))
            for (const int cell : index_.cellsOf(report.tag))
                values_.writeEnded(cell);
    }
    events_->writeChanged(report);
}

} // namespace kvt
