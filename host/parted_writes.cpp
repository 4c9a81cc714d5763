#include "host/parted_writes.h"

#include <algorithm>

namespace kvt
{

void PartedWrites::begin(const PartedWrite &write)
{
    Entry entry;
    entry.write = write;
    entries_.push_back(entry);
}

std::vector<PartedWrites::Entry>::iterator PartedWrites::entryOf(int id)
{
    return std::find_if(entries_.begin(), entries_.end(),
                        [id](const Entry &entry) { return entry.write.id == id; });
}

const PartedWrite *PartedWrites::find(int id) const
{
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [id](const Entry &entry) { return entry.write.id == id; });
    return found == entries_.end() ? nullptr : &found->write;
}

bool PartedWrites::isNews(const Entry &entry, WriteState state)
{
    return state == WriteState::Sent ? entry.told != WriteState::Sent
                                     : entry.told == WriteState::Refused;
}

std::optional<WriteReport> PartedWrites::changed(const WriteReport &part)
{
    const auto entry = entryOf(part.id);
    WriteReport report = part;
    if (!part.isFinal()) {
        if (!isNews(*entry, part.state))
            return std::nullopt;
        entry->told = part.state;
        return report;
    }
    report.timesSent = std::max(part.timesSent, entry->timesSent);
    if (entry->write.done > 0)
        report.state = WriteState::PartlyWritten;
    entries_.erase(entry);
    return report;
}

std::optional<WriteReport> PartedWrites::acknowledged(const WriteReport &part, bool isProved)
{
    const auto entry = entryOf(part.id);
    ++entry->write.done;
    entry->timesSent = std::max(entry->timesSent, part.timesSent);
    entry->isUnproven = entry->isUnproven || !isProved;
    if (entry->doubt == WriteReason::None)
        entry->doubt = part.reason;
    if (entry->write.done < entry->write.cells.size())
        return std::nullopt;
    WriteReport report = part;
    report.timesSent = entry->timesSent;
    report.reason = entry->doubt;
    report.state =
        entry->doubt == WriteReason::None ? WriteState::Acknowledged : WriteState::Uncertain;
    entries_.erase(entry);
    return report;
}

void PartedWrites::decided(WriteReason doubt)
{
    for (Entry &entry : entries_) {
        if (entry.isUnproven && entry.doubt == WriteReason::None)
            entry.doubt = doubt;
        entry.isUnproven = false;
    }
}

} // namespace kvt
