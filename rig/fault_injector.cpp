#include "rig/fault_injector.h"

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

} // namespace

FaultInjector::FaultInjector(const InjectorSettings &settings)
    : settings_(settings), random_(settings.seed), striker_(settings.engine, &random_)
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
    }
    const LineReaction reaction = striker_.strike(chosen_, inPhase_ - 1, {request, now_ns, honest});
    if (striker_.goesOn())
        struckAt_ns_ = now_ns;
    return reaction;
}

void FaultInjector::lineOpened()
{
    striker_.lineOpened();
}

void FaultInjector::choose(const QByteArray &request, qint64 now_ns)
{
    chosen_ = nullptr;
    if (second_ > 0 && --second_ == 0) {
        chosen_ = &anyPlainFault(&random_);
        return;
    }
    if (!settings_.filter(request) || striker_.goesOn())
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

} // namespace kvt
