#include "rig/long_witness.h"

#include <utility>

namespace kvt
{

namespace
{

// Two faults within this time may have to do with each other.
constexpr qint64 TOGETHER_ns = seconds(2);

} // namespace

LongWitness::LongWitness(const QVector<Tag> &tags) : Witness(tags) {}

void LongWitness::struck(qint64 now_ns)
{
    struckBefore_ns_ = struckAt_ns_;
    struckAt_ns_ = now_ns;
}

void LongWitness::requested(int id)
{
    writes_.insert(id, Write());
    ++counts_.writes;
}

int LongWitness::hostEnded()
{
    wrong_.finish(line_->now_ns());
    const int open = writes_.size();
    writes_.clear();
    carriedOut_.clear();
    return open;
}

void LongWitness::stationSwitched(int, bool on)
{
    counts_.stationsOff += on ? 0 : 1;
}

void LongWitness::writeChanged(const WriteReport &report)
{
    if (!report.isFinal())
        return;
    const auto write = writes_.find(report.id);
    if (write == writes_.end()) {
        ++counts_.writesUnsettled;
        return;
    }
    ++counts_.writeEnds.at(static_cast<size_t>(report.state));
    if (isBelied(report, write->carriedOut, write->isCommand))
        ++counts_.writesBelied;
    writes_.erase(write);
}

void LongWitness::onceReadEnded(int, int, bool)
{
    ++counts_.onceReads;
}

void LongWitness::tagRead(int tag, const Reading &reading)
{
    const qint64 now_ns = line_->now_ns();
    wrong_.hidden(tag, now_ns);
    if (reading.doubtful) {
        ++counts_.doubtful;
        return;
    }
    ++counts_.values;
    if (!answers_.isTrue(tag, reading))
        wrong_.shown(tag, now_ns, now_ns - struckBefore_ns_ < TOGETHER_ns);
}

void LongWitness::outOfStep()
{
    ++counts_.outOfStep;
}

void LongWitness::attemptEnded(const Attempt &attempt)
{
    answers_.attemptEnded(attempt);
    wrong_.attemptEnded(attempt, begin_.at_ns());
    if (!attempt.isFinal())
        return;
    const int carriedOut = carriedOut_.take(attempt.request->frame);
    const auto write = writes_.find(attempt.request->id);
    if (attempt.request->kind == RequestKind::Write && write != writes_.end())
        *write = {carriedOut, attempt.request->isCommand};
    if (betweenExchanges_)
        std::exchange(betweenExchanges_, nullptr)();
}

} // namespace kvt
