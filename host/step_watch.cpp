#include "host/step_watch.h"

#include "host/reply_check.h"

#include <algorithm>
#include <utility>

namespace kvt
{

namespace
{

// Where something was odd just now, more of it is likely, and each time all that is not proved by
// then is lost. So for a while each reply is proved by itself.
constexpr int WARY_REPLIES = 30;

} // namespace

void StepWatch::lineUp(qint64 now_ns)
{
    odd_ = true;
    wary_ = 0;
    proofWanted_ = false;
    behind_ = false;
    doubtedTime_ns_ = -1;
    pausedAt_ns_ = provedUntil_ns_ = differedAt_ns_ = now_ns;
    previous_ = current_ = Shape();
}

void StepWatch::sent(const Request &request, qint64 at_ns, qint64 timeout_ns)
{
    sentAt_ns_ = at_ns;
    timeout_ns_ = timeout_ns;
    doubtedTime_ns_ = -1;
    previous_ = current_;
    current_ = {request.station & 0xFF, request.expectedLength};
}

bool StepWatch::replied(const QByteArray &reply, qint64 now_ns, qint64 turnaround_ns,
                        bool firstAttempt)
{
    if (cannotAnswerPrevious(reply)) {
        behind_ = false;
        differedAt_ns_ = now_ns;
    }
    if (firstAttempt) {
        const bool isDoubted = doubtedTimes_.test(stationIndex());
        odd_ = odd_ || isDoubted || times_.isUnusual(current_.station, turnaround_ns);
        if (isDoubted)
            doubtedTime_ns_ = turnaround_ns;
        else
            times_.add(current_.station, turnaround_ns);
    } else {
        doubtTimeIfUnknown();
    }
    answersDue_ns_ = std::max(answersDue_ns_, sentAt_ns_ + pause_ns());
    const bool unproven = listens() && (odd_ || provesEachReply());
    proofWanted_ = proofWanted_ || unproven;
    return unproven;
}

void StepWatch::somethingOdd()
{
    odd_ = true;
    wary_ = WARY_REPLIES;
    doubtTimeIfUnknown();
}

// What answers first may not be the answer, and a pause of its time too short to find that out: the
// time counts once it is proved.
void StepWatch::doubtTimeIfUnknown()
{
    if (current_.station >= 0 && !times_.isKnown(current_.station))
        doubtedTimes_.set(stationIndex());
}

// A good reply has the length that was asked for, but its station is looked at by nobody else if
// replies are not checked, or one was taken that is doubtful.
bool StepWatch::cannotAnswerPrevious(const QByteArray &goodReply) const
{
    if (previous_.station < 0 || previous_.length != current_.length)
        return previous_.station >= 0;
    return previous_.station != current_.station && beginsAsReplyOf(current_.station, goodReply);
}

bool StepWatch::showsBehind(const QByteArray &bytes)
{
    const bool shows = previous_.station >= 0 && previous_ != current_ &&
                       bytes.size() == previous_.length && bytes.endsWith(FRAME_CR) &&
                       beginsAsReplyOf(previous_.station, bytes);
    behind_ = behind_ || shows;
    return shows;
}

bool StepWatch::answersAnother(const QByteArray &bytes) const
{
    return isWholeReply(bytes) &&
           (bytes.size() != current_.length || !beginsAsReplyOf(current_.station, bytes));
}

bool StepWatch::isPauseDue(qint64 now_ns) const
{
    if (proofWanted_)
        return true;
    const double earned_ns = static_cast<double>(now_ns - pausedAt_ns_) * share_;
    return share_ > 0 && earned_ns >= static_cast<double>(pause_ns());
}

// Of a station that has answered to repeated requests alone, no time is known.
qint64 StepWatch::longestReply_ns() const
{
    return times_.isKnown(current_.station) ? times_.longest_ns(current_.station) : timeout_ns_;
}

qint64 StepWatch::pause_ns() const
{
    return ReplyTimes::pauseAfter_ns(longestReply_ns());
}

// The answer may have had to wait until the reply was off the line. It follows at once then, but
// the interface may hand it over in one piece at its end, and late; not later than replies began of
// late, since that is in their times.
qint64 StepWatch::pauseBehindReply_ns() const
{
    const qint64 inOnePiece_ns = latency_ns_ + (current_.length + 2) * characterTime_ns_;
    return ReplyTimes::pauseAfter_ns(
        std::max(std::min(longestReply_ns(), inOnePiece_ns), 2 * characterTime_ns_));
}

qint64 StepWatch::pauseEnd_ns(qint64 now_ns) const
{
    // Where each reply is followed by a pause, none can be further behind than its own request.
    const bool isOwnAtMost = !odd_ && provesEachReply();
    return std::max(now_ns + (isOwnAtMost ? pauseBehindReply_ns() : pause_ns()), answersDue_ns_);
}

bool StepWatch::pauseWasSilent(qint64 began_ns, qint64 now_ns)
{
    pausedAt_ns_ = now_ns;
    if (doubtedTime_ns_ >= 0) {
        times_.add(current_.station, std::exchange(doubtedTime_ns_, -1));
        doubtedTimes_.reset(stationIndex());
    }
    odd_ = false;
    proofWanted_ = false;
    wary_ = std::max(wary_ - 1, 0);
    if (behind_)
        return false;
    provedUntil_ns_ = began_ns;
    return true;
}

qint64 StepWatch::outOfStep(qint64 now_ns)
{
    pausedAt_ns_ = now_ns;
    somethingOdd();
    proofWanted_ = false;
    return behind_ ? std::min(provedUntil_ns_, differedAt_ns_) : provedUntil_ns_;
}

} // namespace kvt
