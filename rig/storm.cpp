#include "rig/storm.h"

#include <algorithm>

namespace kvt
{

namespace
{

constexpr quint32 FLOOD_RARITY = 1000; // of the times that a flood's turn has come

const FaultOfLine &flood()
{
    const QVector<FaultOfLine> &all = faultsOfLine();
    return *std::find_if(all.cbegin(), all.cend(),
                         [](const FaultOfLine &fault) { return fault.strikes == 1; });
}

} // namespace

Storm::Storm(const EngineSettings &engine, quint32 rarity, const StormLog &log, quint64 seed)
    : rarity_(rarity), log_(log), random_(seed), striker_(engine, &random_)
{
}

QByteArray Storm::onItsWay(const QByteArray &request, qint64)
{
    choose();
    return chosen_ != nullptr && chosen_->requestLost ? QByteArray() : request;
}

void Storm::choose()
{
    chosen_ = nullptr;
    if (striker_.goesOn() || random_.below(rarity_) != 0)
        return;
    const QVector<FaultOfLine> &all = faultsOfLine();
    const FaultOfLine &fault =
        faults_ == 0 ? flood()
                     : all.at(static_cast<int>(random_.below(static_cast<quint32>(all.size()))));
    const bool isFlood = fault.strikes == 1 && faults_ > 0;
    if (fault.limit == FaultLimit::Physics || (isFlood && random_.below(FLOOD_RARITY) != 0))
        return;
    chosen_ = &fault;
}

LineReaction Storm::disturb(const QByteArray &request, qint64 now_ns, const PlcReaction &honest)
{
    for (const Transmission &transmission : honest.transmissions)
        log_.answered(request, transmission.bytes);
    if (chosen_ != nullptr) {
        ++faults_;
        log_.struck(now_ns);
    }
    const int turn = static_cast<int>(random_.below(256));
    return striker_.strike(chosen_, turn, {request, now_ns, honest});
}

} // namespace kvt
