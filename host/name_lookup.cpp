#include "host/name_lookup.h"

#include "host/background_thread.h"

#include <cstring>
#include <mutex>
#include <netdb.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace kvt
{

namespace
{

using AddressList = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

AddressList ask(const QString &host, int port, int flags, int *status)
{
    addrinfo wanted = {};
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_flags = AI_NUMERICSERV | flags;
    addrinfo *found = nullptr;
    *status = getaddrinfo(host.toUtf8().constData(), QByteArray::number(port).constData(), &wanted,
                          &found);
    return {*status == 0 ? found : nullptr, &freeaddrinfo};
}

} // namespace

FoundAddresses lookUpHost(const QString &host, int port)
{
    FoundAddresses result;
    int status = 0;
    const AddressList found = ask(host, port, 0, &status);
    if (status != 0)
        result.error = QString::fromLocal8Bit(gai_strerror(status));
    for (const addrinfo *entry = found.get(); entry != nullptr; entry = entry->ai_next) {
        SocketAddress address;
        std::memcpy(&address.address, entry->ai_addr, entry->ai_addrlen);
        address.size = entry->ai_addrlen;
        result.addresses.append(address);
    }
    return result;
}

bool isNumericHost(const QString &host)
{
    int status = 0;
    ask(host, 1, AI_NUMERICHOST, &status);
    return status == 0;
}

/// Shared with the thread, which may outlive the lookup.
struct NameLookup::State {
    State() : descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}
    ~State() { close(descriptor); }
    State(const State &) = delete;
    State &operator=(const State &) = delete;

    const int descriptor;
    std::mutex mutex; // the members below
    bool ended = false;
    FoundAddresses found;
};

NameLookup::NameLookup(const HostLookup &lookup, const QString &host, int port)
    : state_(std::make_shared<State>())
{
    runInBackground([state = state_, lookup, host, port] {
        const FoundAddresses found = lookup(host, port);
        const std::lock_guard<std::mutex> lock(state->mutex);
        state->found = found;
        state->ended = true;
        (void)eventfd_write(state->descriptor, 1);
    });
}

NameLookup::~NameLookup() = default;

int NameLookup::descriptor() const
{
    return state_->descriptor;
}

bool NameLookup::hasEnded() const
{
    const std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->ended;
}

FoundAddresses NameLookup::found() const
{
    const std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->found;
}

} // namespace kvt
