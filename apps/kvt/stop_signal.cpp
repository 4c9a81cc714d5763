#include "apps/kvt/stop_signal.h"

#include "apps/kvt/console.h"

#include <QCoreApplication>

#include <atomic>
#include <csignal>

#include <sys/signalfd.h>
#include <unistd.h>

namespace kvt
{

namespace
{

sigset_t stopSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGHUP);
    return signals;
}

std::atomic<bool> requested{false};

// One that is left would end the process as soon as it is no longer blocked.
void takeSignals(int descriptor)
{
    signalfd_siginfo signal = {};
    while (read(descriptor, &signal, sizeof signal) > 0)
        requested = true;
}

} // namespace

StopSignal::StopSignal()
{
    const sigset_t signals = stopSignals();
    letOutputWait(false);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    descriptor_ = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (descriptor_ < 0) { // then they end the process as ever
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
        return;
    }
    notifier_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, this, [this] {
        takeSignals(descriptor_);
        QCoreApplication::quit();
    });
}

StopSignal::~StopSignal()
{
    if (descriptor_ >= 0) {
        notifier_.reset();
        takeSignals(descriptor_);
        close(descriptor_);
    }
    const sigset_t signals = stopSignals();
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    letOutputWait(!wasRequested());
}

bool StopSignal::wasRequested()
{
    return requested;
}

} // namespace kvt
