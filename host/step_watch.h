// Whether replies are in step with requests: each the answer to its own, and none one behind.
#ifndef KVT_HOST_STEP_WATCH_H
#define KVT_HOST_STEP_WATCH_H

#include "host/reply_times.h"
#include "host/request.h"

#include <bitset>

namespace kvt
{

/// Decides when the line is listened to between two exchanges, for how long, and what follows.
///
/// Nothing in a reply names its request. If each reply answers the request before, every single
/// exchange looks right; but in a pause the reply that is one too many is heard. A pause in which
/// nothing is heard proves the replies before it. Besides, where two requests in a row differ in
/// station or length, the reply to the second cannot answer the first. No clock; one thread.
class StepWatch
{
public:
    /// `share` is the part of the line's time that pauses may take, 0 to 1. With `everyReply` each
    /// reply is followed by a pause, which lasts only until its own request could still be
    /// answered, whatever the share. With neither there are no pauses and nothing is ever unproven.
    /// `characterTime_ns` is the line's, `latency_ns` the longest time that its interface holds
    /// back what has arrived.
    StepWatch(double share, bool everyReply, qint64 characterTime_ns = 0, qint64 latency_ns = 0)
        : share_(share), everyReply_(everyReply), characterTime_ns_(characterTime_ns),
          latency_ns_(latency_ns)
    {
    }

    /// Nothing is known of the line from now on.
    void lineUp(qint64 now_ns);

    /// A request has left for the line at `at_ns`; its reply begins within `timeout_ns` or not at
    /// all.
    void sent(const Request &request, qint64 at_ns, qint64 timeout_ns);

    /// A good reply has come, to the first attempt or a later one, and began `turnaround_ns` after
    /// its request had left. Returns true when its value waits for a proof.
    bool replied(const QByteArray &reply, qint64 now_ns, qint64 turnaround_ns, bool firstAttempt);

    /// An attempt had no good reply, or bytes came that were none.
    void somethingOdd();

    /// Looks at bytes that have come for the latest request. True when they are just what answers
    /// the one before it, and not the latest: replies are one behind. From then on silence proves
    /// nothing until two requests that differ have been answered.
    bool showsBehind(const QByteArray &bytes);

    /// True when these bytes are a whole reply, but none to the latest request: it answers another
    /// one, whose answer another reply was taken for.
    bool answersAnother(const QByteArray &bytes) const;

    /// Somebody waits for a proof: the next pause is due at once.
    void askForProof() { proofWanted_ = listens(); }

    /// True when the line is to be listened to before the next request.
    bool isPauseDue(qint64 now_ns) const;

    /// The end of a pause that begins now.
    qint64 pauseEnd_ns(qint64 now_ns) const;

    /// A pause that began at `began_ns` has ended without a byte. Returns true when that proves
    /// what came before it.
    bool pauseWasSilent(qint64 began_ns, qint64 now_ns);

    /// Replies are out of step: a byte was heard that nobody had asked for, or they were shown to
    /// be behind. Returns the time since which nothing is proved.
    qint64 outOfStep(qint64 now_ns);

private:
    bool listens() const { return everyReply_ || share_ > 0; }
    bool provesEachReply() const { return everyReply_ || wary_ > 0; }
    qint64 longestReply_ns() const;
    qint64 pause_ns() const;
    qint64 pauseBehindReply_ns() const;
    size_t stationIndex() const { return static_cast<size_t>(current_.station); }
    bool cannotAnswerPrevious(const QByteArray &goodReply) const;
    void doubtTimeIfUnknown();

    struct Shape {
        int station = -1;
        int length = 0;
        bool operator!=(const Shape &other) const
        {
            return station != other.station || length != other.length;
        }
    };

    double share_;
    bool everyReply_;
    qint64 characterTime_ns_;
    qint64 latency_ns_;
    ReplyTimes times_;
    Shape previous_;
    Shape current_;
    qint64 sentAt_ns_ = 0;     // of the latest request
    qint64 timeout_ns_ = 0;    // of the same
    qint64 answersDue_ns_ = 0; // of all requests that were answered: stations differ in their times
    std::bitset<256> doubtedTimes_; // stations whose first time may be that of another reply
    qint64 doubtedTime_ns_ = -1;    // of the latest reply, if its station is one of them
    int wary_ = 0;                  // replies to come that are each followed by a pause
    bool odd_ = true;               // something happened after which replies could be out of step
    bool proofWanted_ = false;      // a value or a write waits for a pause
    bool behind_ = false; // a reply was one behind, and no two that differ were right since
    qint64 pausedAt_ns_ = 0;
    qint64 provedUntil_ns_ = 0;
    qint64 differedAt_ns_ = 0; // when a reply was last right behind a request that differed
};

} // namespace kvt

#endif
