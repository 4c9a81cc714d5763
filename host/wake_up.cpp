#include "host/wake_up.h"

#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>

namespace kvt
{

WakeUp::WakeUp() : descriptor_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

WakeUp::~WakeUp()
{
    close(descriptor_);
}

// Both calls can fail only when there is nothing to do: rung already, or not rung at all.

void WakeUp::ring() const
{
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(descriptor_, &one, sizeof one);
}

void WakeUp::clear() const
{
    std::uint64_t rings = 0;
    [[maybe_unused]] const ssize_t taken = read(descriptor_, &rings, sizeof rings);
}

} // namespace kvt
