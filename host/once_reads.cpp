#include "host/once_reads.h"

#include <utility>

namespace kvt
{

OnceReads::OnceReads(Report report) : report_(std::move(report)) {}

void OnceReads::queued(int id, int tag, int station)
{
    queue_.append({id, tag, station});
}

int OnceReads::ended(int id)
{
    for (int i = 0; i < queue_.size(); ++i)
        if (queue_.at(i).id == id)
            return queue_.takeAt(i).tag;
    return -1;
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
    const QList<Entry> before = std::exchange(queue_, QList<Entry>());
    for (const Entry &entry : before) {
        if (condition(entry))
            report_(entry.id, entry.tag);
        else
            queue_.append(entry);
    }
}

} // namespace kvt
