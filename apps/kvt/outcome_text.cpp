#include "apps/kvt/outcome_text.h"

#include "host/statistics.h"

namespace kvt
{

namespace
{

QString judgedText(int resultCode)
{
    switch (outcomeOf(resultCode)) {
    case Outcome::LocalWrongLength:
    case Outcome::RemoteWrongLength:
        return QStringLiteral("reply of the wrong length");
    case Outcome::LocalNoReply:
    case Outcome::RemoteNoReply:
        return QStringLiteral("no reply");
    default:
        return QStringLiteral("bad reply");
    }
}

bool isSuccess(int resultCode)
{
    return resultCode == 1 || resultCode == 100;
}

} // namespace

QString outcomeWord(AttemptEnd end, int resultCode)
{
    if (isSuccess(resultCode))
        return QStringLiteral("ok");
    switch (end) {
    case AttemptEnd::Refused:
        return QStringLiteral("refused");
    case AttemptEnd::NoReply:
        return QStringLiteral("no reply");
    case AttemptEnd::BrokenOff:
        return QStringLiteral("reply broken off");
    case AttemptEnd::Foreign:
        return QStringLiteral("reply of another station");
    case AttemptEnd::Disturbed:
        return QStringLiteral("line disturbed");
    case AttemptEnd::Replied:
        break;
    }
    return judgedText(resultCode);
}

QString outcomeText(AttemptEnd end, int resultCode)
{
    const QString word = outcomeWord(end, resultCode);
    return resultCode == 0 || isSuccess(resultCode)
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
