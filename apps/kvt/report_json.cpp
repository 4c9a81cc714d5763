#include "apps/kvt/report_json.h"

#include "apps/kvt/outcome_text.h"
#include "apps/kvt/request_report.h"
#include "apps/kvt/value_text.h"
#include "apps/kvt/wall_clock.h"
#include "host/statistics_json.h"
#include "tags/tag_address.h"

namespace kvt
{

QJsonObject polledTagToJson(const Tag &tag, const TagValue &value, const TagResult &result,
                            qint64 now_ns)
{
    QJsonObject object = tagToJson(tag);
    object.insert(QStringLiteral("quality"), jsonWord(qualityName(value.quality)));
    object.insert(QStringLiteral("result"), result.code);
    object.insert(QStringLiteral("outcome"), result.code == 0
                                                 ? QStringLiteral("none_yet")
                                                 : jsonWord(outcomeWord(result.end, result.code)));
    if (!value.isKnown)
        return object;
    object.insert(QStringLiteral("age_ms"), millisecondsOf(now_ns - value.readAt_ns));
    object.insert(QStringLiteral("read_time"), isoTimeBefore(now_ns - value.readAt_ns));
    object.insert(QStringLiteral("proved"), value.isProved());
    if (value.provedUntil_ns > 0)
        object.insert(QStringLiteral("checkpoint_age_ms"),
                      millisecondsOf(now_ns - value.provedUntil_ns));
    return object;
}

QJsonObject requestToJson(const Tag &tag, const RequestOutcome &outcome)
{
    QJsonObject object = tagToJson(tag);
    object.insert(QStringLiteral("ok"), outcome.good);
    object.insert(QStringLiteral("outcome"), jsonWord(requestWord(outcome)));
    object.insert(QStringLiteral("result"), outcome.resultCode);
    object.insert(QStringLiteral("attempts"), outcome.attempts);
    object.insert(QStringLiteral("doubtful"), outcome.asked && outcome.doubtful);
    if (outcome.stationAnswered() && outcome.attempts == 1)
        object.insert(QStringLiteral("reply_ms"), millisecondsOf(outcome.replyTime_ns));
    if (outcome.asked)
        object.insert(QStringLiteral("time"), isoTime(outcome.endedAt));
    return object;
}

QJsonObject readToJson(const Tag &tag, const RequestOutcome &outcome)
{
    QJsonObject object = requestToJson(tag, outcome);
    object.insert(QStringLiteral("quality"), jsonWord(qualityName(outcome.value.quality)));
    if (outcome.good)
        ValueTexts({tag}).insertInto(0, outcome.value, &object);
    return object;
}

QJsonObject writeToJson(const Tag &tag, const TagValue &value, const RequestOutcome &outcome)
{
    QJsonObject object = requestToJson(tag, outcome);
    if (!isCommand(tag.area, tag.address))
        ValueTexts({tag}).insertInto(0, value, &object);
    object.insert(QStringLiteral("state"), jsonWord(writeStateName(outcome.write.state)));
    object.insert(QStringLiteral("reason"), writeReasonText(outcome.write.reason));
    object.insert(QStringLiteral("uncertain"), outcome.isUncertain());
    object.insert(QStringLiteral("times_sent"), outcome.timesSent);
    return object;
}

QJsonObject requestSummary(const QVector<RequestOutcome> &outcomes, bool complete)
{
    int asked = 0;
    int ok = 0;
    for (const RequestOutcome &outcome : outcomes) {
        asked += outcome.asked || outcome.interrupted ? 1 : 0;
        ok += outcome.good ? 1 : 0;
    }
    return {{QStringLiteral("asked"), asked},
            {QStringLiteral("ok"), ok},
            {QStringLiteral("failed"), asked - ok},
            {QStringLiteral("complete"), complete}};
}

} // namespace kvt
