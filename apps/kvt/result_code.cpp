#include "apps/kvt/result_code.h"

#include "host/statistics.h"

#include <QJsonArray>

namespace kvt
{

namespace
{

// The ResultClass; 0 for a code that is of none.
int baseOf(Outcome outcome)
{
    switch (outcome) {
    case Outcome::LocalBadReply:
        return RESULT_LOCAL_BAD_REPLY;
    case Outcome::LocalNoReply:
        return RESULT_LOCAL_NO_REPLY;
    case Outcome::LocalWrongLength:
        return RESULT_LOCAL_WRONG_LENGTH;
    case Outcome::RemoteBadReply:
        return RESULT_REMOTE_BAD_REPLY;
    case Outcome::RemoteNoReply:
        return RESULT_REMOTE_NO_REPLY;
    case Outcome::RemoteWrongLength:
        return RESULT_REMOTE_WRONG_LENGTH;
    default:
        return 0;
    }
}

QString requesterText(int number)
{
    if (number == 0)
        return QStringLiteral("requester 0, which stands for the cyclic poll and for every "
                              "requester below 0 or above %1")
            .arg(RESULT_REQUESTERS - 1);
    return QStringLiteral("requester %1").arg(number);
}

QString withoutReply(bool remote)
{
    return remote ? QStringLiteral("no reply from the other PLC in time")
                  : QStringLiteral("no reply in time, or none that could be trusted on a "
                                   "disturbed line");
}

QStringList noReplyChecks()
{
    return {QStringLiteral("cable and power of the station"),
            QStringLiteral("the station number: \"kvt scan\" shows which ones answer"),
            QStringLiteral("speed and format of the line at both ends"),
            QStringLiteral("the reply time-out: \"kvt tune\" measures what the station needs"),
            QStringLiteral("a second master or program on the line, if it is called disturbed or "
                           "the reply another station's: \"--trace FILE\" and \"kvt decode FILE\" "
                           "show what came")};
}

QStringList badReplyChecks()
{
    return {QStringLiteral("the address: a refusal (NAK) mostly means that the station has no such "
                           "cell or does not let it be written"),
            QStringLiteral("the PLC's mode: some refuse while they are stopped or programmed"),
            QStringLiteral("noise on the line: \"--trace FILE\" and \"kvt decode FILE\" show what "
                           "came instead of the final CR")};
}

QStringList wrongLengthChecks()
{
    return {QStringLiteral("the address, if the station refuses the request: \"kvt read\" says so, "
                           "and \"--trace FILE\" with \"kvt decode FILE\" shows the bytes"),
            QStringLiteral("speed and format of the line at both ends"),
            QStringLiteral("two stations with the same number"),
            QStringLiteral("noise, termination and ground of the line")};
}

void explainFailure(Outcome outcome, CodeExplanation *explanation)
{
    const bool remote = outcome == Outcome::RemoteBadReply || outcome == Outcome::RemoteNoReply ||
                        outcome == Outcome::RemoteWrongLength;
    if (outcome == Outcome::LocalNoReply || outcome == Outcome::RemoteNoReply) {
        explanation->meaning = withoutReply(remote);
        explanation->checks = noReplyChecks();
    } else if (outcome == Outcome::LocalBadReply || outcome == Outcome::RemoteBadReply) {
        explanation->meaning = QStringLiteral("the reply was refused (NAK) or did not end with CR");
        explanation->checks = badReplyChecks();
    } else {
        explanation->meaning =
            QStringLiteral("the reply had the wrong length, as a refusal (NAK) has "
                           "in place of a word or a block");
        explanation->checks = wrongLengthChecks();
    }
    if (!remote)
        return;
    explanation->meaning += QStringLiteral(" (request to another PLC)");
    explanation->checks.prepend(QStringLiteral("the device between this link and the other PLC"));
}

} // namespace

CodeExplanation explainCode(int code)
{
    CodeExplanation explanation;
    explanation.code = code;
    explanation.isKnown = true;
    const Outcome outcome = outcomeOf(code);
    const int base = baseOf(outcome);
    if (base > 0) {
        explanation.requester = requesterText(code - base - 1);
        explainFailure(outcome, &explanation);
    } else if (outcome == Outcome::Success) {
        explanation.meaning = QStringLiteral("success");
    } else if (outcome == Outcome::SuccessNotStored) {
        explanation.meaning =
            QStringLiteral("success of a request to another PLC, or nothing was stored");
    } else if (code == RESULT_RETRY) {
        explanation.meaning = QStringLiteral("this attempt failed and will be repeated");
    } else if (code == RESULT_UNKNOWN) {
        explanation.meaning = QStringLiteral("failed for an unknown reason");
        explanation.checks = noReplyChecks();
    } else {
        explanation.isKnown = false;
    }
    return explanation;
}

QString codeText(const CodeExplanation &explanation)
{
    QString text = QStringLiteral("%1: %2\n").arg(explanation.code).arg(explanation.meaning);
    if (!explanation.requester.isEmpty())
        text += QStringLiteral("  asked by %1\n").arg(explanation.requester);
    for (const QString &check : explanation.checks)
        text += QStringLiteral("  check %1\n").arg(check);
    return text;
}

QJsonObject codeToJson(const CodeExplanation &explanation)
{
    QJsonObject object{{QStringLiteral("result"), explanation.code},
                       {QStringLiteral("ok"), isSuccessCode(explanation.code)},
                       {QStringLiteral("meaning"), explanation.meaning},
                       {QStringLiteral("checks"), QJsonArray::fromStringList(explanation.checks)}};
    if (!explanation.requester.isEmpty())
        object.insert(QStringLiteral("requester"), explanation.requester);
    return object;
}

} // namespace kvt
