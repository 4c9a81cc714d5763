// Preloaded, a clock on the wall that is set again and again: each look at it finds it a day, an
// hour or a second off, ahead and behind by turns. The monotonic clock is left as it is.
#include <atomic>
#include <ctime>
#include <dlfcn.h>
#include <sys/time.h>

namespace
{

std::atomic<unsigned> looks{0};

time_t jump_s()
{
    constexpr time_t JUMPS_s[] = {86400, -86400, 3600, -3600, 1, -1, 0};
    return JUMPS_s[looks++ % (sizeof JUMPS_s / sizeof JUMPS_s[0])];
}

} // namespace

#pragma GCC visibility push(default)

extern "C" int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    static const auto real =
        reinterpret_cast<decltype(&clock_gettime)>(dlsym(RTLD_NEXT, "clock_gettime"));
    const int result = real(clock, time);
    if (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE)
        time->tv_sec += jump_s();
    return result;
}

extern "C" int gettimeofday(timeval *time, void *) noexcept
{
    timespec now = {};
    const int result = clock_gettime(CLOCK_REALTIME, &now);
    time->tv_sec = now.tv_sec;
    time->tv_usec = now.tv_nsec / 1000;
    return result;
}

extern "C" time_t time(time_t *result) noexcept
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    if (result != nullptr)
        *result = now.tv_sec;
    return now.tv_sec;
}

#pragma GCC visibility pop
