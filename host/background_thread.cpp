#include "host/background_thread.h"

#include <csignal>
#include <thread>
#include <utility>

namespace kvt
{

void runInBackground(std::function<void()> work)
{
    // Signals are for the threads that know what to do about them.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    std::thread(std::move(work)).detach();
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

} // namespace kvt
