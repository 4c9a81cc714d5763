#include "host/tcp_line.h"

#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

namespace kvt
{

namespace
{

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

TcpLine::TcpLine(const TcpSettings &settings, HostLookup lookup)
    : settings_(settings), lookup_(std::move(lookup))
{
}

Opening TcpLine::open(QString *error)
{
    *error = settings_.error();
    if (!error->isEmpty())
        return Opening::Failed;
    if (isNumericHost(settings_.host)) {
        found_ = lookup_(settings_.host, settings_.port);
        return connectNext(error);
    }
    // One that is still under way, from the opening before, is as good as a new one.
    if (!lookingUp_)
        lookingUp_ = std::make_unique<NameLookup>(lookup_, settings_.host, settings_.port);
    // The line closes what it polls.
    setDescriptor(fcntl(lookingUp_->descriptor(), F_DUPFD_CLOEXEC, 0));
    return Opening::Pending;
}

short TcpLine::openingEvents() const
{
    return lookingUp_ ? POLLIN : POLLOUT;
}

Opening TcpLine::finishOpening(QString *error)
{
    if (lookingUp_ && !lookingUp_->hasEnded())
        return Opening::Pending;
    if (lookingUp_) {
        close();
        found_ = lookingUp_->found();
        lookingUp_.reset();
        return connectNext(error);
    }
    int status = 0;
    socklen_t size = sizeof status;
    if (getsockopt(descriptor(), SOL_SOCKET, SO_ERROR, &status, &size) != 0)
        status = errno;
    if (status == 0)
        return Opening::Done;
    errno = status;
    found_.error = systemError();
    close();
    return connectNext(error);
}

Opening TcpLine::giveUpOpening(QString *error)
{
    close();
    if (lookingUp_) {
        *error = QStringLiteral("the name \"%1\" is still being looked up").arg(settings_.host);
        return Opening::Failed;
    }
    found_.error = QStringLiteral("no connection in time");
    return connectNext(error);
}

// Begins with the next address that lets itself be tried. What is told is why the last one failed.
Opening TcpLine::connectNext(QString *error)
{
    while (!found_.addresses.isEmpty()) {
        const SocketAddress to = found_.addresses.takeFirst();
        setDescriptor(socket(to.address.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        if (descriptor() >= 0) {
            setOptions(descriptor());
            if (connect(descriptor(), reinterpret_cast<const sockaddr *>(&to.address), to.size) ==
                0)
                return Opening::Done;
            if (errno == EINPROGRESS)
                return Opening::Pending;
        }
        found_.error = systemError();
        close();
    }
    *error = found_.error;
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
