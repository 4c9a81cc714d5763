#include "host/class_plan.h"

#include "tags/tag_watch.h"

#include <QMap>

#include <algorithm>

namespace kvt
{

namespace
{

struct Wish {
    qint64 interval_ns = 0; // the shortest
    bool isCyclic = false;
    int cell = 0;
};

/// The requests in the order of the list, with what their tags wish.
struct Wishes {
    QVector<ReadKey> order;
    QHash<ReadKey, Wish> byKey;

    void add(const ReadKey &key, int cell, qint64 interval_ns)
    {
        const bool isNew = !byKey.contains(key);
        Wish &wish = byKey[key];
        if (isNew) {
            order.append(key);
            wish.cell = cell;
            wish.interval_ns = interval_ns;
        }
        wish.isCyclic = wish.isCyclic || interval_ns == 0;
        wish.interval_ns = std::min(wish.interval_ns, interval_ns);
    }
};

} // namespace

ClassPlan::ClassPlan(const QVector<Tag> &tags, const TagIndex &index)
{
    Wishes wishes;
    for (int tag = 0; tag < tags.size(); ++tag) {
        const qint64 interval_ns = intervalOf_ns(tags.at(tag));
        for (const int cell : index.cellsOf(tag))
            wishes.add(index.readKeyOf(cell), cell, interval_ns);
    }
    QMap<qint64, QVector<int>> byInterval;
    for (const ReadKey &key : std::as_const(wishes.order)) {
        const Wish wish = wishes.byKey.value(key);
        if (wish.isCyclic)
            continue;
        entryByKey_.insert(key, entries_.size());
        byInterval[wish.interval_ns].append(entries_.size());
        entries_.append({key, wish.cell, 0});
    }
    for (auto interval = byInterval.cbegin(); interval != byInterval.cend(); ++interval) {
        for (const int entry : *interval)
            entries_[entry].readClass = classes_.size();
        classes_.append({interval.key(), *interval});
    }
}

} // namespace kvt
