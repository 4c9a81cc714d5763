// What an exchange engine reports to its owner.
#ifndef KVT_HOST_EXCHANGE_OBSERVER_H
#define KVT_HOST_EXCHANGE_OBSERVER_H

#include "host/host_time.h"
#include "host/request.h"

namespace kvt
{

/// Whether a result code of the driver tells of success.
inline bool isSuccessCode(int resultCode)
{
    return resultCode == RESULT_SUCCESS || resultCode == RESULT_REMOTE_SUCCESS;
}

/// How one attempt ended on the line.
enum class AttemptEnd {
    Replied,   ///< a reply was complete; whether it is good is the driver's to say
    Refused,   ///< the reply was a refusal
    NoReply,   ///< nothing came in time
    BrokenOff, ///< a reply began and did not end
    Foreign,   ///< a reply that does not look like one to the request was refused
    Disturbed  ///< bytes came before the request was out or behind a reply, so that none of them
               ///< could be trusted
};

/// One attempt at a request. Times in nanoseconds.
struct Attempt {
    const Request *request = nullptr; ///< valid during the call that reports it
    AttemptEnd end = AttemptEnd::NoReply;
    int number = 1;        ///< 1 for the first attempt at the request
    int resultCode = 0;    ///< of the driver; 0: it will be repeated
    int receivedBytes = 0; ///< bytes of the reply
    int timesSent = 1;     ///< how often the request has left for the line so far
    bool doubtful = false; ///< the reply does not look like one to the request
    bool unproven = false; ///< a good reply counts once `checkpointPassed` has followed
    qint64 sentAt_ns = 0;  ///< the request's last byte
    qint64 endedAt_ns = 0; ///< the reply's last byte, or when it was given up

    bool isSuccess() const { return isSuccessCode(resultCode); }
    bool isFinal() const { return resultCode != RESULT_RETRY; }
};

enum class DroppedBytes {
    Stale, ///< before a request was out, or behind a reply
    Late,  ///< in the silence after a failed attempt
    Echo   ///< the request itself
};

/// Called by an exchange engine, on its thread, from within its own calls.
class ExchangeObserver
{
public:
    virtual ~ExchangeObserver() = default;

    /// The driver is about to be asked for a request: the moment to queue requests and to switch
    /// stations.
    virtual void beforeRequest(qint64 now_ns) = 0;

    /// When there will be a request to queue, while the driver has none; NEVER when that is not
    /// known. The driver is asked again then, or at its usual time if that is sooner.
    virtual qint64 requestDue_ns() const { return NEVER; }

    /// A request's first attempt is about to leave; its retry limit can still be set.
    virtual void requestChosen(const Request &request) = 0;

    /// An attempt has ended. The driver has not yet been asked for the next request.
    virtual void attemptEnded(const Attempt &attempt) = 0;

    /// Bytes were thrown away; `station` is that of the latest request, -1 before the first.
    virtual void bytesDropped(DroppedBytes kind, int station, int count) = 0;

    /// The line was silent in a pause between two exchanges: all good replies before `began_ns`,
    /// or at that time, answered their own requests.
    virtual void checkpointPassed(qint64 began_ns) = 0;

    /// The line was silent, but that proves nothing since replies were found to be one behind: what
    /// is unproven stays so for good.
    virtual void checkpointVoid() = 0;

    /// Replies have answered other requests than their own: all good ones after `provedUntil_ns`
    /// may have, and what is unproven stays so for good.
    virtual void outOfStep(qint64 provedUntil_ns) = 0;

    /// The line can be used, or no longer.
    virtual void lineChanged(bool up, qint64 now_ns) = 0;
};

} // namespace kvt

#endif
