// Carries text to where it may be stuck, so that whoever has something to say never waits.
#ifndef KVT_HOST_OUTLET_H
#define KVT_HOST_OUTLET_H

#include <QByteArray>
#include <QString>

#include <memory>

namespace kvt
{

/// Where an outlet's texts go. Called on the outlet's thread, where it may take any time.
class Sink
{
public:
    virtual ~Sink() = default;

    /// Writes one text, all of it. Returns why it could not; empty when it could.
    virtual QString write(const QByteArray &text) = 0;
};

/// Writes all of `text` to a descriptor, however long that takes. Returns why it could not; empty
/// when it could.
QString writeAll(int descriptor, const QByteArray &text);

/// A bounded queue of texts and a thread that hands them to a sink, in order. A pipe that nobody
/// reads or a disk that does not answer stops that thread alone. All calls from any thread.
class Outlet
{
public:
    /// What becomes of a text that finds the queue full.
    enum class WhenFull {
        Drop, ///< it is counted, and gone
        Wait  ///< the caller waits for room
    };

    /// The queue takes texts until it holds `limit_bytes`, so one text more than that.
    Outlet(std::shared_ptr<Sink> sink, qint64 limit_bytes);

    /// What has not been written by now is given up; `drain` first. The sink goes too, but for one
    /// in which the thread is stuck: both are left behind.
    ~Outlet();
    Outlet(const Outlet &) = delete;
    Outlet &operator=(const Outlet &) = delete;

    /// Queues a text. False when it was dropped, or the sink has failed.
    bool add(const QByteArray &text, WhenFull whenFull);

    /// Waits until all is written or the sink has failed, at most for `timeout_ns`; NEVER waits
    /// without limit. Returns false when something is still under way.
    bool drain(qint64 timeout_ns);

    /// True while something is queued or being written.
    bool isBusy() const;

    /// Number of texts that were dropped.
    qint64 dropped() const;

    /// Why the sink has failed; empty while it has not. From then on nothing is written.
    QString error() const;

private:
    struct State;

    std::shared_ptr<State> state_;
};

} // namespace kvt

#endif
