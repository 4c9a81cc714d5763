#include "rig/virtual_line.h"

#include <algorithm>

namespace kvt
{

VirtualLine::VirtualLine(ExchangeEngine *engine, SimulatedPlc *plc, qint64 characterTime_ns,
                         qint64 start_ns)
    : engine_(engine), plc_(plc), characterTime_ns_(characterTime_ns), now_ns_(start_ns)
{
    mendLine();
}

void VirtualLine::handOver(ExchangeEngine *engine)
{
    engine_ = engine;
    requestLeaves_ns_ = NEVER;
    if (mended_ns_ != NEVER)
        return;
    engine_->lineUp(now_ns_);
    startSending();
}

bool VirtualLine::step()
{
    const qint64 next_ns = nextEvent_ns();
    if (next_ns == NEVER)
        return false;
    now_ns_ = std::max(now_ns_, next_ns);
    if (!arrivals_.empty() && arrivals_.front().at_ns <= now_ns_) {
        deliver();
    } else if (requestLeaves_ns_ <= now_ns_) {
        requestLeft();
    } else if (mended_ns_ <= now_ns_) {
        mendLine();
    } else {
        engine_->deadlineReached(now_ns_);
    }
    startSending();
    return true;
}

void VirtualLine::runUntil(qint64 end_ns)
{
    while (nextEvent_ns() <= end_ns && step()) {
    }
}

qint64 VirtualLine::nextEvent_ns() const
{
    const qint64 arrival_ns = arrivals_.empty() ? NEVER : arrivals_.front().at_ns;
    return std::min({arrival_ns, requestLeaves_ns_, mended_ns_, engine_->deadline_ns()});
}

// Bytes of one moment are one piece.
void VirtualLine::deliver()
{
    const qint64 at_ns = arrivals_.front().at_ns;
    piece_.resize(0);
    while (!arrivals_.empty() && arrivals_.front().at_ns == at_ns) {
        piece_.append(arrivals_.front().byte);
        arrivals_.pop_front();
    }
    engine_->received(now_ns_, piece_.constData(), piece_.size());
}

void VirtualLine::requestLeft()
{
    requestLeaves_ns_ = NEVER;
    const LineReaction reaction =
        fault_ != nullptr ? disturbed() : undisturbed(plc_->receive(request_, now_ns_));
    engine_->sent(now_ns_);
    take(reaction);
}

LineReaction VirtualLine::disturbed()
{
    const PlcReaction honest = plc_->receive(fault_->onItsWay(request_, now_ns_), now_ns_);
    return fault_->disturb(request_, now_ns_, honest);
}

void VirtualLine::take(const LineReaction &reaction)
{
    for (const LineBytes &bytes : reaction.bytes) {
        qint64 at_ns = bytes.start_ns;
        for (const char byte : bytes.bytes) {
            at_ns += bytes.inOnePiece ? 0 : characterTime_ns_;
            schedule(at_ns, byte);
        }
    }
    if (reaction.lineBreak_ns > 0)
        breakLine(reaction.lineBreak_ns);
}

// Behind what arrives at the same time; mostly that is behind everything.
void VirtualLine::schedule(qint64 at_ns, char byte)
{
    if (arrivals_.empty() || arrivals_.back().at_ns <= at_ns) {
        arrivals_.push_back({at_ns, byte});
        return;
    }
    const auto place =
        std::upper_bound(arrivals_.begin(), arrivals_.end(), at_ns,
                         [](qint64 time_ns, const Arrival &next) { return time_ns < next.at_ns; });
    arrivals_.insert(place, {at_ns, byte});
}

void VirtualLine::breakLine(qint64 duration_ns)
{
    arrivals_.clear();
    requestLeaves_ns_ = NEVER;
    const bool isUp = mended_ns_ == NEVER;
    mended_ns_ = now_ns_ + duration_ns;
    if (isUp)
        engine_->lineDown(now_ns_);
}

void VirtualLine::mendLine()
{
    mended_ns_ = NEVER;
    plc_->lineOpened();
    if (fault_ != nullptr)
        fault_->lineOpened();
    engine_->lineUp(now_ns_);
    startSending();
}

void VirtualLine::startSending()
{
    if (engine_->takeRequest(&request_))
        requestLeaves_ns_ = now_ns_ + request_.size() * characterTime_ns_;
}

} // namespace kvt
