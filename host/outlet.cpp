#include "host/outlet.h"

#include "host/background_thread.h"
#include "host/host_time.h"
#include "host/line.h"

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace kvt
{

QString writeAll(int descriptor, const QByteArray &text)
{
    qint64 written = 0;
    while (written < text.size()) {
        const ssize_t count = write(descriptor, text.constData() + written,
                                    static_cast<size_t>(text.size() - written));
        if (count >= 0) {
            written += count;
        } else if (errno == EAGAIN) {
            // Somebody who shares the descriptor has told it not to wait.
            pollfd ready = {descriptor, POLLOUT, 0};
            poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            return systemError();
        }
    }
    return QString();
}

/// Shared with the thread, which may outlive the outlet.
struct Outlet::State {
    std::shared_ptr<Sink> sink;
    qint64 limit_bytes = 0;

    std::mutex mutex; // the members below
    std::condition_variable changed;
    std::deque<QByteArray> texts;
    qint64 queued_bytes = 0;
    bool writing = false;
    bool closed = false;
    bool failed = false;
    bool ended = false; // the sink is gone
    QString error;
    qint64 dropped = 0;

    bool isBusy() const { return !failed && (writing || !texts.empty()); }
    void run();
    bool writeNext(std::unique_lock<std::mutex> *lock);
};

void Outlet::State::run()
{
    std::unique_lock<std::mutex> lock(mutex);
    while (writeNext(&lock))
        changed.notify_all();
    sink.reset();
    ended = true;
    changed.notify_all();
}

// Returns false when there will be nothing more to write.
bool Outlet::State::writeNext(std::unique_lock<std::mutex> *lock)
{
    changed.wait(*lock, [this] { return closed || !texts.empty(); });
    if (closed)
        return false;
    const QByteArray text = texts.front();
    texts.pop_front();
    queued_bytes -= text.size();
    writing = true;
    lock->unlock();
    const QString problem = sink->write(text);
    lock->lock();
    writing = false;
    error = problem;
    failed = !problem.isEmpty();
    return !failed;
}

Outlet::Outlet(std::shared_ptr<Sink> sink, qint64 limit_bytes) : state_(std::make_shared<State>())
{
    state_->sink = std::move(sink);
    state_->limit_bytes = limit_bytes;
    runInBackground([state = state_] { state->run(); });
}

Outlet::~Outlet()
{
    State &state = *state_;
    std::unique_lock<std::mutex> lock(state.mutex);
    state.closed = true;
    state.changed.notify_all();
    state.changed.wait(lock, [&state] { return state.ended || state.writing; });
}

bool Outlet::add(const QByteArray &text, WhenFull whenFull)
{
    State &state = *state_;
    std::unique_lock<std::mutex> lock(state.mutex);
    const auto hasRoom = [&state] { return state.queued_bytes < state.limit_bytes; };
    if (whenFull == WhenFull::Wait)
        state.changed.wait(lock, [&] { return state.failed || hasRoom(); });
    if (state.failed || !hasRoom()) {
        ++state.dropped;
        return false;
    }
    state.queued_bytes += text.size();
    state.texts.push_back(text);
    state.changed.notify_all();
    return true;
}

bool Outlet::drain(qint64 timeout_ns)
{
    State &state = *state_;
    std::unique_lock<std::mutex> lock(state.mutex);
    const auto isDone = [&state] { return !state.isBusy(); };
    if (timeout_ns != NEVER)
        return state.changed.wait_for(lock, std::chrono::nanoseconds(timeout_ns), isDone);
    state.changed.wait(lock, isDone);
    return true;
}

bool Outlet::isBusy() const
{
    const std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->isBusy();
}

qint64 Outlet::dropped() const
{
    const std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->dropped;
}

QString Outlet::error() const
{
    const std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->error;
}

} // namespace kvt
