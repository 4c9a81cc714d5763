#include "host/verdict.h"

namespace kvt
{

namespace
{

Verdict judgedReply(Outcome outcome)
{
    switch (outcome) {
    case Outcome::Success:
    case Outcome::SuccessNotStored:
        return Verdict::Ok;
    case Outcome::LocalWrongLength:
    case Outcome::RemoteWrongLength:
        return Verdict::WrongLength;
    case Outcome::LocalNoReply:
    case Outcome::RemoteNoReply:
        return Verdict::NoReply;
    default:
        return Verdict::BadReply;
    }
}

Verdict failureVerdict(AttemptEnd end, Outcome outcome)
{
    switch (end) {
    case AttemptEnd::Refused:
        return Verdict::Refused;
    case AttemptEnd::NoReply:
        return Verdict::NoReply;
    case AttemptEnd::BrokenOff:
        return Verdict::BrokenOff;
    case AttemptEnd::Foreign:
        return Verdict::Foreign;
    case AttemptEnd::Disturbed:
        return Verdict::Disturbed;
    case AttemptEnd::Replied:
        break;
    }
    return judgedReply(outcome);
}

} // namespace

Verdict verdictOf(AttemptEnd end, int resultCode)
{
    const Outcome outcome = outcomeOf(resultCode);
    return judgedReply(outcome) == Verdict::Ok ? Verdict::Ok : failureVerdict(end, outcome);
}

QString verdictText(Verdict verdict)
{
    switch (verdict) {
    case Verdict::Ok:
        return QStringLiteral("ok");
    case Verdict::NoReply:
        return QStringLiteral("no reply");
    case Verdict::Refused:
        return QStringLiteral("refused");
    case Verdict::BadReply:
        return QStringLiteral("bad reply");
    case Verdict::WrongLength:
        return QStringLiteral("reply of the wrong length");
    case Verdict::BrokenOff:
        return QStringLiteral("reply broken off");
    case Verdict::Foreign:
        return QStringLiteral("reply of another station");
    case Verdict::Disturbed:
        return QStringLiteral("line disturbed");
    }
    return QString();
}

std::array<quint64, VERDICTS> verdictCounts(const StationStatistics &station)
{
    std::array<quint64, VERDICTS> counts = {};
    counts.at(static_cast<size_t>(Verdict::Ok)) =
        station.outcomes.at(static_cast<size_t>(Outcome::Success)) +
        station.outcomes.at(static_cast<size_t>(Outcome::SuccessNotStored));
    for (int end = 0; end < ATTEMPT_ENDS; ++end) {
        const auto &failures = station.failures.at(static_cast<size_t>(end));
        for (int outcome = 0; outcome < OUTCOMES; ++outcome) {
            const Verdict verdict =
                failureVerdict(static_cast<AttemptEnd>(end), static_cast<Outcome>(outcome));
            counts.at(static_cast<size_t>(verdict)) += failures.at(static_cast<size_t>(outcome));
        }
    }
    return counts;
}

} // namespace kvt
