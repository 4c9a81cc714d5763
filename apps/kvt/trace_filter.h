// Which exchanges of a trace are shown.
#ifndef KVT_APPS_KVT_TRACE_FILTER_H
#define KVT_APPS_KVT_TRACE_FILTER_H

#include "host/trace_reader.h"

#include <QString>

#include <limits>

namespace kvt
{

/// What is asked for; as it is, everything.
struct TraceSelection {
    int station = -1;      ///< -1: any
    bool failures = false; ///< only exchanges with an attempt that failed
    int first = 0;         ///< numbers of exchanges; 0 is what comes before the first
    int last = std::numeric_limits<int>::max();
    double from_ms = std::numeric_limits<double>::lowest(); ///< from the start of the run on
    double to_ms = std::numeric_limits<double>::max();

    bool isAll() const
    {
        return station < 0 && !failures && first == 0 &&
               from_ms == std::numeric_limits<double>::lowest() &&
               to_ms == std::numeric_limits<double>::max();
    }
};

/// Returns the milliseconds from the start of the run to a record.
double elapsed_ms(const TraceRecord &record);

/// Keeps the text of an exchange until it is known whether it is asked for. Of a time, exchanges
/// are asked for that were under way in it. What happened to the line, to the recording or to the
/// stations meanwhile passes with any exchange.
class TraceFilter
{
public:
    explicit TraceFilter(const TraceSelection &selection) : selection_(selection) {}

    /// Takes the next record with its text, which may be empty. Returns the text that can be
    /// shown now.
    QString take(const TraceRecord &record, const QString &text);

    /// Returns what is left at the end of the trace.
    QString finish();

private:
    void note(const TraceRecord &record);
    bool isEvent(const TraceRecord &record) const;

    TraceSelection selection_;
    int exchange_ = 0;
    int station_ = -1;
    bool hasFailed_ = false;
    bool isBegun_ = false;
    double begun_ms_ = 0; // first and last record of the exchange
    double ended_ms_ = 0;
    QString text_;
    QString events_; // the part of it that concerns more than the exchange
};

} // namespace kvt

#endif
