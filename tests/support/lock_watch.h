// Tells whether a call waits for a mutex, without a clock: the call runs in a thread of its own
// while the mutex is held, and the kernel says when that thread has gone to sleep.
#ifndef KVT_TESTS_SUPPORT_LOCK_WATCH_H
#define KVT_TESTS_SUPPORT_LOCK_WATCH_H

#include <QFile>
#include <QMutex>

#include <atomic>
#include <functional>
#include <thread>

#include <sys/syscall.h>
#include <unistd.h>

/// True while thread `id` of this process sleeps in a system call.
inline bool isAsleep(long id)
{
    QFile status(QString("/proc/self/task/%1/stat").arg(id));
    if (!status.open(QIODevice::ReadOnly))
        return false;
    const QByteArray line = status.readAll();
    return line.mid(line.lastIndexOf(')') + 2, 1) == "S";
}

/// Runs `call` while `mutex` is held; true when the call had to wait for it. `whileWaiting` runs
/// at that moment. The call has ended, and the mutex is free, when this returns.
inline bool waitsFor(QMutex &mutex, const std::function<void()> &call,
                     const std::function<void()> &whileWaiting = {})
{
    std::atomic<long> id{0};
    std::atomic<bool> ended{false};
    mutex.lock();
    std::thread caller([&] {
        id = ::syscall(SYS_gettid);
        call();
        ended = true;
    });
    while (id == 0 || (!isAsleep(id) && !ended))
        std::this_thread::yield();
    const bool waited = !ended;
    if (waited && whileWaiting)
        whileWaiting();
    mutex.unlock();
    caller.join();
    return waited;
}

#endif
