// The simulated PLC: what a line with all its stations answers to the bytes that reach it.
//
// It does no input or output, has no clock and no thread: it is told when bytes arrive and says
// when its answers leave. The same bytes at the same times with the same seed give the same
// answers.
#ifndef KVT_SIMULATOR_SIMULATED_PLC_H
#define KVT_SIMULATOR_SIMULATED_PLC_H

#include "simulator/fault_plan.h"
#include "simulator/frame_finder.h"
#include "simulator/plc_memory.h"
#include "simulator/plc_request.h"
#include "simulator/reply_codec.h"

#include <QByteArray>
#include <QHash>
#include <QVector>

#include <array>
#include <functional>

namespace kvt
{

/// What became of one request.
struct Exchange {
    qint64 number = 0; ///< from 1
    int station = -1;  ///< -1: none could be read
    PlcRequest::Kind kind = PlcRequest::Kind::Bad;
    QVector<FaultKind> faults; ///< faults committed in it
    QByteArray request;        ///< the frame
    QByteArray reply;          ///< all that is sent back, in order; empty when nothing is
};

/// Is told of every exchange once its outcome is settled, from within `SimulatedPlc::receive`.
using ExchangeLog = std::function<void(const Exchange &)>;

/// How the PLC behaves. Times are nanoseconds.
struct PlcConfig {
    FrameFinder::Mode mode = FrameFinder::Mode::Text;
    qint64 byteTime_ns = 0;        ///< time of one byte on the line; 0: no time at all
    qint64 turnaround_ns = 0;      ///< from the last byte of a request to the first of its reply
    qint64 frameGap_ns = 50000000; ///< pause that ends an unfinished envelope
    SignalPlan signalPlan;
    QVector<FaultRule> faults;
    ExchangeLog log; ///< may be empty
};

/// Bytes that go on the line back to back, the first of them not before `start_ns`.
struct Transmission {
    qint64 start_ns = 0;
    QByteArray bytes;
};

/// What follows from the bytes received.
struct PlcReaction {
    QVector<Transmission> transmissions; ///< in the order of their start; none overlaps another
    qint64 lineBreak_ns = 0;             ///< if not 0, the line goes down now for so long
};

/// Counts since the start.
struct PlcCounters {
    qint64 exchanges = 0;    ///< request frames, whatever became of them
    qint64 reads = 0;        ///< carried out
    qint64 writes = 0;       ///< carried out
    qint64 commands = 0;     ///< without a value, carried out
    qint64 refusals = 0;     ///< all but the injected ones
    qint64 notAddressed = 0; ///< requests to a station that is not here, or is none
    qint64 unanswered = 0;   ///< requests to a station while it is silent
    qint64 droppedBytes = 0; ///< received bytes that were part of no frame
    qint64 lostReplies = 0;  ///< found too many others waiting for their time
    std::array<qint64, FAULT_KINDS> faults = {}; ///< committed, by FaultKind
};

/// All stations on one line. Not thread-safe.
class SimulatedPlc
{
public:
    /// The tag list says which cells exist and how long their answers are; see TagConflicts for the
    /// lists that do not make sense.
    SimulatedPlc(const QVector<Tag> &tags, const PlcConfig &config, quint64 seed);

    /// Takes bytes, the last of which has arrived at `lastByte_ns`; times never go back.
    PlcReaction receive(const QByteArray &bytes, qint64 lastByte_ns);

    /// The line is up again after a break: what was half received or still to be sent is gone.
    void lineOpened();

    /// Counts a reply that did not go out because too many others were waiting.
    void replyLost() { ++counters_.lostReplies; }

    /// Switches a station off (it does not answer and carries nothing out) or on again.
    void setStationOff(int station, bool off);

    const PlcConfig &config() const { return config_; }
    PlcMemory &memory() { return memory_; }
    const PlcMemory &memory() const { return memory_; }
    const PlcCounters &counters() const { return counters_; }

    /// Returns the latest exchange.
    const Exchange &lastExchange() const { return lastExchange_; }

private:
    void exchange(const QByteArray &frame, qint64 end_ns, PlcReaction *reaction);
    void answer(const QByteArray &frame, qint64 end_ns, PlcReaction *reaction);
    FaultDecision decideFaults(int station, qint64 end_ns);
    QByteArray carryOut(const PlcRequest &request, qint64 time_ns);
    QByteArray carryOutRead(const PlcRequest &request, qint64 time_ns);
    QByteArray carryOutWrite(const PlcRequest &request);
    std::optional<PlcTarget> targetOf(const PlcRequest &request, int offset) const;
    QByteArray refuse(int station);
    QByteArray foreignReply(const PlcRequest &request, const QByteArray &own, qint64 time_ns);
    bool isSilent(int station, qint64 time_ns) const;
    void transmit(qint64 earliest_ns, const QByteArray &bytes, PlcReaction *reaction);

    PlcConfig config_;
    FrameFinder finder_;
    PlcMemory memory_;
    FaultPlan plan_;
    Random damage_;
    PlcCounters counters_;
    Exchange lastExchange_;
    QSet<int> stationsOff_;
    QHash<int, qint64> silentUntil_ns_;
    qint64 lineFree_ns_ = 0; ///< when the last transmission will have left
};

} // namespace kvt

#endif
