// Fault rules as text: any text either makes rules within their ranges or names the rule that is
// wrong; rules that are written down read back equal; and whatever they are, they can be carried
// out.
#include "simulator/fault_text.h"
#include "tests/fuzz/support/fuzz_input.h"
#include "tests/fuzz/support/promise.h"

#include <QStringList>

namespace
{

QString duration(qint64 time_ns)
{
    return QStringLiteral("%1us").arg(time_ns / 1000);
}

QString chanceText(quint32 chance)
{
    return QStringLiteral("%1.%2%")
        .arg(chance / 10000000)
        .arg(chance % 10000000, 7, 10, QLatin1Char('0'));
}

QString whenText(const kvt::FaultRule &rule)
{
    switch (rule.trigger) {
    case kvt::FaultRule::Trigger::Chance:
        return chanceText(rule.chance);
    case kvt::FaultRule::Trigger::Every:
        return QStringLiteral("every%1").arg(rule.every);
    case kvt::FaultRule::Trigger::Range:
        return QStringLiteral("%1-%2").arg(rule.first).arg(rule.last);
    }
    return QString();
}

QString ruleText(const kvt::FaultRule &rule)
{
    QString text = QLatin1String(kvt::faultName(rule.kind)) + QLatin1Char('=') + whenText(rule);
    const bool isOutage =
        rule.kind == kvt::FaultKind::Silence || rule.kind == kvt::FaultKind::LineBreak;
    const bool isDelay =
        rule.kind == kvt::FaultKind::Delay || rule.kind == kvt::FaultKind::LateReply;
    if (isOutage || isDelay)
        text += QLatin1Char(':') + duration(rule.duration_ns);
    if (isDelay)
        text += QLatin1Char('~') + duration(rule.jitter_ns);
    if (rule.station >= 0)
        text += QStringLiteral("@%1").arg(rule.station);
    return text;
}

bool sameRule(const kvt::FaultRule &a, const kvt::FaultRule &b)
{
    return a.kind == b.kind && a.trigger == b.trigger && a.chance == b.chance &&
           a.every == b.every && a.first == b.first && a.last == b.last && a.station == b.station &&
           a.duration_ns == b.duration_ns && a.jitter_ns == b.jitter_ns;
}

void checkRanges(const kvt::FaultRule &rule)
{
    require(rule.chance <= kvt::CERTAIN && rule.every >= 1, "chances are chances");
    require(rule.trigger != kvt::FaultRule::Trigger::Range ||
                (rule.first >= 1 && rule.last >= rule.first),
            "ranges begin at 1 and do not end before they begin");
    require(rule.station >= -1 && rule.station <= 255, "stations are 0 to 255");
    require(rule.duration_ns >= 0 && rule.jitter_ns >= 0, "times are not negative");
}

// Durations of whole microseconds with up to nine digits can be written as microseconds.
bool canBeWritten(const kvt::FaultRule &rule)
{
    constexpr qint64 LONGEST_ns = Q_INT64_C(999999999) * 1000;
    return rule.duration_ns <= LONGEST_ns && rule.jitter_ns <= LONGEST_ns;
}

void checkPlan(const QVector<kvt::FaultRule> &rules, quint64 seed)
{
    kvt::FaultPlan plan(rules, seed);
    kvt::FaultPlan twin(rules, seed);
    for (int exchange = 1; exchange <= 20; ++exchange) {
        const kvt::FaultDecision decision = plan.decide(exchange, exchange % 3);
        require(decision.kinds.size() <= rules.size(), "a rule makes one fault at most");
        require(decision.delay_ns >= 0 && decision.duration_ns >= 0, "time goes forward");
        require(decision.kinds == twin.decide(exchange, exchange % 3).kinds,
                "equal rules and seeds give equal faults");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput input(data, size);
    const auto seed = static_cast<quint64>(input.byte());
    const kvt::FaultTextResult result = kvt::parseFaults(QString::fromUtf8(input.rest()));
    require(result.error.isEmpty() || result.rules.isEmpty(), "wrong rules make no faults");
    QStringList texts;
    for (const kvt::FaultRule &rule : result.rules) {
        checkRanges(rule);
        if (!canBeWritten(rule))
            return 0;
        texts.append(ruleText(rule));
    }
    const kvt::FaultTextResult again = kvt::parseFaults(texts.join(QLatin1Char(',')));
    require(again.error.isEmpty() && again.rules.size() == result.rules.size(),
            "rules that are written down can be read");
    for (int i = 0; i < again.rules.size(); ++i)
        require(sameRule(again.rules.at(i), result.rules.at(i)), "rules read back equal");
    checkPlan(result.rules, seed);
    return 0;
}
