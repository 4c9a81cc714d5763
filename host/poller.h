// A host at work: one thread that polls a line and runs a session on it.
#ifndef KVT_HOST_POLLER_H
#define KVT_HOST_POLLER_H

#include "host/host_session.h"
#include "host/line.h"
#include "host/wake_up.h"

#include <atomic>
#include <memory>
#include <thread>

namespace kvt
{

/// Settings of a poller; times in nanoseconds.
struct PollerSettings {
    SessionSettings session; ///< the engine's character time and pace are taken from the line
    qint64 firstReopen_ns = milliseconds(100); ///< pause before a line is opened again; doubles
    qint64 longestReopen_ns = milliseconds(500);
    qint64 connectTimeout_ns = seconds(3); ///< for each step of an opening that stays pending
};

/// The time of the polling thread's clock, in nanoseconds.
qint64 monotonicNow_ns();

/// Polls a line on a thread of its own until it is stopped. A line that cannot be opened or breaks
/// is opened again and again, and meanwhile nothing counts against any station.
///
/// Construct, start and stop from one thread; the other calls are for any thread. The driver is
/// freshly loaded, and stays loaded while the poller lives, as `events` does.
class Poller
{
public:
    Poller(const DriverApi &api, const PollerSettings &settings, const QVector<Tag> &tags,
           std::unique_ptr<Line> line, HostEvents *events);

    /// Stops.
    ~Poller();
    Poller(const Poller &) = delete;
    Poller &operator=(const Poller &) = delete;

    /// Starts the thread. Once only.
    void start();

    /// Ends the thread, gives every unfinished write its final state and closes the line. An
    /// exchange under way is not waited for. Harmless when it does not run.
    void stop();

    /// No further request leaves. Any thread, events included; `stop` is still due.
    void endRequests();

    /// Request a write or a one-time reading: HostSession says how. They wait while the line is
    /// down.
    int write(int tag, const QByteArray &bytes);
    int readOnce(int tag);

    /// Every tag's value as it is now, in the order of the tags.
    QVector<TagValue> values() const;

    /// Every tag's alarm, none where the list says none, in the order of the tags.
    QVector<std::optional<AlarmStatus>> alarms() const { return session_.alarms(); }

    /// Somebody has seen to a tag's alarm. False for a tag without alarm.
    bool acknowledgeAlarm(int tag);

    /// A copy of the statistics.
    Statistics statistics() const { return session_.statistics(); }

    /// The line's time for one character, in nanoseconds; 0 when it has none.
    qint64 characterTime_ns() const { return line_->characterTime_ns(); }

    /// True when the line, as it was last open, keeps the pace of its speed.
    bool lineIsPaced() const { return lineIsPaced_; }

private:
    enum class LineState { Closed, Opening, Open };

    void run();
    bool waitForLine();
    qint64 nextDeadline_ns();
    void serve(bool lineReady);
    void serveOpening(bool lineReady);
    void serveOpenLine(bool lineReady);
    bool sendRequests();
    void open();
    void followOpening(Opening (Line::*step)(QString *));
    void opened();
    void closeLine(const QString &reason);

    PollerSettings settings_;
    std::unique_ptr<Line> line_;
    HostSession session_;
    WakeUp wakeUp_;
    std::thread thread_;
    std::atomic<bool> stopping_{false};
    std::atomic<bool> lineIsPaced_{false};

    LineState lineState_ = LineState::Closed;
    qint64 lineDeadline_ns_ = 0; // to open it again, or to give an opening up
    qint64 reopenPause_ns_;
    bool downReported_ = false;
};

} // namespace kvt

#endif
