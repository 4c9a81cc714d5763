// How a tag is watched: how often it is read, which changes are reported, when it is an alarm.
#ifndef KVT_TAGS_TAG_WATCH_H
#define KVT_TAGS_TAG_WATCH_H

#include "tags/alarm_rule.h"
#include "tags/deadband.h"

namespace kvt
{

/// What the columns of a list say, read.
struct TagWatch {
    qint64 interval_ns = 0; ///< from one reading to the next; 0: as often as the line allows
    std::optional<double> deadband; ///< none: each change is reported
    std::optional<AlarmRule> alarm;
};

/// Reads the columns of a tag whose form fits its area. `converter` is its own; none where its
/// meaning has errors. Everything wrong or doubtful is appended to `*problems`, not null; what is
/// wrong is left out.
TagWatch readTagWatch(const Tag &tag, const std::optional<ValueConverter> &converter,
                      QVector<WatchProblem> *problems);

/// The same for a tag of a list without errors. Costs next to nothing where the columns are empty.
TagWatch watchOf(const Tag &tag);

/// The interval alone.
qint64 intervalOf_ns(const Tag &tag);

} // namespace kvt

#endif
