// Preloaded, an allocator that fails at chosen calls. KVT_FAIL_AT is the number of the call, from
// 1, that finds no memory; with KVT_FAIL_ON set, all later ones find none either. KVT_FAIL_COUNT
// names a file into which the number of calls is written at the end. Calls before main count as
// well.
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <unistd.h>

// glibc's own, under the names that it keeps for whoever replaces the usual ones.
extern "C" void *__libc_malloc(size_t size);
extern "C" void *__libc_calloc(size_t count, size_t size);
extern "C" void *__libc_realloc(void *old, size_t size);
extern "C" void *__libc_memalign(size_t alignment, size_t size);

namespace
{

std::atomic<bool> inMain{false};
std::atomic<long> calls{0};
long failAt = 0;
bool failOn = false;
int (*realMain)(int, char **, char **) = nullptr;

long settingOf(const char *name)
{
    const char *text = getenv(name);
    return text == nullptr ? 0 : strtol(text, nullptr, 10);
}

bool mustFail()
{
    if (!inMain)
        return false;
    const long call = ++calls;
    const bool fails = failAt != 0 && (call == failAt || (failOn && call > failAt));
    if (fails)
        errno = ENOMEM;
    return fails;
}

void tellCrash(int signal)
{
    std::array<void *, 24> frames = {};
    backtrace_symbols_fd(frames.data(), backtrace(frames.data(), frames.size()), STDERR_FILENO);
    std::signal(signal, SIG_DFL);
    raise(signal);
}

int watchedMain(int argc, char **argv, char **environment)
{
    std::array<void *, 1> frame = {};
    backtrace(frame.data(), frame.size()); // loads what it needs
    static std::array<char, 65536> stack; // a stack that has overflowed is of no use to the handler
    const stack_t alternative = {stack.data(), 0, stack.size()};
    sigaltstack(&alternative, nullptr);
    struct sigaction action = {};
    action.sa_handler = tellCrash;
    action.sa_flags = SA_ONSTACK;
    sigaction(SIGSEGV, &action, nullptr);
    failAt = settingOf("KVT_FAIL_AT");
    failOn = settingOf("KVT_FAIL_ON") != 0;
    inMain = true;
    return realMain(argc, argv, environment);
}

struct Report {
    ~Report()
    {
        const char *name = getenv("KVT_FAIL_COUNT");
        const int file = name == nullptr ? -1 : open(name, O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (file < 0)
            return;
        char text[32];
        const int length = snprintf(text, sizeof text, "%ld\n", calls.load());
        [[maybe_unused]] const ssize_t written = write(file, text, static_cast<size_t>(length));
        close(file);
    }
} report;

} // namespace

#pragma GCC visibility push(default)

extern "C" int __libc_start_main(int (*main)(int, char **, char **), int argc, char **argv,
                                 void (*init)(), void (*fini)(), void (*loaderFini)(), void *stack)
{
    realMain = main;
    const auto start =
        reinterpret_cast<decltype(&__libc_start_main)>(dlsym(RTLD_NEXT, "__libc_start_main"));
    return start(watchedMain, argc, argv, init, fini, loaderFini, stack);
}

extern "C" void *malloc(size_t size) noexcept
{
    return mustFail() ? nullptr : __libc_malloc(size);
}

extern "C" void *calloc(size_t count, size_t size) noexcept
{
    return mustFail() ? nullptr : __libc_calloc(count, size);
}

extern "C" void *realloc(void *old, size_t size) noexcept
{
    return mustFail() ? nullptr : __libc_realloc(old, size);
}

extern "C" void *aligned_alloc(size_t alignment, size_t size) noexcept
{
    return mustFail() ? nullptr : __libc_memalign(alignment, size);
}

extern "C" int posix_memalign(void **result, size_t alignment, size_t size) noexcept
{
    void *memory = mustFail() ? nullptr : __libc_memalign(alignment, size);
    if (memory == nullptr)
        return ENOMEM;
    *result = memory;
    return 0;
}

#pragma GCC visibility pop
