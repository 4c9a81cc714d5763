// Which faults the simulated PLC commits, and when.
#ifndef KVT_SIMULATOR_FAULT_PLAN_H
#define KVT_SIMULATOR_FAULT_PLAN_H

#include "simulator/random.h"

#include <QVector>

namespace kvt
{

/// What can go wrong with the answer to one request.
enum class FaultKind {
    NoReply,        ///< the request is carried out, its reply is lost
    Refusal,        ///< refused, not carried out
    Truncation,     ///< only the first bytes of the reply
    ExtraBytes,     ///< one to four stray bytes before or behind the reply
    WrongEnd,       ///< another byte in place of the final CR
    FlippedDigit,   ///< one digit behind the station is another one
    ForeignStation, ///< another station answers, with its own value where it has one
    Duplicate,      ///< the reply twice
    Echo,           ///< the request comes back ahead of the reply
    Delay,          ///< the reply comes later, but in time
    LateReply,      ///< the reply comes after the host has stopped waiting
    Silence,        ///< from this request on the station does not answer for a while
    LineBreak       ///< the line is down for a while; the request is lost
};

constexpr int FAULT_KINDS = 13;

/// Returns the name of a fault in options and reports, "noreply" and the like.
const char *faultName(FaultKind kind);

/// One kind of fault and when it happens.
struct FaultRule {
    enum class Trigger {
        Chance, ///< with a probability
        Every,  ///< at every nth exchange
        Range   ///< at the exchanges from one number to another
    };

    FaultKind kind = FaultKind::NoReply;
    Trigger trigger = Trigger::Chance;
    quint32 chance = 0;     ///< Chance: out of CERTAIN
    qint64 every = 1;       ///< Every: n, 1 or more
    qint64 first = 0;       ///< Range: number of the first exchange, counted from 1
    qint64 last = 0;        ///< Range: number of the last one
    int station = -1;       ///< only at this station; -1: at any
    qint64 duration_ns = 0; ///< delays: by how much; Silence and LineBreak: how long
    qint64 jitter_ns = 0;   ///< delays: up to so much more, evenly spread
};

/// `FaultRule::chance` of what always happens.
constexpr quint32 CERTAIN = 1000000000;

/// What happens at one exchange.
struct FaultDecision {
    QVector<FaultKind> kinds; ///< delays, and at most one other fault, which comes last
    qint64 delay_ns = 0;      ///< sum of all delays
    qint64 duration_ns = 0;   ///< of Silence or LineBreak

    /// True when a fault other than a delay is among them, and which.
    bool hasContentFault(FaultKind kind) const { return !kinds.isEmpty() && kinds.last() == kind; }
};

/// Decides for every exchange what goes wrong. Every delay that is due applies; of the other
/// faults, only the first rule that is due. Equal rules, seeds and exchanges give equal decisions.
/// Not thread-safe.
class FaultPlan
{
public:
    FaultPlan(const QVector<FaultRule> &rules, quint64 seed) : rules_(rules), random_(seed) {}

    /// Decides for exchange number `exchange` (from 1) with `station`.
    FaultDecision decide(qint64 exchange, int station);

private:
    bool isDue(const FaultRule &rule, qint64 exchange, int station);

    QVector<FaultRule> rules_;
    Random random_;
};

} // namespace kvt

#endif
