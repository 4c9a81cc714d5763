// When which request of a scan class is read next.
#ifndef KVT_HOST_CLASS_SCHEDULER_H
#define KVT_HOST_CLASS_SCHEDULER_H

#include "host/class_plan.h"
#include "host/host_time.h"

#include <vector>

namespace kvt
{

/// Chooses among the requests whose time has come the one that is to be read soonest: within its
/// interval. As long as the line can do it all are read in time, and each request keeps its rhythm
/// and does not drift. With more to read than the line can do all of them fall behind alike; once
/// one has fallen behind by more than its interval, the clock of the classes is set back. So all
/// intervals become longer by the same factor, no class starves, and behind an interruption there
/// is nothing to be made up for.
///
/// No line and no clock of its own; one thread. Nothing is allocated once it is made.
class ClassScheduler
{
public:
    /// All requests are due at `now_ns`.
    ClassScheduler(const ClassPlan &plan, qint64 now_ns);

    /// All requests are due now, those of one class spread over its interval from then on; one that
    /// is under way, once more when it has ended.
    void restart(qint64 now_ns);

    /// Returns the entry to be read now, which is under way until `ended`; -1 when none is due.
    int take(qint64 now_ns);

    /// The entry that was taken has been read, or could not be.
    void ended(int number);

    /// The entries of a station are left out, or are due again at once. One that is under way stays
    /// so until `ended`.
    void stationOff(int station);
    void stationOn(int station, qint64 now_ns);

    /// When the next entry is due; NEVER when there is none.
    qint64 due_ns() const;

private:
    struct Entry {
        qint64 due_ns = 0; // by the clock of the classes
        qint64 lead_ns =
            0; // how much sooner than the last of its class it must be read at the start
        int readClass = 0;
        int station = 0;
        bool isUnderWay = false;
        bool isOff = false;
    };
    struct Class {
        qint64 interval_ns = 0;
        std::vector<int> waiting; // a heap, the one due first on top
    };

    Entry &entryAt(int entry) { return entries_[static_cast<size_t>(entry)]; }
    const Entry &entryAt(int entry) const { return entries_[static_cast<size_t>(entry)]; }
    bool isLater(int one, int other) const;
    void wait(int entry);
    int pop(Class *from);
    void gather();

    std::vector<Entry> entries_;
    std::vector<Class> classes_;
    qint64 setBack_ns_ = 0; // how far the clock of the classes is behind
};

} // namespace kvt

#endif
