#include "rig/virtual_line.h"

#include <algorithm>

namespace kvt
{

VirtualLine::VirtualLine(ExchangeEngine *engine, SimulatedPlc *plc, qint64 characterTime_ns)
    : engine_(engine), plc_(plc), characterTime_ns_(characterTime_ns)
{
    mendLine();
}

bool VirtualLine::step()
{
    const qint64 next_ns = nextEvent_ns();
    if (next_ns == NEVER)
        return false;
    now_ns_ = std::max(now_ns_, next_ns);
    if (!arrivals_.empty() && arrivals_.front().at_ns <= now_ns_) {
        const char byte = arrivals_.front().byte;
        arrivals_.pop_front();
        engine_->received(now_ns_, &byte, 1);
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

void VirtualLine::requestLeft()
{
    requestLeaves_ns_ = NEVER;
    const PlcReaction reaction = plc_->receive(request_, now_ns_);
    engine_->sent(now_ns_);
    take(reaction);
}

void VirtualLine::take(const PlcReaction &reaction)
{
    for (const Transmission &transmission : reaction.transmissions) {
        qint64 at_ns = transmission.start_ns;
        for (const char byte : transmission.bytes) {
            at_ns += characterTime_ns_;
            arrivals_.push_back({at_ns, byte});
        }
    }
    if (reaction.lineBreak_ns > 0)
        breakLine(reaction.lineBreak_ns);
}

void VirtualLine::breakLine(qint64 duration_ns)
{
    arrivals_.clear();
    requestLeaves_ns_ = NEVER;
    mended_ns_ = now_ns_ + duration_ns;
    engine_->lineDown(now_ns_);
}

void VirtualLine::mendLine()
{
    mended_ns_ = NEVER;
    plc_->lineOpened();
    engine_->lineUp(now_ns_);
    startSending();
}

void VirtualLine::startSending()
{
    if (engine_->takeRequest(&request_))
        requestLeaves_ns_ = now_ns_ + request_.size() * characterTime_ns_;
}

} // namespace kvt
