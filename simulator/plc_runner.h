// Runs a simulated PLC on a port, at the pace of the line.
#ifndef KVT_SIMULATOR_PLC_RUNNER_H
#define KVT_SIMULATOR_PLC_RUNNER_H

#include "simulator/file_descriptor.h"
#include "simulator/port.h"
#include "simulator/simulated_plc.h"

#include <QMutex>
#include <QWaitCondition>

#include <deque>
#include <thread>

namespace kvt
{

/// A thread that hands what arrives at a port to the PLC and sends its answers. A request counts as
/// received when its last byte would be over the line, and an answer leaves, whole, when its last
/// byte would: at `PlcConfig::byteTime_ns` a byte, on the machine's monotonic clock. The thread
/// sleeps until there is something to do.
class PlcRunner
{
public:
    /// `plc` and `port` stay the caller's and must outlive the runner.
    PlcRunner(SimulatedPlc *plc, Port *port);

    /// Stops the thread.
    ~PlcRunner();
    PlcRunner(const PlcRunner &) = delete;
    PlcRunner &operator=(const PlcRunner &) = delete;

    /// Opens the port and starts the thread, once. False, with `*error` set, when the port does not
    /// open.
    bool start(QString *error);

    /// Stops the thread and closes the port. Nothing happens when it does not run.
    void stop();

    /// Unplugs the line, or plugs it in again, as a hand would; done when the call returns. Any
    /// thread, while the runner runs. False when the port does not open; it is tried again then.
    bool setPlugged(bool plugged);

    /// Calls `use(SimulatedPlc &)` while the thread keeps its hands off the PLC and returns what it
    /// returns. Any thread. `use` must not call the runner.
    template <typename Use>
    auto withPlc(Use use)
    {
        const QMutexLocker locker(&plcMutex_);
        return use(*plc_);
    }

private:
    enum class Order { None, Stop, Unplug, Plug };

    struct Outgoing {
        qint64 due_ns; ///< when the last byte is to be on the line
        QByteArray bytes;
    };

    bool give(Order order);
    void run();
    bool obey(qint64 now_ns);
    void wait();
    qint64 nextWake_ns() const;
    void receive(qint64 now_ns);
    void sendDue(qint64 now_ns);
    bool plugIn(qint64 now_ns);
    void unplug(qint64 until_ns);
    void lineBegins();

    SimulatedPlc *plc_;
    Port *port_;
    std::thread thread_;
    FileDescriptor wakeUp_; ///< an eventfd

    QMutex plcMutex_; ///< guards `*plc_`

    QMutex orderMutex_;
    QWaitCondition orderDone_; ///< with orderMutex_
    Order order_ = Order::None;
    bool orderResult_ = false;

    // The thread's own.
    std::deque<Outgoing> outgoing_;
    qint64 receiveFree_ns_ = 0; ///< when the last byte received was over the line
    qint64 downUntil_ns_ = 0;   ///< 0 while the line is up
};

} // namespace kvt

#endif
