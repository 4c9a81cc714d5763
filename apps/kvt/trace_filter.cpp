#include "apps/kvt/trace_filter.h"

#include "host/exchange_observer.h"

namespace kvt
{

double elapsed_ms(const TraceRecord &record)
{
    return record.stamp.toDouble() * 1000;
}

QString TraceFilter::take(const TraceRecord &record, const QString &text)
{
    if (selection_.isAll())
        return text;
    QString before;
    if (record.exchange != exchange_)
        before = finish();
    exchange_ = record.exchange;
    if (!isBegun_)
        begun_ms_ = elapsed_ms(record);
    isBegun_ = true;
    ended_ms_ = elapsed_ms(record);
    note(record);
    text_ += text;
    if (isEvent(record))
        events_ += text;
    return before;
}

QString TraceFilter::finish()
{
    const bool isInRange = exchange_ >= selection_.first && exchange_ <= selection_.last &&
                           ended_ms_ >= selection_.from_ms && begun_ms_ <= selection_.to_ms;
    const bool wanted = (selection_.station < 0 || selection_.station == station_) &&
                        (hasFailed_ || !selection_.failures);
    const QString text = wanted ? text_ : events_;
    text_.clear();
    events_.clear();
    station_ = -1;
    hasFailed_ = false;
    isBegun_ = false;
    return isInRange ? text : QString();
}

bool TraceFilter::isEvent(const TraceRecord &record) const
{
    if (record.is(trace::STATION))
        return selection_.station < 0 || record.number(0) < 0 ||
               record.number(0) == selection_.station;
    return record.is(trace::LINE) || record.is(trace::LOST) || record.is(trace::CONTINUED);
}

void TraceFilter::note(const TraceRecord &record)
{
    // Behind ENQ stand the two digits of the station.
    if (record.is(trace::ASK))
        station_ = record.bytes(0).mid(1, 2).toInt(nullptr, 16);
    if (record.is(trace::JUDGED))
        hasFailed_ = hasFailed_ || !isSuccessCode(record.number(1));
}

} // namespace kvt
