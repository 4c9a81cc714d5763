// The alternation of request and reply on one line, free of input, output and clocks.
#ifndef KVT_HOST_EXCHANGE_ENGINE_H
#define KVT_HOST_EXCHANGE_ENGINE_H

#include "host/driver_library.h"
#include "host/engine_settings.h"
#include "host/exchange_observer.h"
#include "host/reply_check.h"
#include "host/reply_collector.h"
#include "host/step_watch.h"

namespace kvt
{

/// Asks the driver for frames, has them sent, collects the replies and hands them to the driver.
///
/// Whoever owns the line tells the engine what happens there and at what time, and after each call
/// sends what `takeRequest` yields and comes back no later than `deadline_ns`. Times are
/// nanoseconds of any clock that only goes forward. All calls from one thread, the only one that
/// calls the driver's ComCommunication and DataCom. The driver must have its ComInfo.
class ExchangeEngine
{
public:
    /// `observer` is not null and outlives the engine.
    ExchangeEngine(const DriverApi &api, const EngineSettings &settings,
                   ExchangeObserver *observer);

    /// The line can be used from now on. It is listened to for a while before the first request:
    /// an answer to a former user's request may still be on its way.
    void lineUp(qint64 now_ns);

    /// The line is gone. A request in flight is neither failed nor answered; it is sent again when
    /// the line is back.
    void lineDown(qint64 now_ns);

    /// `count` bytes have arrived, the last of them at `now_ns`.
    void received(qint64 now_ns, const char *bytes, int count);

    /// The last byte of the request has left at `at_ns`, or will have left then: a line that can
    /// work the time out may say so as soon as it has the bytes.
    void sent(qint64 at_ns);

    /// To be called when the deadline has come; earlier calls are harmless. While the driver has
    /// nothing to send, any call asks it again, which is how it is woken up.
    void deadlineReached(qint64 now_ns);

    /// Moves the bytes to be sent now into `*out`. Returns false when there are none. `sent` is
    /// due once they have left.
    bool takeRequest(QByteArray *out);

    /// When `deadlineReached` is due; NEVER when nothing is waited for but the line itself.
    qint64 deadline_ns() const { return deadline_ns_; }

    /// Whether bytes keep the pace of the line, which may be known only once it is open. Best
    /// called before `lineUp`.
    void setPaced(bool paced) { settings_.paced = paced; }

    /// Somebody waits for what is unproven: the line is listened to before the next request. For
    /// the observer, while an attempt is reported to it.
    void askForProof() { steps_.askForProof(); }

    const EngineSettings &settings() const { return settings_; }

private:
    enum class State {
        Down,    // the line cannot be used
        Idle,    // the driver has nothing to send
        Holding, // the line is kept silent until the deadline, and late replies may come
        Resting, // the line is kept silent for the station's sake, and nothing is due
        Pausing, // listening whether replies are in step, from pauseBegan_ns_ on
        Sending, // a request has been handed out and has not left
        Waiting, // for the reply, from sentAt_ns_ on
        Refused  // a refusal is complete; what comes until the reply was due makes it void
    };

    void goOn(qint64 now_ns);
    void pauseOver(qint64 now_ns);
    void begin(qint64 now_ns);
    Protocol *nextFrame();
    void takeReplyBytes(qint64 now_ns, const char *bytes, int count);
    bool cameTooSoon(qint64 now_ns) const;
    void replyComplete(qint64 now_ns);
    void replyWithSurplus(qint64 now_ns, const char *surplus, int count);
    void bytesBeforeSent(const char *bytes, int count);
    void bytesWhileSilent(qint64 now_ns, const char *bytes, int count);
    void bytesInPause(qint64 now_ns, int count);
    void endAttempt(qint64 now_ns, AttemptEnd end, bool doubtful = false);
    int handOver(AttemptEnd end);
    void noteSteps(Attempt *attempt);
    bool answersAnother();
    void rest(qint64 now_ns);
    void keepSilent(qint64 now_ns, const Attempt &attempt);
    void hold(qint64 until_ns, DroppedBytes meaning);
    void drop(DroppedBytes kind, int count);

    DriverApi api_;
    EngineSettings settings_;
    ExchangeObserver *observer_;
    State state_ = State::Down;
    qint64 deadline_ns_ = NEVER;
    qint64 sentAt_ns_ = 0;
    qint64 replyBegan_ns_ = 0; // first byte of the reply
    qint64 refusedAt_ns_ = 0;  // last byte of a refusal
    qint64 replyDue_ns_ = 0;   // latest time for the reply to begin
    qint64 pauseBegan_ns_ = 0;
    qint64 holdLimit_ns_ = 0;                      // bytes extend a silence up to here
    DroppedBytes heldBytes_ = DroppedBytes::Stale; // what bytes in a silence count as
    Request request_;
    QByteArray toSend_;
    ReplyCollector reply_;
    ReplyJudge judge_;
    StepWatch steps_;
    int attemptNumber_ = 0;         // 0: the driver's next frame is a new request
    int timesSent_ = 0;             // of the request
    bool disturbed_ = false;        // bytes came while the request was leaving
    bool replyOutstanding_ = false; // an attempt at this request may still be answered
};

} // namespace kvt

#endif
