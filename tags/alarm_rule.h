// When the value of a tag is an alarm, as the columns of a list say it.
#ifndef KVT_TAGS_ALARM_RULE_H
#define KVT_TAGS_ALARM_RULE_H

#include "tags/tag.h"
#include "tags/value_converter.h"

namespace kvt
{

/// How far a value is out of its limits.
enum class AlarmLevel {
    None,
    LoLo, ///< below lolo
    Lo,   ///< below lo
    Hi,   ///< above hi
    HiHi, ///< above hihi
    Set   ///< the bit is set, or the value is the named one
};
constexpr int ALARM_LEVELS = 6;

/// Returns "none", "lolo", "lo", "hi", "hihi" or "set".
QString alarmLevelName(AlarmLevel level);

/// How urgent an alarm is.
enum class AlarmPriority { Low, Medium, High, Critical };

/// Returns "low", "medium", "high" or "critical".
QString alarmPriorityName(AlarmPriority priority);

/// A value that is an alarm while its bits in `mask` are `bits`.
struct AlarmBits {
    quint64 mask = 0;
    quint64 bits = 0;
};

/// When a value is an alarm, and how it is told. Either limits or bits; delays in nanoseconds.
struct AlarmRule {
    std::optional<double> lolo; ///< engineering values
    std::optional<double> lo;
    std::optional<double> hi;
    std::optional<double> hihi;
    std::optional<AlarmBits> bits;
    double hysteresis = 0;  ///< how far back inside a limit a value must be to be out of alarm
    qint64 onDelay_ns = 0;  ///< how long a value must be beyond before it is an alarm
    qint64 offDelay_ns = 0; ///< how long it must be back before it is none
    AlarmPriority priority = AlarmPriority::Medium;
    QString text; ///< what people are told; may be empty

    bool hasLimits() const { return lolo || lo || hi || hihi; }
};

/// Reads the columns about a tag's alarm; none when they name neither limit nor bit, or are wrong.
/// `converter` is the tag's own; without one the name of an alarm is not looked at. Everything
/// wrong or doubtful is appended to `*problems`, not null.
std::optional<AlarmRule> readAlarmRule(const Tag &tag,
                                       const std::optional<ValueConverter> &converter,
                                       QVector<WatchProblem> *problems);

} // namespace kvt

#endif
