#include "apps/kvt/request_report.h"

#include "apps/kvt/console.h"
#include "apps/kvt/outcome_text.h"
#include "apps/kvt/value_text.h"

namespace kvt
{

namespace
{

// With `text` standing for an outcome that there is.
QString wordOr(const RequestOutcome &outcome, QString (*text)(AttemptEnd, int))
{
    if (outcome.interrupted)
        return outcome.lineLost ? QStringLiteral("line lost") : QStringLiteral("interrupted");
    if (outcome.isTorn())
        return QStringLiteral("torn");
    if (outcome.isUnproved())
        return outcome.doubtful ? QStringLiteral("doubtful") : QStringLiteral("not proved");
    return outcome.asked ? text(outcome.end, outcome.resultCode) : QStringLiteral("not sent");
}

QString attemptsText(const RequestOutcome &outcome)
{
    return QStringLiteral("after %1 attempts").arg(outcome.attempts);
}

} // namespace

QString requestWord(const RequestOutcome &outcome)
{
    return wordOr(outcome, outcomeWord);
}

QString failureText(const Tag &tag, const RequestOutcome &outcome)
{
    QString text = QStringLiteral("%1: %2").arg(placeText(tag), wordOr(outcome, outcomeText));
    if (outcome.attempts > 1)
        text += QLatin1Char(' ') + attemptsText(outcome);
    return text;
}

void reportDoubt(const Tag &tag, const RequestOutcome &outcome)
{
    if (outcome.asked && outcome.doubtful && (outcome.good || outcome.isUnproved()))
        printError(QStringLiteral("%1: the reply does not look like the station's own, so that it "
                                  "is doubtful: --reply-check refuse drops such replies")
                       .arg(placeText(tag)));
}

QString replyText(const RequestOutcome &outcome)
{
    return outcome.attempts > 1 ? attemptsText(outcome) : timeText(outcome.replyTime_ns);
}

} // namespace kvt
