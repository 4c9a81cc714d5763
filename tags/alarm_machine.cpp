#include "tags/alarm_machine.h"

#include <algorithm>
#include <cmath>

namespace kvt
{

namespace
{

/// On which side of the limits a level is, and how far out.
int severity(AlarmLevel level)
{
    switch (level) {
    case AlarmLevel::None:
        return 0;
    case AlarmLevel::Lo:
    case AlarmLevel::Hi:
    case AlarmLevel::Set:
        return 1;
    case AlarmLevel::LoLo:
    case AlarmLevel::HiHi:
        break;
    }
    return 2;
}

bool isLow(AlarmLevel level)
{
    return level == AlarmLevel::Lo || level == AlarmLevel::LoLo;
}

bool isWorse(AlarmLevel level, AlarmLevel before)
{
    return level != AlarmLevel::None &&
           (severity(level) > severity(before) || isLow(level) != isLow(before));
}

} // namespace

QString alarmStateName(AlarmState state)
{
    static const char *const names[] = {"normal",   "unacknowledged", "acknowledged",
                                        "returned", "shelved",        "suppressed"};
    return QLatin1String(names[static_cast<int>(state)]);
}

bool operator==(const AlarmStatus &a, const AlarmStatus &b)
{
    return a.state == b.state && a.level == b.level && a.acknowledged == b.acknowledged;
}

AlarmMachine::AlarmMachine(const AlarmRule &rule) : rule_(rule)
{
    const AlarmLevel levels[LIMITS] = {AlarmLevel::HiHi, AlarmLevel::LoLo, AlarmLevel::Hi,
                                       AlarmLevel::Lo, AlarmLevel::Set};
    const bool used[LIMITS] = {rule.hihi.has_value(), rule.lolo.has_value(), rule.hi.has_value(),
                               rule.lo.has_value(), rule.bits.has_value()};
    for (int i = 0; i < LIMITS; ++i) {
        limits_[i].level = levels[i];
        limits_[i].isUsed = used[i];
    }
}

/// Whether the value is beyond the limit, or not yet far enough back inside.
bool AlarmMachine::isBeyond(const Limit &limit, const AlarmInput &input) const
{
    const double slack = limit.isActive ? rule_.hysteresis : 0;
    switch (limit.level) {
    case AlarmLevel::HiHi:
        return input.number > *rule_.hihi - slack;
    case AlarmLevel::Hi:
        return input.number > *rule_.hi - slack;
    case AlarmLevel::LoLo:
        return input.number < *rule_.lolo + slack;
    case AlarmLevel::Lo:
        return input.number < *rule_.lo + slack;
    case AlarmLevel::Set:
        return (input.bits & rule_.bits->mask) == rule_.bits->bits;
    case AlarmLevel::None:
        break;
    }
    return false;
}

/// A value that turns back before the delay is over starts it anew.
void AlarmMachine::follow(Limit *limit, const AlarmInput &input, qint64 now_ns)
{
    if (isBeyond(*limit, input) == limit->isActive) {
        limit->changesAt_ns = NO_DEADLINE;
        return;
    }
    if (limit->changesAt_ns == NO_DEADLINE)
        limit->changesAt_ns = now_ns + (limit->isActive ? rule_.offDelay_ns : rule_.onDelay_ns);
    elapse(limit, now_ns);
}

bool AlarmMachine::elapse(Limit *limit, qint64 now_ns)
{
    if (now_ns < limit->changesAt_ns)
        return false;
    limit->isActive = !limit->isActive;
    limit->changesAt_ns = NO_DEADLINE;
    return true;
}

void AlarmMachine::takeLevel()
{
    AlarmLevel level = AlarmLevel::None;
    for (int i = LIMITS - 1; i >= 0; --i)
        if (limits_[i].isActive)
            level = limits_[i].level;
    if (isWorse(level, level_))
        needsPerson_ = true;
    level_ = level;
}

/// Makes the status what it must be. Returns whether that is news.
bool AlarmMachine::settle()
{
    AlarmStatus status;
    status.level = level_;
    status.acknowledged = !needsPerson_;
    if (isShelved_)
        status.state = AlarmState::Shelved;
    else if (!isGood_)
        status.state = AlarmState::Suppressed;
    else if (level_ != AlarmLevel::None)
        status.state = needsPerson_ ? AlarmState::Unacknowledged : AlarmState::Acknowledged;
    else
        status.state = needsPerson_ ? AlarmState::ReturnedUnacknowledged : AlarmState::Normal;
    const bool isStart = isGood_ && !isKnown_ && status.state == AlarmState::Normal;
    isKnown_ = isKnown_ || isGood_;
    const bool isNews = status != status_ && !isStart;
    status_ = status;
    return isNews;
}

bool AlarmMachine::update(const AlarmInput &input, qint64 now_ns)
{
    const bool wasNews = passed(now_ns); // the former value held until now
    isGood_ = input.good && !std::isnan(input.number);
    for (Limit &limit : limits_) {
        if (!limit.isUsed)
            continue;
        if (isGood_)
            follow(&limit, input, now_ns);
        else
            limit.changesAt_ns = NO_DEADLINE;
    }
    if (isGood_)
        takeLevel();
    return settle() || wasNews;
}

bool AlarmMachine::passed(qint64 now_ns)
{
    bool elapsed = false;
    for (Limit &limit : limits_)
        elapsed = elapse(&limit, now_ns) || elapsed;
    if (elapsed)
        takeLevel();
    if (isShelved_ && now_ns >= shelvedUntil_ns_)
        isShelved_ = false;
    return settle();
}

bool AlarmMachine::acknowledge()
{
    needsPerson_ = false;
    return settle();
}

bool AlarmMachine::shelve(qint64 until_ns)
{
    isShelved_ = true;
    shelvedUntil_ns_ = until_ns;
    return settle();
}

bool AlarmMachine::unshelve()
{
    isShelved_ = false;
    return settle();
}

qint64 AlarmMachine::deadline_ns() const
{
    qint64 deadline_ns = isShelved_ ? shelvedUntil_ns_ : NO_DEADLINE;
    for (const Limit &limit : limits_)
        deadline_ns = std::min(deadline_ns, limit.changesAt_ns);
    return deadline_ns;
}

} // namespace kvt
