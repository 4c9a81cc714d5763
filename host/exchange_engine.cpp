#include "host/exchange_engine.h"

#include "host/line_tap.h"
#include "host/reply_check.h"

#include <algorithm>

namespace kvt
{

ExchangeEngine::ExchangeEngine(const DriverApi &api, const EngineSettings &settings,
                               ExchangeObserver *observer)
    : api_(api), settings_(settings), observer_(observer)
{
}

void ExchangeEngine::lineUp(qint64 now_ns)
{
    if (settings_.tap != nullptr)
        settings_.tap->lineChanged(true);
    observer_->lineChanged(true, now_ns);
    // Until something was sent, no reply to an own request can be under way.
    const bool isFirst = sentAt_ns_ == 0;
    hold(now_ns,
         isFirst ? settings_.listeningTime_ns(request_.station, request_.expectedLength)
                 : settings_.quietTime_ns(request_.station, request_.expectedLength),
         DroppedBytes::Stale);
}

void ExchangeEngine::lineDown(qint64 now_ns)
{
    // The driver still holds the frame in flight and returns it again when asked.
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
        hold(now_ns, settings_.characterGap_ns(), DroppedBytes::Stale);
        drop(DroppedBytes::Stale, count);
        break;
    case State::Holding:
        bytesWhileSilent(now_ns, count);
        break;
    case State::Sending:
        bytesBeforeSent(bytes, count);
        break;
    case State::Waiting:
        takeReplyBytes(now_ns, bytes, count);
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
    deadline_ns_ =
        at_ns + sending_ns + settings_.replyTimeout_ns(request_.station, request_.expectedLength);
    if (disturbed_)
        endAttempt(at_ns, AttemptEnd::Disturbed, false, 0);
    else if (request_.expectedLength == 0)
        endAttempt(at_ns, AttemptEnd::Replied, false, 0);
}

void ExchangeEngine::deadlineReached(qint64 now_ns)
{
    if (state_ == State::Idle)
        begin(now_ns);
    if (now_ns < deadline_ns_)
        return;
    if (state_ == State::Holding)
        begin(now_ns);
    else if (state_ == State::Waiting)
        endAttempt(now_ns, reply_.bytes().isEmpty() ? AttemptEnd::NoReply : AttemptEnd::BrokenOff,
                   false, 0);
}

bool ExchangeEngine::takeRequest(QByteArray *out)
{
    if (toSend_.isEmpty())
        return false;
    *out = toSend_;
    toSend_.clear();
    return true;
}

void ExchangeEngine::begin(qint64 now_ns)
{
    observer_->beforeRequest(now_ns);
    const Protocol *frame = nextFrame();
    if (frame == nullptr) {
        state_ = State::Idle;
        deadline_ns_ = now_ns + settings_.idlePoll_ns;
        return;
    }
    if (attemptNumber_ == 0) {
        request_ = requestOf(*frame);
        replyOutstanding_ = false;
        observer_->requestChosen(request_, now_ns);
        attemptNumber_ = 1;
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
            endAttempt(sentAt_ns_, AttemptEnd::Disturbed, false, 0);
        return;
    }
    const int echo = reply_.skipEcho(bytes, count);
    if (echo > 0)
        drop(DroppedBytes::Echo, echo);
    const int taken = echo + reply_.add(bytes + echo, count - echo);
    if (cameTooSoon(now_ns)) {
        drop(DroppedBytes::Stale, reply_.bytes().size() + count - taken);
        reply_.start(request_, settings_.remoteMode);
        endAttempt(now_ns, AttemptEnd::Disturbed, false, 0);
    } else if (reply_.isComplete()) {
        replyComplete(now_ns, bytes + taken, count - taken);
    } else if (!reply_.bytes().isEmpty()) {
        deadline_ns_ = now_ns + settings_.characterGap_ns();
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

void ExchangeEngine::replyComplete(qint64 now_ns, const char *surplus, int surplusCount)
{
    qint64 leastSilence_ns = 0;
    bool untrustworthy = false;
    if (surplusCount > 0) {
        drop(DroppedBytes::Stale, surplusCount);
        leastSilence_ns = settings_.characterGap_ns();
        untrustworthy = contradicts(surplus, surplusCount);
    }
    const QByteArray &reply = reply_.bytes();
    const bool doubtful = !settings_.remoteMode && settings_.replyChecking != ReplyChecking::Off &&
                          !looksLikeReply(request_, reply);
    AttemptEnd end = AttemptEnd::Replied;
    if (untrustworthy)
        end = AttemptEnd::Disturbed;
    else if (doubtful && settings_.replyChecking == ReplyChecking::Refuse)
        end = AttemptEnd::Foreign;
    else if (!settings_.remoteMode && isRefusal(reply))
        end = AttemptEnd::Refused;
    endAttempt(now_ns, end, doubtful, leastSilence_ns);
}

// Bytes that follow a reply at once and do not repeat it may be the true answer behind a late one.
bool ExchangeEngine::contradicts(const char *surplus, int count) const
{
    const QByteArray &reply = reply_.bytes();
    for (int i = 0; i < count; ++i)
        if (surplus[i] != reply.at(i % reply.size()))
            return true;
    return false;
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

void ExchangeEngine::bytesWhileSilent(qint64 now_ns, int count)
{
    drop(heldBytes_, count);
    replyOutstanding_ = false;
    const qint64 until_ns = std::min(now_ns + settings_.characterGap_ns(), holdLimit_ns_);
    deadline_ns_ = std::max(deadline_ns_, until_ns);
}

void ExchangeEngine::endAttempt(qint64 now_ns, AttemptEnd end, bool doubtful,
                                qint64 leastSilence_ns)
{
    Attempt attempt;
    attempt.request = &request_;
    attempt.end = end;
    attempt.number = attemptNumber_;
    attempt.doubtful = doubtful;
    attempt.receivedBytes = reply_.bytes().size();
    attempt.sentAt_ns = sentAt_ns_;
    attempt.endedAt_ns = now_ns;

    const RW_VAR *reply = handOver(end);
    attempt.resultCode = reply->result;
    attemptNumber_ = attempt.isFinal() ? 0 : attemptNumber_ + 1;
    if (settings_.tap != nullptr)
        settings_.tap->attemptEnded(attempt);
    observer_->attemptEnded(attempt, *reply);

    const bool replied = attempt.isSuccess() || end == AttemptEnd::Refused;
    const qint64 silence_ns = silenceAfter(attempt, leastSilence_ns);
    if (silence_ns > 0)
        hold(now_ns, silence_ns, replied ? DroppedBytes::Stale : DroppedBytes::Late);
    else
        begin(now_ns);
}

const RW_VAR *ExchangeEngine::handOver(AttemptEnd end)
{
    // What cannot be trusted is not handed over: to the driver the attempt had no reply.
    QByteArray bytes;
    if (end != AttemptEnd::Foreign && end != AttemptEnd::Disturbed)
        bytes = reply_.bytes();
    return api_.DataCom(&bytes, bytes.size());
}

qint64 ExchangeEngine::silenceAfter(const Attempt &attempt, qint64 leastSilence_ns)
{
    const int station = request_.station;
    const qint64 quiet_ns = settings_.quietTime_ns(station, request_.expectedLength);
    if (attempt.isSuccess() || attempt.end == AttemptEnd::Refused) {
        // An earlier attempt may have been answered just now, and this one still be.
        const qint64 outstanding_ns = replyOutstanding_ && attempt.isFinal() ? quiet_ns : 0;
        return std::max(
            {settings_.timingOf(station).gapAfterReply_ns, leastSilence_ns, outstanding_ns});
    }
    if (attempt.end == AttemptEnd::NoReply)
        replyOutstanding_ = true;
    if (attempt.end != AttemptEnd::Disturbed)
        return quiet_ns;
    // Nothing was waited for, so the answer has the whole of its time still before it.
    replyOutstanding_ = true;
    return quiet_ns + settings_.replyTimeout_ns(station, request_.expectedLength);
}

void ExchangeEngine::hold(qint64 now_ns, qint64 silence_ns, DroppedBytes meaning)
{
    state_ = State::Holding;
    heldBytes_ = meaning;
    deadline_ns_ = now_ns + silence_ns;
    holdLimit_ns_ = deadline_ns_ + settings_.longestQuiet_ns;
}

void ExchangeEngine::drop(DroppedBytes kind, int count)
{
    if (settings_.tap != nullptr)
        settings_.tap->bytesDropped(kind, count);
    observer_->bytesDropped(kind, request_.station, count);
}

} // namespace kvt
