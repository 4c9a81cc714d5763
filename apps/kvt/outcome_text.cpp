#include "apps/kvt/outcome_text.h"

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
    return QStringLiteral("%1 ms").arg(millisecondsOf(time_ns), 0, 'f', 1);
}

double millisecondsOf(qint64 time_ns)
{
    return static_cast<double>(time_ns) / 1e6;
}

} // namespace kvt
