#include "simulator/fault_plan.h"

namespace kvt
{

namespace
{

const char *const NAMES[FAULT_KINDS] = {"noreply", "refuse",  "truncate",  "extra", "badend",
                                        "flip",    "foreign", "duplicate", "echo",  "delay",
                                        "late",    "silence", "break"};

bool isDelay(FaultKind kind)
{
    return kind == FaultKind::Delay || kind == FaultKind::LateReply;
}

} // namespace

const char *faultName(FaultKind kind)
{
    return NAMES[static_cast<int>(kind)];
}

// A chance is drawn for every rule at every exchange, whether or not it can apply: one rule more or
// less moves the decisions of the others no more than it must.
bool FaultPlan::isDue(const FaultRule &rule, qint64 exchange, int station)
{
    bool due = false;
    switch (rule.trigger) {
    case FaultRule::Trigger::Chance:
        due = random_.below(CERTAIN) < rule.chance;
        break;
    case FaultRule::Trigger::Every:
        due = exchange % rule.every == 0;
        break;
    case FaultRule::Trigger::Range:
        due = exchange >= rule.first && exchange <= rule.last;
        break;
    }
    return due && (rule.station < 0 || rule.station == station);
}

FaultDecision FaultPlan::decide(qint64 exchange, int station)
{
    FaultDecision decision;
    const FaultRule *content = nullptr;
    for (const FaultRule &rule : rules_) {
        if (!isDue(rule, exchange, station))
            continue;
        if (isDelay(rule.kind)) {
            decision.kinds.append(rule.kind);
            const auto jitterUs = static_cast<quint32>(rule.jitter_ns / 1000);
            decision.delay_ns += rule.duration_ns + Q_INT64_C(1000) * random_.below(jitterUs + 1);
        } else if (content == nullptr) {
            content = &rule;
        }
    }
    if (content != nullptr) {
        decision.kinds.append(content->kind);
        decision.duration_ns = content->duration_ns;
    }
    return decision;
}

} // namespace kvt
