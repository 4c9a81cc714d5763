// A line on a virtual clock: the host's exchange engine at one end, the simulated PLC at the other.
#ifndef KVT_RIG_VIRTUAL_LINE_H
#define KVT_RIG_VIRTUAL_LINE_H

#include "host/exchange_engine.h"
#include "rig/line_fault.h"

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
    /// `engine` and `plc` are not null and outlive the line. A character takes `characterTime_ns`
    /// in either direction; with 0 bytes take no time and are handed over in one piece, as on a
    /// connection, and the PLC must need some time to answer. The line is up from `start_ns` on.
    VirtualLine(ExchangeEngine *engine, SimulatedPlc *plc, qint64 characterTime_ns,
                qint64 start_ns = 0);

    /// Another host takes over, with an engine that has not been used. What is on its way arrives
    /// there.
    void handOver(ExchangeEngine *engine);

    /// From now on `fault` decides what becomes of the PLC's answers; null: nothing does. It
    /// outlives the line or is taken away before.
    void setFault(LineFault *fault) { fault_ = fault; }

    /// The line goes down now, for so long; bytes on their way are lost.
    void breakLine(qint64 duration_ns);

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
    LineReaction disturbed();
    void deliver();
    void take(const LineReaction &reaction);
    void schedule(qint64 at_ns, char byte);
    void mendLine();
    void startSending();

    ExchangeEngine *engine_;
    SimulatedPlc *plc_;
    LineFault *fault_ = nullptr;
    qint64 characterTime_ns_;
    qint64 now_ns_;
    std::deque<Arrival> arrivals_; // by time
    QByteArray piece_;             // kept so that none is made for each
    QByteArray request_;
    qint64 requestLeaves_ns_ = NEVER;
    qint64 mended_ns_ = NEVER;
};

} // namespace kvt

#endif
