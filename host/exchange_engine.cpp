#include "host/exchange_engine.h"

#include "host/line_tap.h"

#include <algorithm>
#include <utility>

namespace kvt
{

ExchangeEngine::ExchangeEngine(const DriverApi &api, const EngineSettings &settings,
                               ExchangeObserver *observer)
    : api_(api), settings_(settings), observer_(observer), judge_(settings.replyChecking),
      steps_(settings.checkpointShare, settings.confirm, settings.characterTime_ns,
             settings.latency_ns)
{
}

void ExchangeEngine::lineUp(qint64 now_ns)
{
    if (settings_.tap != nullptr)
        settings_.tap->lineChanged(true);
    observer_->lineChanged(true, now_ns);
    steps_.lineUp(now_ns);
    // Until something was sent, no reply to an own request can be under way.
    const bool isFirst = sentAt_ns_ == 0;
    hold(now_ns + (isFirst ? settings_.listeningTime_ns(request_.station, request_.expectedLength)
                           : settings_.quietTime_ns(request_.station, request_.expectedLength)),
         DroppedBytes::Stale);
}

void ExchangeEngine::lineDown(qint64 now_ns)
{
    // The driver still holds the frame in flight and returns it again when asked. A command that
    // may have been carried out is not sent again.
    if (request_.isCommand && (state_ == State::Waiting || state_ == State::Refused))
        endAttempt(now_ns, AttemptEnd::NoReply);
    state_ = State::Down;
    deadline_ns_ = NEVER;
    toSend_.clear();
    if (settings_.tap != nullptr)
        settings_.tap->lineChanged(false);
    observer_->lineChanged(false, now_ns);
}

void ExchangeEngine::received(qint64 now_ns, const char *bytes, int count)
{
    if (settings_.tap != nullptr)
        settings_.tap->bytesReceived(bytes, count);
    switch (state_) {
    case State::Down:
        break;
    case State::Idle:
    case State::Resting:
    case State::Pausing:
        bytesInPause(now_ns, count);
        break;
    case State::Holding:
        bytesWhileSilent(now_ns, bytes, count);
        break;
    case State::Sending:
        bytesBeforeSent(bytes, count);
        break;
    case State::Waiting:
        takeReplyBytes(now_ns, bytes, count);
        break;
    case State::Refused:
        drop(DroppedBytes::Stale, count);
        endAttempt(now_ns, AttemptEnd::Disturbed);
        break;
    }
}

void ExchangeEngine::sent(qint64 at_ns)
{
    if (state_ != State::Sending)
        return;
    if (settings_.tap != nullptr)
        settings_.tap->bytesSent(request_.frame);
    state_ = State::Waiting;
    sentAt_ns_ = at_ns;
    // A line without a pace takes the request at once and may still be sending it.
    const qint64 sending_ns =
        settings_.paced ? 0 : request_.frame.size() * settings_.characterTime_ns;
    replyDue_ns_ =
        at_ns + sending_ns + settings_.replyTimeout_ns(request_.station, request_.expectedLength);
    deadline_ns_ = replyDue_ns_;
    ++timesSent_;
    steps_.sent(request_, at_ns, replyDue_ns_ - at_ns);
    if (disturbed_)
        endAttempt(at_ns, AttemptEnd::Disturbed);
    else if (request_.expectedLength == 0)
        endAttempt(at_ns, AttemptEnd::Replied);
}

void ExchangeEngine::deadlineReached(qint64 now_ns)
{
    if (state_ == State::Idle)
        begin(now_ns);
    if (now_ns < deadline_ns_)
        return;
    if (state_ == State::Holding || state_ == State::Resting)
        goOn(now_ns);
    else if (state_ == State::Pausing)
        pauseOver(now_ns);
    else if (state_ == State::Waiting)
        endAttempt(now_ns, reply_.bytes().isEmpty() ? AttemptEnd::NoReply : AttemptEnd::BrokenOff);
    else if (state_ == State::Refused)
        endAttempt(now_ns, AttemptEnd::Refused);
}

bool ExchangeEngine::takeRequest(QByteArray *out)
{
    if (toSend_.isEmpty())
        return false;
    *out = std::exchange(toSend_, QByteArray());
    return true;
}

// After an exchange and the silence behind it.
void ExchangeEngine::goOn(qint64 now_ns)
{
    if (!steps_.isPauseDue(now_ns)) {
        begin(now_ns);
        return;
    }
    state_ = State::Pausing;
    pauseBegan_ns_ = now_ns;
    deadline_ns_ = steps_.pauseEnd_ns(now_ns);
}

void ExchangeEngine::pauseOver(qint64 now_ns)
{
    if (steps_.pauseWasSilent(pauseBegan_ns_, now_ns))
        observer_->checkpointPassed(pauseBegan_ns_);
    else
        observer_->checkpointVoid();
    begin(now_ns);
}

void ExchangeEngine::begin(qint64 now_ns)
{
    observer_->beforeRequest(now_ns);
    const Protocol *frame = nextFrame();
    if (frame == nullptr) {
        state_ = State::Idle;
        deadline_ns_ = now_ns + settings_.idlePoll_ns;
        // What is due and was not sent, such as a read of a station that is off, waits as well.
        const qint64 due_ns = observer_->requestDue_ns();
        if (due_ns > now_ns)
            deadline_ns_ = std::min(deadline_ns_, due_ns);
        return;
    }
    if (attemptNumber_ == 0) {
        request_ = requestOf(*frame);
        replyOutstanding_ = false;
        observer_->requestChosen(request_);
        attemptNumber_ = 1;
        timesSent_ = 0;
    }
    state_ = State::Sending;
    deadline_ns_ = NEVER;
    disturbed_ = false;
    toSend_ = request_.frame;
    reply_.start(request_, settings_.remoteMode);
}

Protocol *ExchangeEngine::nextFrame()
{
    // With nothing to read cyclically, a null after five writes only ends their turn.
    Protocol *frame = api_.ComCommunication();
    return frame != nullptr ? frame : api_.ComCommunication();
}

void ExchangeEngine::takeReplyBytes(qint64 now_ns, const char *bytes, int count)
{
    if (now_ns < sentAt_ns_) {
        bytesBeforeSent(bytes, count);
        if (disturbed_)
            endAttempt(sentAt_ns_, AttemptEnd::Disturbed);
        return;
    }
    const int echo = reply_.skipEcho(bytes, count);
    if (echo > 0)
        drop(DroppedBytes::Echo, echo);
    if (echo < count && reply_.bytes().isEmpty())
        replyBegan_ns_ = now_ns;
    const int taken = echo + reply_.add(bytes + echo, count - echo);
    if (cameTooSoon(now_ns)) {
        drop(DroppedBytes::Stale, reply_.bytes().size() + count - taken);
        reply_.start(request_, settings_.remoteMode);
        endAttempt(now_ns, AttemptEnd::Disturbed);
    } else if (!reply_.isComplete()) {
        if (!reply_.bytes().isEmpty())
            deadline_ns_ = now_ns + settings_.characterGap_ns();
    } else if (taken < count) {
        replyWithSurplus(now_ns, bytes + taken, count - taken);
    } else {
        replyComplete(now_ns);
    }
}

// On a paced line the number of bytes tells when the first of them began. What began before the
// request was out answers something else, however late it was read. Clocks of two stations may
// differ by some per cent.
bool ExchangeEngine::cameTooSoon(qint64 now_ns) const
{
    if (!settings_.paced)
        return false;
    const qint64 duration_ns = reply_.bytes().size() * settings_.characterTime_ns;
    const qint64 tolerance_ns = std::max(settings_.characterTime_ns, duration_ns * 3 / 100);
    return now_ns < sentAt_ns_ + duration_ns - tolerance_ns;
}

void ExchangeEngine::replyComplete(qint64 now_ns)
{
    const QByteArray &reply = reply_.bytes();
    if (isRefusal(request_, reply)) {
        state_ = State::Refused;
        refusedAt_ns_ = now_ns;
        deadline_ns_ = std::max(now_ns, replyDue_ns_);
    } else {
        const ReplyJudge::Verdict verdict = judge_.judge(request_, reply);
        if (verdict == ReplyJudge::Verdict::Foreign)
            endAttempt(now_ns, AttemptEnd::Foreign, true);
        else
            endAttempt(now_ns, AttemptEnd::Replied, verdict == ReplyJudge::Verdict::Doubtful);
    }
}

// One of the two is too many, and nothing tells which: the true answer may be behind a late one,
// even where the bytes that have come so far are the same.
void ExchangeEngine::replyWithSurplus(qint64 now_ns, const char *surplus, int count)
{
    drop(DroppedBytes::Stale, count);
    steps_.showsBehind(reply_.bytes() + QByteArray(surplus, count));
    endAttempt(now_ns, AttemptEnd::Disturbed);
}

void ExchangeEngine::bytesBeforeSent(const char *bytes, int count)
{
    const int echo = reply_.skipEcho(bytes, count);
    if (echo > 0)
        drop(DroppedBytes::Echo, echo);
    if (echo == count)
        return;
    disturbed_ = true;
    drop(DroppedBytes::Stale, count - echo);
}

void ExchangeEngine::bytesWhileSilent(qint64 now_ns, const char *bytes, int count)
{
    drop(heldBytes_, count);
    replyOutstanding_ = false;
    steps_.somethingOdd();
    // A longer reply, to the request before, has ended the attempt where its own would have ended.
    if (reply_.addOverrun(bytes, count) && answersAnother())
        observer_->outOfStep(steps_.outOfStep(now_ns));
    const qint64 until_ns = std::min(now_ns + settings_.characterGap_ns(), holdLimit_ns_);
    deadline_ns_ = std::max(deadline_ns_, until_ns);
}

// Nobody was asked: what comes is the answer to a request whose answer we believe to have had.
void ExchangeEngine::bytesInPause(qint64 now_ns, int count)
{
    drop(DroppedBytes::Stale, count);
    observer_->outOfStep(steps_.outOfStep(now_ns));
    hold(now_ns + settings_.quietTime_ns(request_.station, request_.expectedLength),
         DroppedBytes::Stale);
}

void ExchangeEngine::endAttempt(qint64 now_ns, AttemptEnd end, bool doubtful)
{
    Attempt attempt;
    attempt.request = &request_;
    attempt.end = end;
    attempt.number = attemptNumber_;
    attempt.timesSent = timesSent_;
    attempt.doubtful = doubtful;
    attempt.receivedBytes = reply_.bytes().size();
    attempt.sentAt_ns = sentAt_ns_;
    // A refusal is waited behind, but that is not the station's time.
    attempt.endedAt_ns = end == AttemptEnd::Refused ? refusedAt_ns_ : now_ns;

    attempt.resultCode = handOver(end);
    noteSteps(&attempt);
    attemptNumber_ = attempt.isFinal() ? 0 : attemptNumber_ + 1;
    if (settings_.tap != nullptr)
        settings_.tap->attemptEnded(attempt);
    observer_->attemptEnded(attempt);

    // One good reply with nothing behind it is the answer. Behind one to a later attempt that of
    // another attempt may still be on its way.
    if (attempt.isSuccess() && !replyOutstanding_)
        rest(now_ns);
    else
        keepSilent(now_ns, attempt);
}

// Returns the driver's result code.
int ExchangeEngine::handOver(AttemptEnd end)
{
    // What cannot be trusted is not handed over: to the driver the attempt had no reply.
    QByteArray bytes;
    if (end != AttemptEnd::Foreign && end != AttemptEnd::Disturbed)
        bytes = reply_.bytes();
    return api_.DataCom(&bytes, bytes.size())->result;
}

void ExchangeEngine::noteSteps(Attempt *attempt)
{
    if (attempt->isSuccess()) {
        // A host that was kept from reading has measured itself, not the station.
        const bool readInTime = replyBegan_ns_ <= replyDue_ns_;
        if (!readInTime)
            steps_.somethingOdd();
        attempt->unproven =
            steps_.replied(reply_.bytes(), attempt->endedAt_ns, replyBegan_ns_ - sentAt_ns_,
                           timesSent_ == 1 && readInTime);
        if (!attempt->doubtful)
            judge_.accepted(request_);
        return;
    }
    if (attempt->end == AttemptEnd::Refused)
        return;
    steps_.somethingOdd();
    // What came unasked may be the true answer to a request whose answer we believed to have had.
    if (attempt->end == AttemptEnd::Disturbed || answersAnother())
        observer_->outOfStep(steps_.outOfStep(attempt->endedAt_ns));
}

bool ExchangeEngine::answersAnother()
{
    return steps_.showsBehind(reply_.bytes()) || steps_.answersAnother(reply_.bytes());
}

// Nothing is due any more; the station may need silence all the same.
void ExchangeEngine::rest(qint64 now_ns)
{
    const qint64 gap_ns = settings_.timingOf(request_.station).gapAfterReply_ns;
    if (gap_ns == 0) {
        goOn(now_ns);
        return;
    }
    state_ = State::Resting;
    deadline_ns_ = now_ns + gap_ns;
}

// The line is kept silent until no answer to the attempt can come any more.
void ExchangeEngine::keepSilent(qint64 now_ns, const Attempt &attempt)
{
    if (attempt.end == AttemptEnd::NoReply || attempt.end == AttemptEnd::Foreign ||
        attempt.end == AttemptEnd::Disturbed)
        replyOutstanding_ = true;
    const qint64 end_ns = std::max(attempt.endedAt_ns, replyDue_ns_) +
                          settings_.quietTime_ns(request_.station, request_.expectedLength);
    if (end_ns > now_ns)
        hold(end_ns, attempt.isSuccess() ? DroppedBytes::Stale : DroppedBytes::Late);
    else
        goOn(now_ns);
}

void ExchangeEngine::hold(qint64 until_ns, DroppedBytes meaning)
{
    state_ = State::Holding;
    heldBytes_ = meaning;
    deadline_ns_ = until_ns;
    holdLimit_ns_ = deadline_ns_ + settings_.longestQuiet_ns;
}

void ExchangeEngine::drop(DroppedBytes kind, int count)
{
    if (settings_.tap != nullptr)
        settings_.tap->bytesDropped(kind, count);
    observer_->bytesDropped(kind, request_.station, count);
}

} // namespace kvt
