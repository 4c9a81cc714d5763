// The life of one alarm, as ISA-18.2 and IEC 62682 have it.
//
//            value beyond                 acknowledged
//   Normal ----------------> Unacknowledged --------> Acknowledged ---- value back ----> Normal
//                             ^          | value back
//              value beyond   |          v            acknowledged
//                            ReturnedUnacknowledged ------------------> Normal
//
// An alarm can be shelved in any of these states, for a time or until it is taken back, and is
// suppressed while the value is not good; its life goes on meanwhile as far as the value tells, and
// both end where it is then. A value that is not good neither raises nor clears an alarm.
#ifndef KVT_TAGS_ALARM_MACHINE_H
#define KVT_TAGS_ALARM_MACHINE_H

#include "tags/alarm_rule.h"

#include <limits>

namespace kvt
{

enum class AlarmState {
    Normal,
    Unacknowledged,         ///< the value is beyond a limit, nobody has seen to it
    Acknowledged,           ///< the value is beyond a limit, somebody has
    ReturnedUnacknowledged, ///< the value is back, nobody has seen to it
    Shelved,                ///< put aside by a person
    Suppressed              ///< the value is not good; also before there is one
};
constexpr int ALARM_STATES = 6;

/// Returns "normal", "unacknowledged", "acknowledged", "returned", "shelved" or "suppressed".
QString alarmStateName(AlarmState state);

/// A value as an alarm looks at it.
struct AlarmInput {
    bool good = false;
    double number = 0; ///< engineering value; one that is no number (NaN) is not good
    quint64 bits = 0;  ///< of the raw value
};

/// What is told of an alarm. A change of any of it is one event.
struct AlarmStatus {
    AlarmState state = AlarmState::Suppressed;
    AlarmLevel level = AlarmLevel::None; ///< as the value last told
    bool acknowledged = true;            ///< nothing is left for a person to see to
};

/// True when all is equal.
bool operator==(const AlarmStatus &a, const AlarmStatus &b);
inline bool operator!=(const AlarmStatus &a, const AlarmStatus &b)
{
    return !(a == b);
}

/// Follows one alarm. A value is beyond a limit when it is above `hi` or below `lo`, and back when
/// it is at the limit or inside of it by the hysteresis; each limit has delays of its own. An alarm
/// that gets worse (hi to hihi, or to the other side) needs to be acknowledged anew, one that gets
/// better does not. No clock: times are nanoseconds of any that only goes forward. One thread.
/// Nothing is allocated once it is made.
class AlarmMachine
{
public:
    /// When nothing will happen of its own accord.
    static constexpr qint64 NO_DEADLINE = std::numeric_limits<qint64>::max();

    /// The rule has limits or bits.
    explicit AlarmMachine(const AlarmRule &rule);

    /// Each returns true when the status is another than before; the first good value that is no
    /// alarm is no news. `update`: the value is this now.
    bool update(const AlarmInput &input, qint64 now_ns);
    /// Time has passed: a delay or the shelving may be over.
    bool passed(qint64 now_ns);
    /// Somebody has seen to it; nothing happens when there is nothing to see to.
    bool acknowledge();
    /// It is put aside until `until_ns`; NO_DEADLINE: until it is taken back.
    bool shelve(qint64 until_ns);
    bool unshelve();

    const AlarmStatus &status() const { return status_; }
    const AlarmRule &rule() const { return rule_; }

    /// When `passed` will have something to do at the latest; NO_DEADLINE when never.
    qint64 deadline_ns() const;

private:
    static constexpr int LIMITS = 5;

    struct Limit {
        AlarmLevel level = AlarmLevel::None;
        bool isUsed = false;
        bool isActive = false;
        qint64 changesAt_ns = NO_DEADLINE; ///< if the value stays where it is
    };

    bool isBeyond(const Limit &limit, const AlarmInput &input) const;
    void follow(Limit *limit, const AlarmInput &input, qint64 now_ns);
    bool elapse(Limit *limit, qint64 now_ns);
    void takeLevel();
    bool settle();

    AlarmRule rule_;
    Limit limits_[LIMITS]; // the worst first
    AlarmLevel level_ = AlarmLevel::None;
    bool needsPerson_ = false;
    bool isGood_ = false;
    bool isShelved_ = false;
    qint64 shelvedUntil_ns_ = NO_DEADLINE;
    bool isKnown_ = false; // there was a good value
    AlarmStatus status_;
};

} // namespace kvt

#endif
