// Single requests, one after the other, on a line that is otherwise quiet.
#ifndef KVT_APPS_KVT_ENQUIRY_H
#define KVT_APPS_KVT_ENQUIRY_H

#include "apps/kvt/host_link.h"
#include "apps/kvt/stop_signal.h"

#include <QDateTime>
#include <QEventLoop>

#include <mutex>

namespace kvt
{

/// How a request ended; times in nanoseconds.
struct RequestOutcome {
    bool good = false;
    bool interrupted = false; ///< it was begun, but its end was not waited for
    bool lineLost = false;    ///< it was the line that cut it short
    bool asked = false;       ///< at least one attempt has ended; else the rest says nothing
    AttemptEnd end = AttemptEnd::NoReply; ///< of the last attempt
    int resultCode = 0;                   ///< of the driver
    int attempts = 0;
    int timesSent = 0;       ///< times that the request has left for the line
    bool doubtful = false;   ///< the last reply does not look like one to the request
    qint64 replyTime_ns = 0; ///< last attempt: from the request's last byte to the end
    QDateTime endedAt;       ///< last attempt: when it ended
    TagValue value;          ///< what is known of a tag that was to be read
    WriteReport write;       ///< final state of a write

    /// True when the station was heard, even if it refused.
    bool stationAnswered() const { return asked && (good || end == AttemptEnd::Refused); }

    /// True when the words of the tag did not hold still.
    bool isTorn() const { return !good && value.quality == Quality::Torn; }

    /// True when the station's good reply is not enough to go by.
    bool isUnproved() const { return asked && !good && !isTorn() && isSuccessCode(resultCode); }

    /// True when a write that failed may have taken effect all the same.
    bool isUncertain() const
    {
        return write.state == WriteState::TimedOut || write.state == WriteState::Uncertain ||
               write.state == WriteState::PartlyWritten;
    }
};

/// Asks the PLC for one thing at a time; nothing is polled meanwhile. All calls from the thread of
/// the event loop, which runs while they wait. Ctrl-C and the failure of the line end every wait.
class Enquiry : private HostEvents
{
public:
    /// `tags` are what can be asked for.
    Enquiry(const LineOptions &options, const QVector<Tag> &tags);
    ~Enquiry() override;

    /// Loads the driver and opens the line. Returns an ExitCode; all but EXIT_GOOD come with a
    /// message.
    int open();

    /// Reads a tag, or writes it; HostSession::write says what `bytes` are. False when Ctrl-C or
    /// the line came between; `reportStop` tells which. Nothing can be asked for any more then.
    bool read(int tag, RequestOutcome *outcome);
    bool write(int tag, const QByteArray &bytes, RequestOutcome *outcome);

    /// After a wait was ended: prints why and returns the ExitCode for it.
    int reportStop() const;

private:
    void writeChanged(const WriteReport &report) override;
    void onceReadEnded(int id, int tag, bool good) override;
    void lineChanged(bool up, const QString &reason) override;
    void attemptEnded(const Attempt &attempt) override;

    void begin();
    bool finish(RequestOutcome *outcome);
    template <typename Condition>
    bool waitUntil(Condition condition);
    void wakeUp();

    LineOptions options_;
    QVector<Tag> tags_;
    StopSignal stopSignal_;
    QEventLoop loop_;

    mutable std::mutex mutex_; // the members below, which the polling thread fills
    bool lineIsUp_ = false;
    QString lineError_;
    bool ended_ = false;
    RequestOutcome outcome_;

    HostLink link_; // its thread goes before all else
};

} // namespace kvt

#endif
