// The addresses of a host name, without waiting for the name server.
#ifndef KVT_HOST_NAME_LOOKUP_H
#define KVT_HOST_NAME_LOOKUP_H

#include <QString>
#include <QVector>

#include <functional>
#include <memory>

#include <sys/socket.h>

namespace kvt
{

struct SocketAddress {
    sockaddr_storage address = {};
    socklen_t size = 0;
};

/// What was found; `error` says why if there is no address.
struct FoundAddresses {
    QVector<SocketAddress> addresses;
    QString error;
};

/// Finds all addresses of a host; may take any time.
using HostLookup = std::function<FoundAddresses(const QString &host, int port)>;

/// Asks the system. A numeric address is found without asking anybody.
FoundAddresses lookUpHost(const QString &host, int port);

/// True when the host is a numeric address.
bool isNumericHost(const QString &host);

/// One lookup, on a thread that is left behind if it is stuck. All calls from one thread.
class NameLookup
{
public:
    NameLookup(const HostLookup &lookup, const QString &host, int port);
    ~NameLookup();
    NameLookup(const NameLookup &) = delete;
    NameLookup &operator=(const NameLookup &) = delete;

    /// Readable once the lookup has ended; closed with it.
    int descriptor() const;

    bool hasEnded() const;

    /// What was found, once it has ended.
    FoundAddresses found() const;

private:
    struct State;

    std::shared_ptr<State> state_;
};

} // namespace kvt

#endif
