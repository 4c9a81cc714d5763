// How long wrong values are shown as good, and how long they may be.
#ifndef KVT_RIG_WRONG_VALUES_H
#define KVT_RIG_WRONG_VALUES_H

#include "host/engine_settings.h"
#include "host/exchange_observer.h"
#include "host/reply_times.h"
#include "host/value_table.h"

#include <QSet>

namespace kvt
{

/// Times are nanoseconds. One thread.
class WrongValues
{
public:
    /// The stations that are asked.
    explicit WrongValues(const QSet<int> &stations) : stations_(stations) {}

    /// The host's settings; before anything else.
    void setEngine(const EngineSettings &engine) { engine_ = engine; }

    /// The host has ended an attempt, the reply to which began at `began_ns`.
    void attemptEnded(const Attempt &attempt, qint64 began_ns);

    /// A tag shows a wrong value as good; `several`: faults followed each other.
    void shown(int tag, qint64 now_ns, bool several);

    /// A tag shows another value, or not as good.
    void hidden(int tag, qint64 now_ns);

    /// Every tag's value, as it is shown now.
    void look(const QVector<TagValue> &values, qint64 now_ns);

    /// The run has ended.
    void finish(qint64 now_ns);

    /// Tags that show a wrong value as good.
    int showing() const { return wrong_.size(); }

    /// For so long a value that is wrong now may be good: from one pause to the next, the pause
    /// itself, and the request that is under way, which may fail with all its attempts.
    qint64 bound_ns() const;

    qint64 count = 0;           ///< wrong values
    qint64 longest_ns = 0;      ///< for so long one of them was shown as good
    qint64 largestBound_ns = 0; ///< of all bounds that applied
    qint64 beyond = 0;          ///< those shown for longer than the bound
    qint64 beyondOfSeveral = 0; ///< the same where faults followed each other

private:
    struct Wrong {
        qint64 since_ns = 0;
        qint64 bound_ns = 0;
        bool several = false;
    };

    QSet<int> stations_;
    EngineSettings engine_;
    ReplyTimes times_; // as the host keeps them
    QHash<int, Wrong> wrong_;
};

} // namespace kvt

#endif
