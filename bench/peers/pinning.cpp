#include "bench/peers/pinning.h"

#include <cstdio>
#include <sched.h>

namespace kvt
{

bool pinTo(Core core)
{
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    if (sched_getaffinity(0, sizeof allowed, &allowed) != 0)
        return false;
    int toSkip = core == Core::Slave ? 1 : 0;
    for (int number = 0; number < CPU_SETSIZE; ++number) {
        if (!CPU_ISSET(number, &allowed) || toSkip-- > 0)
            continue;
        cpu_set_t chosen;
        CPU_ZERO(&chosen);
        CPU_SET(number, &chosen);
        return sched_setaffinity(0, sizeof chosen, &chosen) == 0;
    }
    std::fputs("kvt_peers: master and slave need a processor core each\n", stderr);
    return false;
}

} // namespace kvt
