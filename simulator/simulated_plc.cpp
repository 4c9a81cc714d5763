#include "simulator/simulated_plc.h"

namespace kvt
{

namespace
{

// One seed feeds three independent generators.
constexpr quint64 MEMORY_STREAM = 1;
constexpr quint64 FAULT_STREAM = 2;
constexpr quint64 DAMAGE_STREAM = 3;

constexpr int NO_VALUE_COMMAND = 0x12;
constexpr int LINE_STATIONS = 256;

quint64 streamSeed(quint64 seed, quint64 stream)
{
    Random random(seed + stream * Q_UINT64_C(0xD1B54A32D192ED03));
    return random.next();
}

bool isNoValueCommand(const PlcRequest &request)
{
    return request.command == NO_VALUE_COMMAND &&
           (request.addressByte == 0x11 || request.addressByte == 0x19);
}

} // namespace

SimulatedPlc::SimulatedPlc(const QVector<Tag> &tags, const PlcConfig &config, quint64 seed)
    : config_(config), finder_(config.mode, config.frameGap_ns),
      memory_(tags, config.signalPlan, streamSeed(seed, MEMORY_STREAM)),
      plan_(config.faults, streamSeed(seed, FAULT_STREAM)), damage_(streamSeed(seed, DAMAGE_STREAM))
{
}

PlcReaction SimulatedPlc::receive(const QByteArray &bytes, qint64 lastByte_ns)
{
    PlcReaction reaction;
    for (int i = 0; i < bytes.size(); ++i) {
        const qint64 time_ns = lastByte_ns - (bytes.size() - 1 - i) * config_.byteTime_ns;
        const auto frame = finder_.take(bytes[i], time_ns);
        if (frame)
            exchange(*frame, time_ns, &reaction);
    }
    counters_.droppedBytes = finder_.droppedBytes();
    return reaction;
}

void SimulatedPlc::lineOpened()
{
    finder_.clear();
    counters_.droppedBytes = finder_.droppedBytes();
    lineFree_ns_ = 0;
}

void SimulatedPlc::setStationOff(int station, bool off)
{
    if (off)
        stationsOff_.insert(station);
    else
        stationsOff_.remove(station);
}

bool SimulatedPlc::isSilent(int station, qint64 time_ns) const
{
    return stationsOff_.contains(station) ||
           (silentUntil_ns_.contains(station) && time_ns < silentUntil_ns_.value(station));
}

void SimulatedPlc::exchange(const QByteArray &frame, qint64 end_ns, PlcReaction *reaction)
{
    lastExchange_ = Exchange();
    lastExchange_.number = ++counters_.exchanges;
    lastExchange_.request = frame;
    answer(frame, end_ns, reaction);
    if (config_.log)
        config_.log(lastExchange_);
}

void SimulatedPlc::answer(const QByteArray &frame, qint64 end_ns, PlcReaction *reaction)
{
    const PlcRequest request =
        config_.mode == FrameFinder::Mode::Text ? parseTextFrame(frame) : parseEnvelope(frame);
    lastExchange_.station = request.station;
    lastExchange_.kind = request.kind;
    if (!memory_.hasStation(request.station)) {
        ++counters_.notAddressed;
        return;
    }
    const FaultDecision decision = decideFaults(request.station, end_ns);
    if (decision.hasContentFault(FaultKind::LineBreak)) {
        reaction->lineBreak_ns = decision.duration_ns;
        return;
    }
    if (isSilent(request.station, end_ns)) {
        ++counters_.unanswered;
        return;
    }
    const qint64 reply_ns = end_ns + config_.turnaround_ns + decision.delay_ns;
    QByteArray reply = decision.hasContentFault(FaultKind::Refusal) ? refusal(request.station)
                                                                    : carryOut(request, reply_ns);
    if (decision.hasContentFault(FaultKind::NoReply))
        return;
    if (decision.hasContentFault(FaultKind::ForeignStation))
        reply = foreignReply(request, reply, reply_ns);
    if (decision.hasContentFault(FaultKind::Echo))
        transmit(end_ns, frame, reaction);
    if (!decision.kinds.isEmpty())
        reply = damaged(reply, decision.kinds.last(), &damage_);
    transmit(reply_ns, reply, reaction);
}

// A silent station commits no fault, and a reply that never leaves cannot be late.
FaultDecision SimulatedPlc::decideFaults(int station, qint64 end_ns)
{
    const bool silent = isSilent(station, end_ns);
    FaultDecision decision = plan_.decide(counters_.exchanges, station);
    const bool breaks = decision.hasContentFault(FaultKind::LineBreak);
    const bool noReply = breaks || decision.hasContentFault(FaultKind::NoReply) ||
                         decision.hasContentFault(FaultKind::Silence);
    if (silent && !breaks)
        decision = FaultDecision();
    else if (noReply)
        decision.kinds = {decision.kinds.last()};
    if (decision.hasContentFault(FaultKind::Silence))
        silentUntil_ns_.insert(station, end_ns + decision.duration_ns);
    lastExchange_.faults = decision.kinds;
    for (const FaultKind kind : decision.kinds)
        ++counters_.faults[static_cast<size_t>(kind)];
    return decision;
}

QByteArray SimulatedPlc::refuse(int station)
{
    ++counters_.refusals;
    return refusal(station);
}

std::optional<PlcTarget> SimulatedPlc::targetOf(const PlcRequest &request, int offset) const
{
    const auto area = static_cast<Area>(request.area);
    if (config_.mode == FrameFinder::Mode::Envelope)
        return memory_.findNumber(area, request.station, request.number + offset);
    if (request.kind == PlcRequest::Kind::Write)
        return memory_.findWrite(area, request.station, request.command, request.addressByte);
    return memory_.findRead(request.station, request.command, request.addressByte);
}

QByteArray SimulatedPlc::carryOut(const PlcRequest &request, qint64 time_ns)
{
    switch (request.kind) {
    case PlcRequest::Kind::Read:
        return carryOutRead(request, time_ns);
    case PlcRequest::Kind::Write:
        return carryOutWrite(request);
    case PlcRequest::Kind::Bad:
        break;
    }
    return refuse(request.station);
}

QByteArray SimulatedPlc::carryOutRead(const PlcRequest &request, qint64 time_ns)
{
    const auto target = targetOf(request, 0);
    if (target) {
        ++counters_.reads;
        return dataReply(request.station, memory_.read(*target, time_ns));
    }
    if (!isNoValueCommand(request))
        return refuse(request.station);
    ++counters_.commands;
    return acknowledgement(request.station, request.mark);
}

// All or nothing: an unknown cell among several refuses the whole write.
QByteArray SimulatedPlc::carryOutWrite(const PlcRequest &request)
{
    QVector<PlcTarget> targets;
    for (int i = 0; i < request.values.size(); ++i) {
        const auto target = targetOf(request, i);
        if (!target || target->area == Area::C)
            return refuse(request.station);
        targets.append(*target);
    }
    for (int i = 0; i < targets.size(); ++i)
        memory_.write(targets[i], request.values[i]);
    ++counters_.writes;
    return acknowledgement(request.station, request.mark);
}

QByteArray SimulatedPlc::foreignReply(const PlcRequest &request, const QByteArray &own,
                                      qint64 time_ns)
{
    const auto target = targetOf(request, 0);
    if (request.kind == PlcRequest::Kind::Read && target) {
        const auto other = memory_.elsewhere(*target, damage_.below(0xFFFFFFFF));
        if (other)
            return dataReply(memory_.stationOf(*other), memory_.read(*other, time_ns));
    }
    const int step = 1 + static_cast<int>(damage_.below(LINE_STATIONS - 1));
    return withStation(own, (request.station + step) % LINE_STATIONS);
}

// A station speaks when the one before it has finished: the line carries one thing at a time.
void SimulatedPlc::transmit(qint64 earliest_ns, const QByteArray &bytes, PlcReaction *reaction)
{
    const qint64 start_ns = qMax(earliest_ns, lineFree_ns_);
    lineFree_ns_ = start_ns + bytes.size() * config_.byteTime_ns;
    reaction->transmissions.append({start_ns, bytes});
    lastExchange_.reply += bytes;
}

} // namespace kvt
