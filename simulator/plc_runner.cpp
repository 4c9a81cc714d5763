#include "simulator/plc_runner.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <limits>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>

namespace kvt
{
namespace
{

const qint64 NEVER = std::numeric_limits<qint64>::max();
const qint64 NS_PER_SECOND = 1000000000;
const qint64 REOPEN_NS = 200000000; ///< from one attempt to open a failed port to the next

qint64 monotonicNs()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * NS_PER_SECOND + now.tv_nsec;
}

} // namespace

PlcRunner::PlcRunner(SimulatedPlc *plc, Port *port) : plc_(plc), port_(port) {}

PlcRunner::~PlcRunner()
{
    stop();
}

bool PlcRunner::start(QString *error)
{
    wakeUp_.reset(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
    if (!wakeUp_.isOpen()) {
        *error = qt_error_string(errno);
        return false;
    }
    if (!port_->open(error))
        return false;
    thread_ = std::thread(&PlcRunner::run, this);
    return true;
}

void PlcRunner::stop()
{
    if (!thread_.joinable())
        return;
    give(Order::Stop);
    thread_.join();
    port_->close();
}

bool PlcRunner::setPlugged(bool plugged)
{
    return give(plugged ? Order::Plug : Order::Unplug);
}

bool PlcRunner::give(Order order)
{
    if (!thread_.joinable())
        return false;
    const QMutexLocker locker(&orderMutex_);
    while (order_ != Order::None)
        orderDone_.wait(&orderMutex_);
    order_ = order;
    eventfd_write(wakeUp_.get(), 1);
    while (order_ != Order::None)
        orderDone_.wait(&orderMutex_);
    return orderResult_;
}

// Returns false when the thread is to end.
bool PlcRunner::obey(qint64 nowNs)
{
    const QMutexLocker locker(&orderMutex_);
    const Order order = order_;
    orderResult_ = true;
    if (order == Order::Unplug)
        unplug(NEVER);
    else if (order == Order::Plug && downUntilNs_ != 0)
        orderResult_ = plugIn(nowNs);
    order_ = Order::None;
    orderDone_.wakeAll();
    return order != Order::Stop;
}

void PlcRunner::run()
{
    // The default slack of 50 us would make every answer late by half a byte at 115,200 baud.
    prctl(PR_SET_TIMERSLACK, 1);
    // Signals are the program's affair, and a peer that has gone shows in the result of a write.
    sigset_t all = {};
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
    while (obey(monotonicNs())) {
        const qint64 nowNs = monotonicNs();
        sendDue(nowNs);
        if (downUntilNs_ != 0 && downUntilNs_ <= nowNs)
            plugIn(nowNs);
        wait();
    }
}

qint64 PlcRunner::nextWakeNs() const
{
    const qint64 upNs = downUntilNs_ == 0 ? NEVER : downUntilNs_;
    return outgoing_.empty() ? upNs : qMin(upNs, outgoing_.front().dueNs);
}

void PlcRunner::wait()
{
    std::array<pollfd, 3> polled = {
        {{wakeUp_.get(), POLLIN, 0}, {port_->listenFd(), POLLIN, 0}, {port_->dataFd(), POLLIN, 0}}};
    const qint64 wakeNs = nextWakeNs();
    const qint64 leftNs = qMax(Q_INT64_C(0), wakeNs - monotonicNs());
    const timespec left = {leftNs / NS_PER_SECOND, leftNs % NS_PER_SECOND};
    if (ppoll(polled.data(), polled.size(), wakeNs == NEVER ? nullptr : &left, nullptr) <= 0)
        return;
    if (polled[0].revents != 0) {
        eventfd_t count = 0;
        eventfd_read(wakeUp_.get(), &count);
    }
    if (polled[2].revents != 0)
        receive(monotonicNs());
    if (polled[1].revents != 0 && port_->listenFd() >= 0) {
        port_->acceptPeer();
        lineBegins();
    }
}

void PlcRunner::receive(qint64 nowNs)
{
    std::array<char, 4096> buffer = {};
    const ssize_t size = ::read(port_->dataFd(), buffer.data(), buffer.size());
    if (size < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (size <= 0) {
        port_->dropPeer();
        lineBegins();
        if (port_->listenFd() < 0)
            unplug(nowNs + REOPEN_NS);
        return;
    }
    const QMutexLocker locker(&plcMutex_);
    const qint64 byteTimeNs = plc_->config().byteTimeNs;
    receiveFreeNs_ = qMax(nowNs, receiveFreeNs_) + size * byteTimeNs;
    const QByteArray bytes(buffer.data(), static_cast<int>(size));
    const PlcReaction reaction = plc_->receive(bytes, receiveFreeNs_);
    for (const Transmission &sent : reaction.transmissions)
        outgoing_.push_back({sent.startNs + sent.bytes.size() * byteTimeNs, sent.bytes});
    if (reaction.lineBreakNs > 0)
        unplug(nowNs + reaction.lineBreakNs);
}

// Bytes that find the line full, because nobody reads, are lost, as they are on a wire.
void PlcRunner::sendDue(qint64 nowNs)
{
    while (!outgoing_.empty() && outgoing_.front().dueNs <= nowNs) {
        const QByteArray bytes = outgoing_.front().bytes;
        outgoing_.pop_front();
        const ssize_t written =
            ::write(port_->dataFd(), bytes.constData(), static_cast<size_t>(bytes.size()));
        Q_UNUSED(written)
    }
}

void PlcRunner::unplug(qint64 untilNs)
{
    port_->close();
    outgoing_.clear();
    downUntilNs_ = untilNs;
}

bool PlcRunner::plugIn(qint64 nowNs)
{
    QString error;
    const bool open = port_->open(&error);
    downUntilNs_ = open ? 0 : nowNs + REOPEN_NS;
    if (open)
        lineBegins();
    return open;
}

void PlcRunner::lineBegins()
{
    outgoing_.clear();
    receiveFreeNs_ = 0;
    const QMutexLocker locker(&plcMutex_);
    plc_->lineOpened();
}

} // namespace kvt
