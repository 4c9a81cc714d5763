#include "host/once_reads.h"

#include <utility>

namespace kvt
{

OnceReads::OnceReads(Report report) : report_(std::move(report)) {}

void OnceReads::queued(int id, int tag, int station)
{
    queue_.append({id, tag, station});
}

void OnceReads::ended(int id, bool good)
{
    endWhere([id](const Entry &entry) { return entry.id == id; }, good);
}

void OnceReads::stationFailed(int station)
{
    endWhere([station](const Entry &entry) { return entry.station == station; }, false);
}

void OnceReads::stopped()
{
    endWhere([](const Entry &) { return true; }, false);
}

template <typename Condition>
void OnceReads::endWhere(Condition condition, bool good)
{
    const QList<Entry> before = std::exchange(queue_, QList<Entry>());
    for (const Entry &entry : before) {
        if (condition(entry))
            report_(entry.id, entry.tag, good);
        else
            queue_.append(entry);
    }
}

} // namespace kvt
