// Threads for what may be stuck for good.
#ifndef KVT_HOST_BACKGROUND_THREAD_H
#define KVT_HOST_BACKGROUND_THREAD_H

#include <functional>

namespace kvt
{

/// Runs `work` on a thread that nobody waits for and that takes no signals. What it uses must live
/// as long as it runs, so it should own all of it.
void runInBackground(std::function<void()> work);

} // namespace kvt

#endif
