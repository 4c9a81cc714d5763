#include "host/alarm_board.h"

namespace kvt
{

AlarmBoard::AlarmBoard(const QVector<Tag> &tags)
{
    for (int tag = 0; tag < tags.size(); ++tag) {
        place_.append(-1);
        if (!(tags.at(tag).watch == WatchTexts()))
            add(tag, tags.at(tag));
    }
}

void AlarmBoard::add(int tag, const Tag &source)
{
    QVector<MeaningProblem> meaningProblems;
    QVector<WatchProblem> problems;
    const std::optional<ValueConverter> converter =
        ValueConverter::make(source.form, source.area, source.meaning, &meaningProblems);
    const std::optional<AlarmRule> rule = readAlarmRule(source, converter, &problems);
    if (!rule)
        return;
    place_[tag] = static_cast<int>(alarms_.size());
    alarms_.push_back({tag, *converter, AlarmMachine(*rule)});
}

AlarmBoard::Alarm *AlarmBoard::alarmOf(int tag)
{
    const int place = place_.value(tag, -1);
    return place < 0 ? nullptr : &alarms_[static_cast<size_t>(place)];
}

void AlarmBoard::note(const Alarm &alarm, bool changed, qint64 now_ns)
{
    if (changed)
        events_.push_back({alarm.tag, alarm.machine.status(), now_ns});
}

bool AlarmBoard::lose(Alarm *alarm, qint64 now_ns)
{
    return alarm->machine.update(AlarmInput(), now_ns);
}

void AlarmBoard::read(int tag, const Reading &reading, qint64 now_ns)
{
    Alarm *const alarm = alarmOf(tag);
    if (alarm == nullptr)
        return;
    // The value before held until now; what came of it is news of its own.
    note(*alarm, alarm->machine.passed(now_ns), now_ns);
    AlarmInput input;
    input.bits = reading.raw;
    const std::optional<double> number = alarm->converter.number(reading.raw);
    input.good = number.has_value() && !reading.doubtful;
    input.number = number.value_or(0);
    note(*alarm, alarm->machine.update(input, now_ns), now_ns);
}

bool AlarmBoard::acknowledge(int tag, qint64 now_ns)
{
    Alarm *const alarm = alarmOf(tag);
    if (alarm != nullptr)
        note(*alarm, alarm->machine.acknowledge(), now_ns);
    return alarm != nullptr;
}

bool AlarmBoard::shelve(int tag, qint64 until_ns, qint64 now_ns)
{
    Alarm *const alarm = alarmOf(tag);
    if (alarm != nullptr)
        note(*alarm, alarm->machine.shelve(until_ns), now_ns);
    return alarm != nullptr;
}

bool AlarmBoard::unshelve(int tag, qint64 now_ns)
{
    Alarm *const alarm = alarmOf(tag);
    if (alarm != nullptr)
        note(*alarm, alarm->machine.unshelve(), now_ns);
    return alarm != nullptr;
}

std::optional<AlarmStatus> AlarmBoard::status(int tag) const
{
    const int place = place_.value(tag, -1);
    return place < 0 ? std::nullopt
                     : std::make_optional(alarms_[static_cast<size_t>(place)].machine.status());
}

void AlarmBoard::takeEvents(std::vector<AlarmEvent> *events)
{
    events->swap(events_);
    events_.clear();
}

} // namespace kvt
