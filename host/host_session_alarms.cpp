// The alarms of a host session.
#include "host/host_session.h"

namespace kvt
{

/// Looks at all alarms from time to time, and tells what has changed since.
void HostSession::followAlarms(qint64 now_ns)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (alarms_.isDue(now_ns))
            alarms_.look(now_ns, [&](int tag) { return valueOf(tag, now_ns).quality; });
        alarms_.takeEvents(&alarmEvents_);
    }
    tellAlarms();
}

void HostSession::loseAlarms(qint64 now_ns)
{
    if (alarms_.isEmpty())
        return;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        alarms_.look(now_ns, [](int) { return Quality::Stale; });
        alarms_.takeEvents(&alarmEvents_);
    }
    tellAlarms();
}

void HostSession::tellRead(int tag, const Reading &reading)
{
    events_->tagRead(tag, reading);
    if (alarms_.isEmpty())
        return;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        alarms_.read(tag, reading, reading.readAt_ns);
        alarms_.takeEvents(&alarmEvents_);
    }
    tellAlarms();
}

/// What is torn, failed or suspect is known to its alarm before the next request.
void HostSession::tellTorn(int tag)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        alarms_.lookNext();
    }
    events_->tagTorn(tag);
}

/// Tells what has been taken from the board.
void HostSession::tellAlarms()
{
    for (const AlarmEvent &event : alarmEvents_)
        events_->alarmChanged(event);
    alarmEvents_.clear();
}

QVector<std::optional<AlarmStatus>> HostSession::alarms() const
{
    QVector<std::optional<AlarmStatus>> alarms;
    alarms.reserve(tags_.size());
    const std::lock_guard<std::mutex> lock(mutex_);
    for (int tag = 0; tag < tags_.size(); ++tag)
        alarms.append(alarms_.status(tag));
    return alarms;
}

bool HostSession::acknowledgeAlarm(int tag, qint64 now_ns)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return alarms_.acknowledge(tag, now_ns);
}

bool HostSession::shelveAlarm(int tag, qint64 until_ns, qint64 now_ns)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return alarms_.shelve(tag, until_ns, now_ns);
}

bool HostSession::unshelveAlarm(int tag, qint64 now_ns)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return alarms_.unshelve(tag, now_ns);
}

} // namespace kvt
