// One-time readings that wait in the driver's queue.
#ifndef KVT_HOST_ONCE_READS_H
#define KVT_HOST_ONCE_READS_H

#include "driver/records.h"
#include "host/tag_index.h"

#include <functional>
#include <vector>

namespace kvt
{

/// Returns the driver's one-time read of a cell, whose end is told under `id`.
RW_VAR onceRead(const TagCell &cell, int id, int plcNo);

/// Mirrors the driver's queue of one-time reads, so that the end of each is reported once.
/// Polling thread.
class OnceReads
{
public:
    /// Called for each that fails without being served, from within the call that brings it about.
    using Report = std::function<void(int id, int tag)>;

    explicit OnceReads(Report report);

    /// One has been queued.
    void queued(int id, int tag, int station);

    /// The one with this id has been served. Its end is the caller's to report. Returns its tag, -1
    /// when there is none.
    int ended(int id);

    /// A request to `station` has failed for good: the driver has purged that station's.
    void stationFailed(int station);

    /// The host ends: all have failed.
    void stopped();

    /// Number in the driver's queue.
    int count() const { return static_cast<int>(queue_.size()); }

    /// Number of those with ids above 0, for which somebody waits.
    int asked() const { return asked_; }

    bool contains(int id) const;

private:
    struct Entry {
        int id;
        int tag;
        int station;
    };

    template <typename Condition>
    void failWhere(Condition condition);

    Report report_;
    std::vector<Entry> queue_; // in which a request more asks nothing of the heap
    int asked_ = 0;
};

} // namespace kvt

#endif
