// Puts chosen faults of the line on a virtual line.
#ifndef KVT_RIG_FAULT_STRIKER_H
#define KVT_RIG_FAULT_STRIKER_H

#include "host/engine_settings.h"
#include "rig/fault_kinds.h"

namespace kvt
{

/// One request with the PLC's answer to it.
struct HonestExchange {
    const QByteArray &request;
    qint64 now_ns; ///< the request's last byte
    const PlcReaction &reaction;
};

/// What the PLC sends goes out in order, a late reply ahead of what follows it. One thread.
class FaultStriker
{
public:
    /// `engine` is the host's, for its times; `random` is not null and outlives the striker.
    FaultStriker(const EngineSettings &engine, Random *random);

    /// Commits a fault (null: none) at an exchange; `turn` is how often that fault was before. One
    /// that goes on for several answers takes precedence.
    LineReaction strike(const FaultOfLine *fault, int turn, const HonestExchange &exchange);

    /// The line is up again after a break.
    void lineOpened();

    /// Answers are still to be kept back.
    bool goesOn() const { return lagLeft_ > 0; }

private:
    Struck struckOf(const HonestExchange &exchange, int turn) const;
    LineReaction lag(const PlcReaction &honest);
    void putInOrder(LineReaction *reaction, qint64 now_ns);
    qint64 freeAt_ns(qint64 start_ns, qint64 length_ns) const;

    EngineSettings engine_;
    Random *random_;
    int lagLeft_ = 0; // answers still to be kept back
    QByteArray keptBack_;
    QVector<QPair<qint64, qint64>> busy_; // begin and end of answers on their way
};

} // namespace kvt

#endif
