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

constexpr qint64 NEVER = std::numeric_limits<qint64>::max();
constexpr qint64 NS_PER_SECOND = 1000000000;
constexpr qint64 REOPEN_ns = 200000000; ///< from one attempt to open a failed port to the next

// A host has one request under way; whoever floods the line gets no more than this into memory.
constexpr size_t MOST_WAITING = 1024;

qint64 monotonic_ns()
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
bool PlcRunner::obey(qint64 now_ns)
{
    const QMutexLocker locker(&orderMutex_);
    const Order order = order_;
    orderResult_ = true;
    if (order == Order::Unplug)
        unplug(NEVER);
    else if (order == Order::Plug && downUntil_ns_ != 0)
        orderResult_ = plugIn(now_ns);
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
    while (obey(monotonic_ns())) {
        const qint64 now_ns = monotonic_ns();
        sendDue(now_ns);
        if (downUntil_ns_ != 0 && downUntil_ns_ <= now_ns)
            plugIn(now_ns);
        wait();
    }
}

qint64 PlcRunner::nextWake_ns() const
{
    const qint64 up_ns = downUntil_ns_ == 0 ? NEVER : downUntil_ns_;
    return outgoing_.empty() ? up_ns : qMin(up_ns, outgoing_.front().due_ns);
}

void PlcRunner::wait()
{
    std::array<pollfd, 3> polled = {
        {{wakeUp_.get(), POLLIN, 0}, {port_->listenFd(), POLLIN, 0}, {port_->dataFd(), POLLIN, 0}}};
    const qint64 wake_ns = nextWake_ns();
    const qint64 left_ns = qMax(Q_INT64_C(0), wake_ns - monotonic_ns());
    const timespec left = {left_ns / NS_PER_SECOND, left_ns % NS_PER_SECOND};
    if (ppoll(polled.data(), polled.size(), wake_ns == NEVER ? nullptr : &left, nullptr) <= 0)
        return;
    if (polled[0].revents != 0) {
        eventfd_t count = 0;
        eventfd_read(wakeUp_.get(), &count);
    }
    if (polled[2].revents != 0)
        receive(monotonic_ns());
    if (polled[1].revents != 0 && port_->listenFd() >= 0) {
        port_->acceptPeer();
        lineBegins();
    }
}

void PlcRunner::receive(qint64 now_ns)
{
    std::array<char, 4096> buffer = {};
    const ssize_t size = ::read(port_->dataFd(), buffer.data(), buffer.size());
    if (size < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (size <= 0) {
        port_->dropPeer();
        lineBegins();
        if (port_->listenFd() < 0)
            unplug(now_ns + REOPEN_ns);
        return;
    }
    const QMutexLocker locker(&plcMutex_);
    const qint64 byteTime_ns = plc_->config().byteTime_ns;
    receiveFree_ns_ = qMax(now_ns, receiveFree_ns_) + size * byteTime_ns;
    const QByteArray bytes(buffer.data(), static_cast<int>(size));
    const PlcReaction reaction = plc_->receive(bytes, receiveFree_ns_);
    for (const Transmission &sent : reaction.transmissions) {
        if (outgoing_.size() < MOST_WAITING)
            outgoing_.push_back({sent.start_ns + sent.bytes.size() * byteTime_ns, sent.bytes});
        else
            plc_->replyLost();
    }
    if (reaction.lineBreak_ns > 0)
        unplug(now_ns + reaction.lineBreak_ns);
}

// Bytes that find the line full, because nobody reads, are lost, as they are on a wire.
void PlcRunner::sendDue(qint64 now_ns)
{
    while (!outgoing_.empty() && outgoing_.front().due_ns <= now_ns) {
        const QByteArray bytes = outgoing_.front().bytes;
        outgoing_.pop_front();
        const ssize_t written =
            ::write(port_->dataFd(), bytes.constData(), static_cast<size_t>(bytes.size()));
        Q_UNUSED(written)
    }
}

void PlcRunner::unplug(qint64 until_ns)
{
    port_->close();
    outgoing_.clear();
    downUntil_ns_ = until_ns;
}

bool PlcRunner::plugIn(qint64 now_ns)
{
    QString error;
    const bool open = port_->open(&error);
    downUntil_ns_ = open ? 0 : now_ns + REOPEN_ns;
    if (open)
        lineBegins();
    return open;
}

void PlcRunner::lineBegins()
{
    outgoing_.clear();
    receiveFree_ns_ = 0;
    const QMutexLocker locker(&plcMutex_);
    plc_->lineOpened();
}

} // namespace kvt
