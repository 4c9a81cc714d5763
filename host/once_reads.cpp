#include "host/once_reads.h"

#include <algorithm>
#include <utility>

namespace kvt
{

RW_VAR onceRead(const TagCell &cell, int id, int plcNo)
{
    RW_VAR request;
    request.ownerSubId = id;
    request.plcNo = plcNo;
    request.areaType = cell.area;
    request.addressText = cell.addressText;
    request.station = cell.station;
    return request;
}

OnceReads::OnceReads(Report report) : report_(std::move(report)) {}

void OnceReads::queued(int id, int tag, int station)
{
    queue_.push_back({id, tag, station});
    asked_ += id > 0 ? 1 : 0;
}

int OnceReads::ended(int id)
{
    const auto found = std::find_if(queue_.begin(), queue_.end(),
                                    [id](const Entry &entry) { return entry.id == id; });
    if (found == queue_.end())
        return -1;
    const int tag = found->tag;
    queue_.erase(found);
    asked_ -= id > 0 ? 1 : 0;
    return tag;
}

bool OnceReads::contains(int id) const
{
    return std::any_of(queue_.begin(), queue_.end(),
                       [id](const Entry &entry) { return entry.id == id; });
}

void OnceReads::stationFailed(int station)
{
    failWhere([station](const Entry &entry) { return entry.station == station; });
}

void OnceReads::stopped()
{
    failWhere([](const Entry &) { return true; });
}

template <typename Condition>
void OnceReads::failWhere(Condition condition)
{
    const std::vector<Entry> before = std::exchange(queue_, {});
    std::vector<Entry> failed;
    asked_ = 0;
    for (const Entry &entry : before) {
        if (condition(entry))
            failed.push_back(entry);
        else
            queued(entry.id, entry.tag, entry.station);
    }
    for (const Entry &entry : std::as_const(failed))
        report_(entry.id, entry.tag);
}

} // namespace kvt
