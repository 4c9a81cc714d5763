// Shows the order of the driver's stores into the host's block, with no clock and no other thread:
// the block lies across two pages that cannot be written, so that the first store into each is
// stopped, looked at and let through.
#ifndef KVT_TESTS_SUPPORT_WATCHED_BLOCK_H
#define KVT_TESTS_SUPPORT_WATCHED_BLOCK_H

#include "driver/driver_object.h"

#include <csignal>
#include <cstring>

#include <sys/mman.h>
#include <unistd.h>

/// A host's block of which some words lie in a lower page and the others in an upper one. There is
/// one at a time.
class WatchedBlock
{
public:
    /// What was to be seen just ahead of a store.
    struct Look {
        bool upper; ///< the page stored into
        ComInfo block;
        const ComInfo *comInfo; ///< these are the driver's own
        int scanCount;
        int errorFlag;
        int pendingFrames;
    };

    /// Words 0 to `upperFrom` - 1 lie in the lower page. All are 0 and can be written.
    explicit WatchedBlock(int upperFrom)
        : pageSize_(size_t(::sysconf(_SC_PAGESIZE))),
          pages_(static_cast<char *>(::mmap(nullptr, 2 * pageSize_, PROT_READ | PROT_WRITE,
                                            MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))),
          info_(reinterpret_cast<ComInfo *>(pages_ + pageSize_ - 4 * size_t(upperFrom)))
    {
        current() = this;
        struct sigaction action = {};
        action.sa_sigaction = &WatchedBlock::lookAndLetThrough;
        action.sa_flags = SA_SIGINFO;
        ::sigaction(SIGSEGV, &action, &before_);
    }
    ~WatchedBlock()
    {
        ::sigaction(SIGSEGV, &before_, nullptr);
        ::munmap(pages_, 2 * pageSize_);
    }
    Q_DISABLE_COPY(WatchedBlock)

    bool isThere() const { return pages_ != MAP_FAILED; }
    ComInfo &info() { return *info_; }

    /// From here on the first store into each page is looked at.
    void watch() { ::mprotect(pages_, 2 * pageSize_, PROT_READ); }

    /// Pages that have been stored into since, and what was seen at the first and the second.
    int stores() const { return stores_; }
    const Look &look(int store) const { return looks_[store]; }

private:
    static WatchedBlock *&current()
    {
        static WatchedBlock *block = nullptr;
        return block;
    }

    // Another fault than a first store comes again, and ends the process.
    static void lookAndLetThrough(int, siginfo_t *fault, void *)
    {
        WatchedBlock &block = *current();
        const size_t page =
            size_t(static_cast<char *>(fault->si_addr) - block.pages_) / block.pageSize_;
        if (page > 1 || block.stores_ > 1) {
            ::signal(SIGSEGV, SIG_DFL);
            return;
        }
        Look &look = block.looks_[block.stores_++];
        look.upper = page == 1;
        std::memcpy(&look.block, block.info_, sizeof look.block);
        look.comInfo = PLC_driver.comInfo;
        look.scanCount = PLC_driver.scanCount;
        look.errorFlag = PLC_driver.errorFlag;
        look.pendingFrames = PLC_driver.pendingFrames.size();
        ::mprotect(block.pages_ + page * block.pageSize_, block.pageSize_, PROT_READ | PROT_WRITE);
    }

    size_t pageSize_;
    char *pages_;
    ComInfo *info_;
    struct sigaction before_ = {};
    int stores_ = 0;
    Look looks_[2] = {};
};

#endif
