#include "host/tcp_line.h"

#include <cerrno>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace kvt
{

namespace
{

using AddressList = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

AddressList lookUp(const TcpSettings &settings, QString *error)
{
    addrinfo wanted = {};
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_flags = AI_NUMERICSERV;
    addrinfo *found = nullptr;
    const int status = getaddrinfo(settings.host.toUtf8().constData(),
                                   QByteArray::number(settings.port).constData(), &wanted, &found);
    if (status != 0)
        *error = QString::fromLocal8Bit(gai_strerror(status));
    return {found, &freeaddrinfo};
}

void setOption(int descriptor, int level, int option, int value)
{
    setsockopt(descriptor, level, option, &value, sizeof value);
}

// A peer that vanishes is to be noticed within ten seconds, before an operator begins to look for
// the reason, where tcp(7) has two hours as a default: idle time + probes * interval = 9 s. Each
// probe still has time for a lost packet to be sent again, which takes 1 s at first (RFC 6298).
constexpr int KEEP_ALIVE_IDLE_s = 3;
constexpr int KEEP_ALIVE_INTERVAL_s = 2;
constexpr int KEEP_ALIVE_PROBES = 3;
constexpr int GONE_AFTER_s = KEEP_ALIVE_IDLE_s + KEEP_ALIVE_PROBES * KEEP_ALIVE_INTERVAL_s;

void setOptions(int descriptor)
{
    setOption(descriptor, IPPROTO_TCP, TCP_NODELAY, 1);
    setOption(descriptor, SOL_SOCKET, SO_KEEPALIVE, 1);
    setOption(descriptor, IPPROTO_TCP, TCP_KEEPIDLE, KEEP_ALIVE_IDLE_s);
    setOption(descriptor, IPPROTO_TCP, TCP_KEEPINTVL, KEEP_ALIVE_INTERVAL_s);
    setOption(descriptor, IPPROTO_TCP, TCP_KEEPCNT, KEEP_ALIVE_PROBES);
    // Bytes in flight suppress the probes above, so those need a limit of their own.
    setOption(descriptor, IPPROTO_TCP, TCP_USER_TIMEOUT, GONE_AFTER_s * 1000);
}

} // namespace

QString TcpSettings::error() const
{
    if (host.isEmpty())
        return QStringLiteral("no host is named");
    if (port < 1 || port > 65535)
        return QStringLiteral("port %1: only 1 to 65535 are possible").arg(port);
    return QString();
}

TcpLine::TcpLine(const TcpSettings &settings) : settings_(settings) {}

Opening TcpLine::open(QString *error)
{
    *error = settings_.error();
    if (!error->isEmpty())
        return Opening::Failed;
    const AddressList found = lookUp(settings_, error);
    if (!found)
        return Opening::Failed;
    const int descriptor = socket(found->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    setDescriptor(descriptor);
    if (descriptor >= 0) {
        setOptions(descriptor);
        if (connect(descriptor, found->ai_addr, found->ai_addrlen) == 0)
            return Opening::Done;
        if (errno == EINPROGRESS)
            return Opening::Pending;
    }
    *error = systemError();
    close();
    return Opening::Failed;
}

Opening TcpLine::finishOpening(QString *error)
{
    int status = 0;
    socklen_t size = sizeof status;
    if (getsockopt(descriptor(), SOL_SOCKET, SO_ERROR, &status, &size) != 0)
        status = errno;
    if (status == 0)
        return Opening::Done;
    errno = status;
    *error = systemError();
    close();
    return Opening::Failed;
}

bool TcpLine::write(const QByteArray &bytes)
{
    // A peer that has closed must not end the process by a signal.
    return send(descriptor(), bytes.constData(), static_cast<size_t>(bytes.size()), MSG_NOSIGNAL) ==
           bytes.size();
}

QString TcpLine::name() const
{
    return QStringLiteral("%1:%2").arg(settings_.host).arg(settings_.port);
}

} // namespace kvt
