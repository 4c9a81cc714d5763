// Which requests of a tag list are read at intervals, and which as often as the line allows.
#ifndef KVT_HOST_CLASS_PLAN_H
#define KVT_HOST_CLASS_PLAN_H

#include "host/tag_index.h"

namespace kvt
{

/// A request that is read at intervals, for all tags whose cells it brings.
struct ClassEntry {
    ReadKey key;
    int cell = 0;      ///< one of its cells
    int readClass = 0; ///< index of its class
    double phase = 0;  ///< place in its interval, above 0 to 1; one for all requests of a tag
};

/// The requests of one interval.
struct ReadClass {
    qint64 interval_ns = 0;
    QVector<int> entries; ///< indices, in the order of the list
};

/// The requests of a tag list by their intervals. A request that several tags share has the
/// shortest of theirs; if one of them has none, it is read as often as the line allows.
class ClassPlan
{
public:
    /// The tags must be those of a tag list without errors; `index` is theirs.
    ClassPlan(const QVector<Tag> &tags, const TagIndex &index);

    const QVector<ClassEntry> &entries() const { return entries_; }
    const QVector<ReadClass> &classes() const { return classes_; } ///< by rising interval

    /// The entry of a request; -1 when it is none of them.
    int entryOf(const ReadKey &key) const { return entryByKey_.value(key, -1); }

private:
    QVector<ClassEntry> entries_;
    QVector<ReadClass> classes_;
    QHash<ReadKey, int> entryByKey_;
};

} // namespace kvt

#endif
