#include "rig/fault_striker.h"

#include "driver/records.h"
#include "host/host_time.h"

#include <algorithm>

namespace kvt
{

namespace
{

constexpr int LONGEST_ANSWER = 300;
constexpr qint64 TURNAROUND_ns = milliseconds(4); // where the PLC has not been asked

QByteArray stationDigits(const QByteArray &request, const QByteArray &reply)
{
    if (reply.size() > 2)
        return reply.mid(1, 2);
    // An envelope has the station's number.
    return request.at(0) == FRAME_ENQ ? request.mid(1, 2)
                                      : QByteArray(1, request.at(4)).toHex().toUpper();
}

} // namespace

FaultStriker::FaultStriker(const EngineSettings &engine, Random *random)
    : engine_(engine), random_(random)
{
}

LineReaction FaultStriker::strike(const FaultOfLine *fault, int turn,
                                  const HonestExchange &exchange)
{
    const PlcReaction &honest = exchange.reaction;
    if (fault != nullptr && lagLeft_ == 0)
        lagLeft_ = fault->lockstep;
    LineReaction reaction;
    if (lagLeft_ > 0 || !keptBack_.isEmpty())
        reaction = lag(honest);
    else if (fault == nullptr || (honest.transmissions.isEmpty() && !fault->requestLost))
        reaction = undisturbed(honest);
    else
        reaction = fault->strike(struckOf(exchange, turn));
    putInOrder(&reaction, exchange.now_ns);
    return reaction;
}

void FaultStriker::lineOpened()
{
    keptBack_.clear();
    lagLeft_ = 0;
    busy_.clear();
}

Struck FaultStriker::struckOf(const HonestExchange &exchange, int turn) const
{
    Struck struck;
    const PlcReaction &honest = exchange.reaction;
    struck.request = exchange.request;
    struck.now_ns = exchange.now_ns;
    struck.start_ns = exchange.now_ns + TURNAROUND_ns;
    if (!honest.transmissions.isEmpty()) {
        struck.reply = honest.transmissions.first().bytes;
        struck.start_ns = honest.transmissions.first().start_ns;
    }
    struck.station = stationDigits(exchange.request, struck.reply);
    struck.timeout_ns =
        engine_.replyTimeout_ns(struck.station.toInt(nullptr, 16), struck.reply.size());
    struck.gap_ns = engine_.characterGap_ns();
    struck.characterTime_ns = engine_.paced ? engine_.characterTime_ns : 0;
    struck.turn = turn;
    struck.random = random_;
    return struck;
}

// The answer before this one comes now, and this one with the next request.
LineReaction FaultStriker::lag(const PlcReaction &honest)
{
    LineReaction reaction;
    if (honest.transmissions.isEmpty())
        return reaction;
    if (!keptBack_.isEmpty())
        reaction.bytes.append({honest.transmissions.first().start_ns, keptBack_});
    keptBack_ = lagLeft_ > 0 ? honest.transmissions.first().bytes : QByteArray();
    lagLeft_ = std::max(lagLeft_ - 1, 0);
    return reaction;
}

// A station begins when the one before has finished, and what is late goes first. A flood hinders
// nobody from speaking into it.
void FaultStriker::putInOrder(LineReaction *reaction, qint64 now_ns)
{
    if (!engine_.paced || reaction->bytes.size() > 2)
        return;
    busy_.erase(std::remove_if(busy_.begin(), busy_.end(),
                               [now_ns](const auto &busy) { return busy.second < now_ns; }),
                busy_.end());
    for (LineBytes &bytes : reaction->bytes) {
        const qint64 length_ns = bytes.bytes.size() * engine_.characterTime_ns;
        if (bytes.inOnePiece || bytes.bytes.size() > LONGEST_ANSWER)
            continue;
        bytes.start_ns = freeAt_ns(bytes.start_ns, length_ns);
        busy_.append({bytes.start_ns, bytes.start_ns + length_ns});
    }
}

qint64 FaultStriker::freeAt_ns(qint64 start_ns, qint64 length_ns) const
{
    for (const auto &busy : busy_)
        if (start_ns < busy.second && busy.first < start_ns + length_ns)
            return freeAt_ns(busy.second, length_ns);
    return start_ns;
}

} // namespace kvt
