#include "apps/kvt/request_report.h"

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
        return QStringLiteral("interrupted");
    return outcome.asked ? text(outcome.end, outcome.resultCode) : QStringLiteral("not sent");
}

} // namespace

QJsonObject outcomeToJson(const Tag &tag, const RequestOutcome &outcome)
{
    QJsonObject object = tagToJson(tag);
    object.insert(QStringLiteral("ok"), outcome.good);
    object.insert(QStringLiteral("outcome"), wordOr(outcome, outcomeWord));
    object.insert(QStringLiteral("result"), outcome.resultCode);
    object.insert(QStringLiteral("attempts"), outcome.attempts);
    if (outcome.stationAnswered())
        object.insert(QStringLiteral("reply_ms"), millisecondsOf(outcome.replyTime_ns));
    return object;
}

QString failureText(const Tag &tag, const RequestOutcome &outcome)
{
    QString text = QStringLiteral("%1: %2").arg(placeText(tag), wordOr(outcome, outcomeText));
    if (outcome.attempts > 1)
        text += QStringLiteral(" at %1 attempts").arg(outcome.attempts);
    return text;
}

} // namespace kvt
