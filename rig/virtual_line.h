// A line on a virtual clock: the host's exchange engine at one end, the simulated PLC at the other.
#ifndef KVT_RIG_VIRTUAL_LINE_H
#define KVT_RIG_VIRTUAL_LINE_H

#include "host/exchange_engine.h"
#include "simulator/simulated_plc.h"

#include <deque>

namespace kvt
{

/// Carries bytes between an engine and a PLC, each byte at its exact time, and jumps from one event
/// to the next without waiting. Both directions are independent, as on a four-wire line: what the
/// PLC sends reaches the host even while the host sends. The same engine, PLC and seed make the
/// same run. One thread.
class VirtualLine
{
public:
    /// `engine` and `plc` are not null and outlive the line. A character takes `characterTime_ns`,
    /// above 0, in either direction. The line is up from time 0 on.
    VirtualLine(ExchangeEngine *engine, SimulatedPlc *plc, qint64 characterTime_ns);

    /// The time of the latest event, in nanoseconds.
    qint64 now_ns() const { return now_ns_; }

    /// Runs to the next event. Returns false when nothing will ever happen again.
    bool step();

    /// Runs all events up to `end_ns`.
    void runUntil(qint64 end_ns);

private:
    struct Arrival {
        qint64 at_ns; // end of the byte
        char byte;
    };

    qint64 nextEvent_ns() const;
    void requestLeft();
    void take(const PlcReaction &reaction);
    void breakLine(qint64 duration_ns);
    void mendLine();
    void startSending();

    ExchangeEngine *engine_;
    SimulatedPlc *plc_;
    qint64 characterTime_ns_;
    qint64 now_ns_ = 0;
    std::deque<Arrival> arrivals_;
    QByteArray request_;
    qint64 requestLeaves_ns_ = NEVER;
    qint64 mended_ns_ = NEVER;
};

} // namespace kvt

#endif
