// The border that no exception crosses. Internal to the driver.
#ifndef KVT_DRIVER_NO_THROW_H
#define KVT_DRIVER_NO_THROW_H

/// Does `work` and returns its result. An exception ends the process here, where it is still known
/// who threw it: the host may be built by another compiler, and the locks that are held could not
/// be trusted afterwards. The entry points are not declared noexcept themselves, because that would
/// be part of their type.
template <typename Work>
inline auto noThrow(Work work) noexcept -> decltype(work())
{
    return work();
}

#endif
