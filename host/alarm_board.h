// The alarms of a host's tags.
#ifndef KVT_HOST_ALARM_BOARD_H
#define KVT_HOST_ALARM_BOARD_H

#include "host/value_table.h"
#include "tags/alarm_machine.h"
#include "tags/tag.h"

#include <vector>

namespace kvt
{

/// A change of an alarm.
struct AlarmEvent {
    int tag = 0;
    AlarmStatus status;
    qint64 at_ns = 0; ///< when it was noticed
};

/// Follows the alarms of all tags that have one. What changes is kept until `takeEvents`. No clock
/// and no lock of its own. Nothing is allocated in between but for the events.
class AlarmBoard
{
public:
    explicit AlarmBoard(const QVector<Tag> &tags);

    bool isEmpty() const { return alarms_.empty(); }

    /// A tag has a new value. One of a tag without alarm is passed over.
    void read(int tag, const Reading &reading, qint64 now_ns);

    /// True when it is time to look at all of them, a tenth of a second after the last time.
    bool isDue(qint64 now_ns) const { return now_ns >= due_ns_; }

    /// It is time now: a value is not good any more.
    void lookNext() { due_ns_ = 0; }

    /// Looks at all of them: delays that are over, and values that are not good any more, as
    /// `qualityOf` says of a tag.
    template <typename QualityOf>
    void look(qint64 now_ns, QualityOf qualityOf)
    {
        due_ns_ = now_ns + milliseconds(100);
        for (Alarm &alarm : alarms_) {
            const bool isGood = qualityOf(alarm.tag) == Quality::Good;
            note(alarm, isGood ? alarm.machine.passed(now_ns) : lose(&alarm, now_ns), now_ns);
        }
    }

    /// Somebody has seen to an alarm, puts it aside until `until_ns`, or takes that back. False for
    /// a tag that has none.
    bool acknowledge(int tag, qint64 now_ns);
    bool shelve(int tag, qint64 until_ns, qint64 now_ns);
    bool unshelve(int tag, qint64 now_ns);

    /// The state of a tag's alarm; none for a tag that has none.
    std::optional<AlarmStatus> status(int tag) const;

    /// Moves what has changed to `*events`, in order.
    void takeEvents(std::vector<AlarmEvent> *events);

private:
    struct Alarm {
        int tag;
        ValueConverter converter;
        AlarmMachine machine;
    };

    void add(int tag, const Tag &source);
    Alarm *alarmOf(int tag);
    static bool lose(Alarm *alarm, qint64 now_ns);
    void note(const Alarm &alarm, bool changed, qint64 now_ns);

    std::vector<Alarm> alarms_;
    QVector<int> place_; // of each tag in alarms_; -1: it has none
    std::vector<AlarmEvent> events_;
    qint64 due_ns_ = 0;
};

} // namespace kvt

#endif
