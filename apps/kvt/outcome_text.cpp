#include "apps/kvt/outcome_text.h"

#include "host/host_time.h"
#include "host/verdict.h"

namespace kvt
{

QString outcomeWord(AttemptEnd end, int resultCode)
{
    return verdictText(verdictOf(end, resultCode));
}

QString outcomeText(AttemptEnd end, int resultCode)
{
    const QString word = outcomeWord(end, resultCode);
    return resultCode == 0 || verdictOf(end, resultCode) == Verdict::Ok
               ? word
               : QStringLiteral("%1 (%2)").arg(word).arg(resultCode);
}

QString stationTrouble(AttemptEnd end, int resultCode)
{
    switch (end) {
    case AttemptEnd::NoReply:
        return QStringLiteral("does not answer");
    case AttemptEnd::Refused:
        return QStringLiteral("refuses requests");
    case AttemptEnd::Disturbed:
        return QStringLiteral("cannot be heard (line disturbed)");
    default:
        return QStringLiteral("answers badly (%1)").arg(outcomeWord(end, resultCode));
    }
}

QString timeText(qint64 time_ns)
{
    // Limits are those at which the smaller unit would be rounded up to the larger one.
    if (time_ns < 999950000)
        return QStringLiteral("%1 ms").arg(millisecondsOf(time_ns), 0, 'f', 1);
    if (time_ns < 119950000000)
        return QStringLiteral("%1 s").arg(millisecondsOf(time_ns) / 1000, 0, 'f', 1);
    const qint64 whole_s = (time_ns + seconds(1) / 2) / seconds(1);
    if (whole_s < 2 * 3600)
        return QStringLiteral("%1 min %2 s").arg(whole_s / 60).arg(whole_s % 60);
    const qint64 whole_min = (whole_s + 30) / 60;
    return QStringLiteral("%1 h %2 min").arg(whole_min / 60).arg(whole_min % 60);
}

QString roughTimeText(qint64 time_ns)
{
    const qint64 whole_ms = time_ns / milliseconds(1);
    if (whole_ms < 1000)
        return QStringLiteral("%1 ms").arg(whole_ms);
    if (whole_ms < 120 * 1000)
        return QStringLiteral("%1 s").arg(whole_ms / 1000);
    const qint64 whole_min = whole_ms / 60000;
    if (whole_min < 120)
        return QStringLiteral("%1 min").arg(whole_min);
    return whole_min < 48 * 60 ? QStringLiteral("%1 h").arg(whole_min / 60)
                               : QStringLiteral("%1 d").arg(whole_min / (24 * 60));
}

double millisecondsOf(qint64 time_ns)
{
    return static_cast<double>(time_ns) / 1e6;
}

} // namespace kvt
