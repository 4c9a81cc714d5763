// Stores that another thread or a callback may watch. Internal to the driver.
#ifndef KVT_DRIVER_ORDERED_STORE_H
#define KVT_DRIVER_ORDERED_STORE_H

#include <type_traits>

/// Stores `value` in `word`. The compiler keeps such stores, and there is no store left out, in the
/// order in which they are written: who watches the host's block must not take what belongs to the
/// request before for this one's.
template <typename Word>
inline void storeInOrder(Word &word, typename std::common_type<Word>::type value)
{
    *const_cast<volatile Word *>(&word) = value;
}

#endif
