#include "rig/cell_witness.h"

#include "host/verdict.h"

#include <algorithm>

namespace kvt
{

CellWitness::CellWitness(const QVector<Tag> &tags, const std::function<bool(const Tag &)> &isStruck)
    : Witness(tags), tags_(tags)
{
    for (const Tag &tag : tags)
        isStruck_.append(isStruck(tag));
}

void CellWitness::struck(qint64 now_ns, bool single, bool goesOn)
{
    ++unseenStrikes_;
    if (struckAt_ns_ < 0 || !single || goesOn)
        struckAt_ns_ = now_ns;
    single_ = single;
}

void CellWitness::requested(int id)
{
    writes_.insert(id, Write());
    ++openWrites_;
    ++findings_.writes;
}

void CellWitness::finish()
{
    wrong_.finish(line_->now_ns());
    findings_.wrong = wrong_.count;
    findings_.wrongLongest_ns = wrong_.longest_ns;
    findings_.bound_ns = wrong_.count > 0 ? wrong_.largestBound_ns : wrong_.bound_ns();
    findings_.beyondBound = wrong_.beyond;
    findings_.beyondOfSeveral = wrong_.beyondOfSeveral;
    for (const Write &write : std::as_const(writes_)) {
        findings_.writesUnsettled += write.finals == 1 ? 0 : 1;
        const bool mayBeDone =
            write.last.state == WriteState::TimedOut || write.last.state == WriteState::Uncertain;
        findings_.writesLost += mayBeDone && write.carriedOut == 0 ? 1 : 0;
        findings_.writesDoubled += write.carriedOut > 1 ? 1 : 0;
        if (isBelied(write.last, write.carriedOut, write.isCommand))
            ++findings_.writesBelied;
    }
    if (struckAt_ns_ >= 0)
        findings_.recoveryAfter_ns = -1;
}

void CellWitness::stationSwitched(int, bool on)
{
    if (!on)
        tell(QStringLiteral("station off"));
}

void CellWitness::writeChanged(const WriteReport &report)
{
    if (!report.isFinal())
        return;
    Write &write = writes_[report.id];
    ++write.finals;
    write.last = report;
    --openWrites_;
    if (report.state == WriteState::Acknowledged) {
        if (tags_.at(report.tag).area != Area::C && isStruck_.at(report.tag))
            recovered(line_->now_ns());
        return;
    }
    tell(QStringLiteral("write ") + writeStateName(report.state));
}

void CellWitness::onceReadEnded(int, int, bool good)
{
    if (!good)
        tell(QStringLiteral("read failed"));
}

void CellWitness::lineChanged(bool up, const QString &)
{
    if (!up)
        tell(QStringLiteral("line down"));
}

void CellWitness::tagRead(int tag, const Reading &reading)
{
    const qint64 now_ns = line_->now_ns();
    wrong_.hidden(tag, now_ns);
    if (reading.doubtful)
        return;
    ++findings_.values;
    if (!answers_.isTrue(tag, reading))
        wrong_.shown(tag, now_ns, several_);
    else if (isStruck_.at(tag) && reading.readAt_ns > struckAt_ns_)
        recovered(now_ns);
}

void CellWitness::stationDoubtful(int)
{
    tell(QStringLiteral("doubtful station"));
}

void CellWitness::outOfStep()
{
    tell(QStringLiteral("out of step"));
}

void CellWitness::attemptEnded(const Attempt &attempt)
{
    answers_.attemptEnded(attempt);
    wrong_.attemptEnded(attempt, begin_.at_ns());
    if (unseenStrikes_ > 0 && !mixed_)
        ++findings_.verdicts[verdictText(verdictOf(attempt.end, attempt.resultCode))];
    unseenStrikes_ = 0;
    if (attempt.isFinal() && attempt.request->kind == RequestKind::Write)
        writeEnded(attempt);
    if (attempt.isFinal() && struckAt_ns_ >= 0 && !mixed_)
        noteQualities();
}

void CellWitness::recovered(qint64 at_ns)
{
    if (struckAt_ns_ < 0)
        return;
    qint64 &longest_ns = single_ ? findings_.recovery_ns : findings_.recoveryAfter_ns;
    longest_ns = std::max(longest_ns, at_ns - struckAt_ns_);
    struckAt_ns_ = -1;
}

void CellWitness::tell(const QString &text)
{
    if (!mixed_)
        findings_.told.insert(text);
}

void CellWitness::noteQualities()
{
    const QVector<TagValue> values = session_->values(line_->now_ns());
    for (int tag = 0; tag < values.size(); ++tag)
        if (isStruck_.at(tag))
            findings_.qualities.insert(qualityName(values.at(tag).quality));
}

void CellWitness::writeEnded(const Attempt &attempt)
{
    Write &write = writes_[attempt.request->id];
    write.carriedOut = carriedOut_.take(attempt.request->frame);
    write.isCommand = attempt.request->isCommand;
}

} // namespace kvt
