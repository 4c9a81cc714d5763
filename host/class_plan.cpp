#include "host/class_plan.h"

#include "tags/tag_watch.h"

#include <QMap>
#include <QSet>

#include <algorithm>

namespace kvt
{

namespace
{

struct Wish {
    qint64 interval_ns = 0; // the shortest
    bool isCyclic = false;
    int cell = 0;
    int tag = 0; // the first
};

/// The requests in the order of the list, with what their tags wish.
struct Wishes {
    QVector<ReadKey> order;
    QHash<ReadKey, Wish> byKey;

    void add(const ReadKey &key, int tag, int cell, qint64 interval_ns)
    {
        const bool isNew = !byKey.contains(key);
        Wish &wish = byKey[key];
        if (isNew) {
            order.append(key);
            wish.cell = cell;
            wish.tag = tag;
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
            wishes.add(index.readKeyOf(cell), tag, cell, interval_ns);
    }
    QMap<qint64, QVector<int>> byInterval;
    QVector<int> tagOf; // of each entry
    for (const ReadKey &key : std::as_const(wishes.order)) {
        const Wish wish = wishes.byKey.value(key);
        if (wish.isCyclic)
            continue;
        entryByKey_.insert(key, entries_.size());
        byInterval[wish.interval_ns].append(entries_.size());
        entries_.append({key, wish.cell, 0, 0});
        tagOf.append(wish.tag);
    }
    for (auto interval = byInterval.cbegin(); interval != byInterval.cend(); ++interval) {
        QSet<int> own;
        for (const int entry : *interval)
            own.insert(tagOf.at(entry));
        const double step = 1.0 / own.size();
        own.clear();
        for (const int entry : *interval) {
            own.insert(tagOf.at(entry));
            entries_[entry].readClass = classes_.size();
            entries_[entry].phase = own.size() * step;
        }
        classes_.append({interval.key(), *interval});
    }
}

} // namespace kvt
