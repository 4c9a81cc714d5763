#include "rig/cell_witness.h"

#include "host/verdict.h"
#include "tags/tag_address.h"

#include <algorithm>

namespace kvt
{

namespace
{

constexpr int FIRST_DIGIT = 3;
constexpr int REMEMBERED = 64;

QString qualityWord(Quality quality)
{
    switch (quality) {
    case Quality::NeverRead:
        return QStringLiteral("none");
    case Quality::Good:
        return QStringLiteral("good");
    case Quality::Doubtful:
        return QStringLiteral("doubtful");
    case Quality::Suspect:
        return QStringLiteral("suspect");
    case Quality::Stale:
        return QStringLiteral("stale");
    case Quality::Failed:
        return QStringLiteral("failed");
    }
    return QString();
}

// The value of a tag in a reply to its request; -1 when there is none.
int valueIn(const QByteArray &reply, const Tag &tag)
{
    int place = FIRST_DIGIT;
    TagAddress address;
    if (tag.area == Area::C && parseTagAddress(tag.area, tag.address, &address).isEmpty())
        place += 2 * address.d;
    bool isNumber = false;
    const int value = reply.mid(place, 2 * valueSize(tag.area)).toInt(&isNumber, 16);
    return isNumber ? value : -1;
}

} // namespace

CellWitness::CellWitness(const QVector<Tag> &tags, std::function<bool(const Tag &)> isStruck)
    : tags_(tags)
{
    for (const Tag &tag : tags) {
        isStruck_.append(isStruck(tag));
        stations_.insert(tag.station);
    }
}

void CellWitness::watch(HostSession *session, VirtualLine *line)
{
    session_ = session;
    line_ = line;
}

void CellWitness::answered(const QByteArray &request, const QByteArray &reply)
{
    QVector<Answer> &answers = answers_[request];
    if (answers.size() >= REMEMBERED)
        answers.removeFirst();
    answers.append({line_->now_ns(), reply});
    if (reply.startsWith('\x06'))
        ++carriedOut_[request];
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

void CellWitness::look()
{
    if (wrong_.isEmpty())
        return;
    const QVector<CellValue> values = session_->values(line_->now_ns());
    const QList<int> tags = wrong_.keys();
    for (const int tag : tags)
        if (values.at(tag).quality != Quality::Good)
            hidden(tag, line_->now_ns());
}

void CellWitness::finish()
{
    const QList<int> tags = wrong_.keys();
    for (const int tag : tags)
        hidden(tag, line_->now_ns());
    if (findings_.wrong == 0)
        findings_.bound_ns = bound_ns();
    for (const Write &write : std::as_const(writes_)) {
        findings_.writesUnsettled += write.finals == 1 ? 0 : 1;
        const bool mayBeDone =
            write.last.state == WriteState::TimedOut || write.last.state == WriteState::Uncertain;
        findings_.writesLost += mayBeDone && write.carriedOut == 0 ? 1 : 0;
        findings_.writesDoubled += write.carriedOut > 1 ? 1 : 0;
        if (write.last.state == WriteState::Acknowledged &&
            (write.carriedOut == 0 || (write.isCommand && write.carriedOut > 1)))
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
    hidden(tag, now_ns);
    if (reading.doubtful)
        return;
    ++findings_.values;
    if (!isTrue(tag, reading)) {
        ++findings_.wrong;
        wrong_.insert(tag, {now_ns, bound_ns(), several_});
    } else if (isStruck_.at(tag) && reading.readAt_ns > struckAt_ns_) {
        recovered(now_ns);
    }
}

void CellWitness::tagSuspect(int tag)
{
    hidden(tag, line_->now_ns());
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
    if (attempt.number == 1) {
        current_.frame = attempt.request->frame;
        current_.since_ns = attempt.sentAt_ns;
    }
    if (unseenStrikes_ > 0 && !mixed_)
        ++findings_.verdicts[verdictText(verdictOf(attempt.end, attempt.resultCode))];
    unseenStrikes_ = 0;
    if (attempt.isFinal())
        findings_.longestRequest_ns =
            std::max(findings_.longestRequest_ns, attempt.endedAt_ns - current_.since_ns);
    if (attempt.isSuccess()) {
        asked_.insert(attempt.endedAt_ns, current_);
        if (asked_.size() > REMEMBERED)
            asked_.erase(asked_.begin());
        const qint64 reply_ns =
            attempt.endedAt_ns - attempt.sentAt_ns -
            attempt.receivedBytes * session_->engine().settings().characterTime_ns;
        if (attempt.timesSent == 1)
            times_.add(attempt.request->station, reply_ns);
    }
    if (attempt.isFinal() && attempt.request->kind == RequestKind::Write)
        writeEnded(attempt);
    if (attempt.isFinal() && struckAt_ns_ >= 0 && !mixed_)
        noteQualities();
}

// An answer to the request itself, since its first attempt left, has brought this value.
bool CellWitness::isTrue(int tag, const Reading &reading) const
{
    const auto asked = asked_.constFind(reading.readAt_ns);
    if (asked == asked_.constEnd())
        return false;
    const QVector<Answer> answers = answers_.value(asked->frame);
    return std::any_of(answers.cbegin(), answers.cend(), [&](const Answer &answer) {
        return answer.at_ns >= asked->since_ns &&
               valueIn(answer.reply, tags_.at(tag)) == reading.raw;
    });
}

void CellWitness::recovered(qint64 at_ns)
{
    if (struckAt_ns_ < 0)
        return;
    qint64 &longest_ns = single_ ? findings_.recovery_ns : findings_.recoveryAfter_ns;
    longest_ns = std::max(longest_ns, at_ns - struckAt_ns_);
    struckAt_ns_ = -1;
}

void CellWitness::hidden(int tag, qint64 now_ns)
{
    const auto found = wrong_.find(tag);
    if (found == wrong_.end())
        return;
    const qint64 shown_ns = now_ns - found->since_ns;
    findings_.wrongLongest_ns = std::max(findings_.wrongLongest_ns, shown_ns);
    findings_.bound_ns = std::max(findings_.bound_ns, found->bound_ns);
    if (shown_ns > found->bound_ns)
        ++(found->several ? findings_.beyondOfSeveral : findings_.beyondBound);
    wrong_.erase(found);
}

// From one pause to the next, the pause itself, and the request that is under way, which may fail
// with all its attempts.
qint64 CellWitness::bound_ns() const
{
    const EngineSettings &engine = session_->engine().settings();
    if (engine.confirm)
        return 0;
    qint64 pause_ns = 0;
    for (const int station : stations_)
        pause_ns = std::max(pause_ns, times_.pause_ns(station));
    return static_cast<qint64>(static_cast<double>(pause_ns) / engine.checkpointShare) + pause_ns +
           findings_.longestRequest_ns;
}

void CellWitness::tell(const QString &text)
{
    if (!mixed_)
        findings_.told.insert(text);
}

void CellWitness::noteQualities()
{
    const QVector<CellValue> values = session_->values(line_->now_ns());
    for (int tag = 0; tag < values.size(); ++tag)
        if (isStruck_.at(tag))
            findings_.qualities.insert(qualityWord(values.at(tag).quality));
}

void CellWitness::writeEnded(const Attempt &attempt)
{
    Write &write = writes_[attempt.request->id];
    write.carriedOut = carriedOut_.take(attempt.request->frame);
    write.isCommand = attempt.request->isCommand;
}

} // namespace kvt
