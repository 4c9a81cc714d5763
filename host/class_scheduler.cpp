#include "host/class_scheduler.h"

#include <algorithm>

namespace kvt
{

ClassScheduler::ClassScheduler(const ClassPlan &plan, qint64 now_ns)
{
    for (const ReadClass &source : plan.classes()) {
        classes_.emplace_back();
        classes_.back().interval_ns = source.interval_ns;
        classes_.back().waiting.reserve(static_cast<size_t>(source.entries.size()));
    }
    for (const ClassEntry &source : plan.entries()) {
        entries_.emplace_back();
        entries_.back().readClass = source.readClass;
        entries_.back().station = source.key.station;
        const qint64 interval_ns = plan.classes().at(source.readClass).interval_ns;
        entries_.back().lead_ns =
            static_cast<qint64>((1 - source.phase) * static_cast<double>(interval_ns));
    }
    restart(now_ns);
}

void ClassScheduler::restart(qint64 now_ns)
{
    setBack_ns_ = 0;
    for (Entry &entry : entries_)
        entry.due_ns = now_ns - entry.lead_ns;
    gather();
}

/// Whether `one` comes behind `other` of its class: neighbours of a list stay neighbours.
bool ClassScheduler::isLater(int one, int other) const
{
    const qint64 first_ns = entryAt(one).due_ns;
    const qint64 second_ns = entryAt(other).due_ns;
    return first_ns != second_ns ? first_ns > second_ns : one > other;
}

void ClassScheduler::wait(int entry)
{
    std::vector<int> &heap = classes_[static_cast<size_t>(entryAt(entry).readClass)].waiting;
    heap.push_back(entry);
    std::push_heap(heap.begin(), heap.end(), [this](int a, int b) { return isLater(a, b); });
}

int ClassScheduler::pop(Class *from)
{
    std::vector<int> &heap = from->waiting;
    std::pop_heap(heap.begin(), heap.end(), [this](int a, int b) { return isLater(a, b); });
    const int entry = heap.back();
    heap.pop_back();
    return entry;
}

int ClassScheduler::take(qint64 now_ns)
{
    const qint64 clock_ns = now_ns - setBack_ns_;
    Class *chosen = nullptr;
    qint64 soonest_ns = NEVER;
    for (Class &one : classes_) {
        const qint64 due_ns = one.waiting.empty() ? NEVER : entryAt(one.waiting.front()).due_ns;
        if (due_ns > clock_ns || due_ns + one.interval_ns >= soonest_ns)
            continue;
        chosen = &one;
        soonest_ns = due_ns + one.interval_ns;
    }
    if (chosen == nullptr)
        return -1;
    const int number = pop(chosen);
    Entry &entry = entryAt(number);
    // Everything else is behind as well, or will be.
    setBack_ns_ += std::max<qint64>(clock_ns - soonest_ns - chosen->interval_ns, 0);
    entry.due_ns = soonest_ns;
    entry.isUnderWay = true;
    return number;
}

void ClassScheduler::ended(int number)
{
    Entry &entry = entryAt(number);
    if (!entry.isUnderWay)
        return;
    entry.isUnderWay = false;
    if (!entry.isOff)
        wait(number);
}

/// Makes the heaps anew of all that waits.
void ClassScheduler::gather()
{
    for (Class &one : classes_)
        one.waiting.clear();
    for (size_t i = 0; i < entries_.size(); ++i)
        if (!entries_[i].isOff && !entries_[i].isUnderWay)
            wait(static_cast<int>(i));
}

void ClassScheduler::stationOff(int station)
{
    for (Entry &entry : entries_)
        entry.isOff = entry.isOff || entry.station == station;
    gather();
}

void ClassScheduler::stationOn(int station, qint64 now_ns)
{
    for (Entry &entry : entries_) {
        if (entry.station != station || !entry.isOff)
            continue;
        entry.isOff = false;
        entry.due_ns = now_ns - setBack_ns_ - entry.lead_ns;
    }
    gather();
}

qint64 ClassScheduler::due_ns() const
{
    qint64 due_ns = NEVER;
    for (const Class &one : classes_)
        if (!one.waiting.empty())
            due_ns = std::min(due_ns, entryAt(one.waiting.front()).due_ns + setBack_ns_);
    return due_ns;
}

} // namespace kvt
