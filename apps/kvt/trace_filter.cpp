#include "apps/kvt/trace_filter.h"

#include "host/exchange_observer.h"

namespace kvt
{

QString TraceFilter::take(const TraceRecord &record, const QString &text)
{
    if (selection_.isAll())
        return text;
    QString before;
    if (record.exchange != exchange_)
        before = finish();
    exchange_ = record.exchange;
    note(record);
    text_ += text;
    return before;
}

QString TraceFilter::finish()
{
    const bool wanted = exchange_ >= selection_.first && exchange_ <= selection_.last &&
                        (selection_.station < 0 || selection_.station == station_) &&
                        (hasFailed_ || !selection_.failures);
    const QString text = wanted ? text_ : QString();
    text_.clear();
    station_ = -1;
    hasFailed_ = false;
    return text;
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
