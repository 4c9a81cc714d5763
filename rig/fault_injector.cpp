#include "rig/fault_injector.h"

#include "driver/records.h"

#include <algorithm>

namespace kvt
{

namespace
{

constexpr int SINGLE_STRIKES = 12;
constexpr int SECOND_STRIKES = 8;
constexpr int RARITY = 10;       // of the requests of the kind, one in so many is struck
constexpr int SECOND_WITHIN = 4; // requests
constexpr qint64 ALWAYS_ns = seconds(5);
constexpr int LONGEST_ANSWER = 300;
constexpr qint64 TURNAROUND_ns = milliseconds(4); // where the PLC has not been asked

const FaultOfLine &anyPlainFault(Random *random)
{
    const QVector<FaultOfLine> &all = faultsOfLine();
    for (;;) {
        const FaultOfLine &fault =
            all.at(static_cast<int>(random->below(static_cast<quint32>(all.size()))));
        if (fault.limit == FaultLimit::Kept && fault.strikes == 0)
            return fault;
    }
}

QByteArray stationDigits(const QByteArray &request, const QByteArray &reply)
{
    if (reply.size() > 2)
        return reply.mid(1, 2);
    // An envelope has the station's number.
    return request.at(0) == FRAME_ENQ ? request.mid(1, 2)
                                      : QByteArray(1, request.at(4)).toHex().toUpper();
}

} // namespace

FaultInjector::FaultInjector(const InjectorSettings &settings)
    : settings_(settings), random_(settings.seed)
{
}

QByteArray FaultInjector::onItsWay(const QByteArray &request, qint64 now_ns)
{
    choose(request, now_ns);
    return chosen_ != nullptr && chosen_->requestLost ? QByteArray() : request;
}

LineReaction FaultInjector::disturb(const QByteArray &request, qint64 now_ns,
                                    const PlcReaction &honest)
{
    for (const Transmission &transmission : honest.transmissions)
        settings_.log(request, transmission.bytes);
    if (chosen_ != nullptr) {
        struckAt_ns_ = now_ns;
        ++inPhase_;
        ++strikes_;
        lagLeft_ = chosen_->lockstep;
    }
    LineReaction reaction;
    if (lagLeft_ > 0)
        struckAt_ns_ = now_ns;
    if (lagLeft_ > 0 || !keptBack_.isEmpty())
        reaction = lag(honest);
    else if (chosen_ == nullptr || (honest.transmissions.isEmpty() && !chosen_->requestLost))
        reaction = undisturbed(honest);
    else
        reaction = chosen_->strike(struckOf(request, now_ns, honest));
    putInOrder(&reaction, now_ns);
    return reaction;
}

void FaultInjector::lineOpened()
{
    keptBack_.clear();
    lagLeft_ = 0;
    busy_.clear();
}

void FaultInjector::choose(const QByteArray &request, qint64 now_ns)
{
    chosen_ = nullptr;
    if (second_ > 0 && --second_ == 0) {
        chosen_ = &anyPlainFault(&random_);
        return;
    }
    if (!settings_.filter(request) || lagLeft_ > 0)
        return;
    nextPhase(now_ns);
    if (!isDue())
        return;
    chosen_ = &settings_.fault;
    if (phase_ == Phase::Second)
        second_ = 1 + static_cast<int>(random_.below(SECOND_WITHIN));
}

void FaultInjector::nextPhase(qint64 now_ns)
{
    const bool isFlood = settings_.fault.strikes == 1;
    if (phase_ == Phase::Single && inPhase_ >= wanted()) {
        phase_ = isFlood ? Phase::Over : Phase::Second;
        inPhase_ = 0;
    } else if (phase_ == Phase::Second && inPhase_ >= std::min(wanted(), 2 * SECOND_STRIKES)) {
        phase_ = Phase::Always;
        always_ns_ = now_ns;
        inPhase_ = 0;
    } else if (phase_ == Phase::Always && now_ns - always_ns_ > ALWAYS_ns) {
        phase_ = Phase::Over;
    }
}

bool FaultInjector::isDue()
{
    if (phase_ == Phase::Over)
        return false;
    const quint32 rarity = settings_.fault.oneByOne ? RARITY / 3 : RARITY;
    return phase_ == Phase::Always || random_.below(rarity) == 0;
}

int FaultInjector::wanted() const
{
    if (settings_.fault.oneByOne)
        return std::max(settings_.replyLength - 1, SINGLE_STRIKES);
    return settings_.fault.strikes > 0 ? settings_.fault.strikes : SINGLE_STRIKES;
}

Struck FaultInjector::struckOf(const QByteArray &request, qint64 now_ns, const PlcReaction &honest)
{
    Struck struck;
    struck.request = request;
    struck.now_ns = now_ns;
    struck.start_ns = now_ns + TURNAROUND_ns;
    if (!honest.transmissions.isEmpty()) {
        struck.reply = honest.transmissions.first().bytes;
        struck.start_ns = honest.transmissions.first().start_ns;
    }
    struck.station = stationDigits(request, struck.reply);
    struck.timeout_ns =
        settings_.engine.replyTimeout_ns(struck.station.toInt(nullptr, 16), struck.reply.size());
    struck.gap_ns = settings_.engine.characterGap_ns();
    struck.characterTime_ns = settings_.engine.paced ? settings_.engine.characterTime_ns : 0;
    struck.turn = inPhase_ - 1;
    struck.random = &random_;
    return struck;
}

// The answer before this one comes now, and this one with the next request.
LineReaction FaultInjector::lag(const PlcReaction &honest)
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
void FaultInjector::putInOrder(LineReaction *reaction, qint64 now_ns)
{
    if (!settings_.engine.paced || reaction->bytes.size() > 2)
        return;
    busy_.erase(std::remove_if(busy_.begin(), busy_.end(),
                               [now_ns](const auto &busy) { return busy.second < now_ns; }),
                busy_.end());
    for (LineBytes &bytes : reaction->bytes) {
        const qint64 length_ns = bytes.bytes.size() * settings_.engine.characterTime_ns;
        if (bytes.inOnePiece || bytes.bytes.size() > LONGEST_ANSWER)
            continue;
        bytes.start_ns = freeAt_ns(bytes.start_ns, length_ns);
        busy_.append({bytes.start_ns, bytes.start_ns + length_ns});
    }
}

qint64 FaultInjector::freeAt_ns(qint64 start_ns, qint64 length_ns) const
{
    for (const auto &busy : busy_)
        if (start_ns < busy.second && busy.first < start_ns + length_ns)
            return freeAt_ns(busy.second, length_ns);
    return start_ns;
}

} // namespace kvt
