// How readings of cells become values of tags, and the readings that the host makes for it.
#include "host/host_session.h"

#include <algorithm>
#include <iterator>

namespace kvt
{

namespace
{

// The driver's queue takes no more than it has room for; the application's reads go first.
constexpr int MOST_OWN_READS = QUEUE_LIMIT / 2;

} // namespace

void HostSession::publish(int cell, const Reading &reading)
{
    const TagCell &source = index_.cells().at(cell);
    bool isTaken = false;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        isTaken = values_.read(cell, reading);
        if (!isTaken) {
            ++statistics_.heldBackReadings;
            assembly_.lost(cell);
        } else if (!source.assembled.isEmpty()) {
            assembly_.read(cell, reading);
        }
    }
    // One that may be older than a write is told to nobody.
    if (isTaken)
        for (const int tag : source.tags)
            tellRead(tag, reading);
    if (!source.assembled.isEmpty())
        followAssembly();
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

quint32 HostSession::writesTo(int cell) const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return values_.writesTo(cell);
}

void HostSession::readingLost(int cell)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        assembly_.lost(cell);
    }
    followAssembly();
}

/// Does what follows from the latest calls of the assembly.
void HostSession::followAssembly()
{
    for (size_t i = 0; i < assembly_.wanted().size(); ++i)
        readCell(assembly_.wanted()[i]);
    for (size_t i = 0; i < assembly_.events().size(); ++i) {
        const ValueAssembly::Event event = assembly_.events()[i];
        if (event.outcome == ValueAssembly::Outcome::Assembled)
            tellRead(event.tag, assembly_.readingOf(event.tag));
        else if (event.outcome == ValueAssembly::Outcome::Torn)
            tellTorn(event.tag);
        endAskedReads(event.tag, event.outcome == ValueAssembly::Outcome::Assembled);
    }
    assembly_.clear();
}

/// Queues a reading of a cell for the host's own ends, unless one is on its way.
void HostSession::readCell(int cell)
{
    const int id = OWN_READ_ID - cell;
    if (onceReads_.contains(id))
        return;
    const int ownReads = onceReads_.count() - onceReads_.asked();
    if (ownReads < MOST_OWN_READS && queueRead(id, -1, cell))
        return;
    const std::lock_guard<std::mutex> lock(mutex_);
    assembly_.lost(cell);
}

void HostSession::beginAskedRead(const AskedRead &read)
{
    askedReads_.push_back(read);
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        assembly_.begin(read.tag);
    }
    followAssembly();
}

void HostSession::endAskedReads(int tag, bool good)
{
    if (askedReads_.empty())
        return;
    const auto isOfTag = [tag](const AskedRead &read) { return read.tag == tag; };
    std::vector<AskedRead> ended;
    std::copy_if(askedReads_.begin(), askedReads_.end(), std::back_inserter(ended), isOfTag);
    askedReads_.erase(std::remove_if(askedReads_.begin(), askedReads_.end(), isOfTag),
                      askedReads_.end());
    for (const AskedRead &read : ended) {
        if (!good || !needsProof() || isProved(tag))
            events_->onceReadEnded(read.id, tag, good);
        else
            waitForProof(read.id, tag);
    }
}

bool HostSession::isProved(int tag) const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return assembly_.newestAt_ns(tag) <= statistics_.provedUntil_ns;
}

} // namespace kvt
