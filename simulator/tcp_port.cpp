#include "simulator/tcp_port.h"

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace kvt
{

namespace
{

bool setOption(int fd, int level, int option)
{
    const int on = 1;
    return setsockopt(fd, level, option, &on, sizeof on) == 0;
}

sockaddr *generic(sockaddr_in *address)
{
    return reinterpret_cast<sockaddr *>(address); // what the socket calls take
}

} // namespace

bool TcpPort::open(QString *error)
{
    close();
    in_addr address = {};
    if (inet_pton(AF_INET, address_.toLatin1().constData(), &address) != 1) {
        *error = QStringLiteral("\"%1\" is no IPv4 address").arg(address_);
        return false;
    }
    if (listenAt(address.s_addr))
        return true;
    *error = QStringLiteral("%1: %2").arg(name(), qt_error_string(errno));
    close();
    return false;
}

bool TcpPort::listenAt(quint32 address)
{
    listener_.reset(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    sockaddr_in local = {};
    local.sin_family = AF_INET;
    local.sin_addr.s_addr = address;
    local.sin_port = htons(port_);
    socklen_t size = sizeof local;
    // Without the option the port could not be taken again straight after a host was connected.
    if (!listener_.isOpen() || !setOption(listener_.get(), SOL_SOCKET, SO_REUSEADDR) ||
        bind(listener_.get(), generic(&local), size) != 0 ||
        listen(listener_.get(), SOMAXCONN) != 0 ||
        getsockname(listener_.get(), generic(&local), &size) != 0)
        return false;
    port_ = ntohs(local.sin_port);
    return true;
}

void TcpPort::close()
{
    peer_.reset();
    listener_.reset();
}

QString TcpPort::name() const
{
    return address_ + QLatin1Char(':') + QString::number(port_);
}

void TcpPort::acceptPeer()
{
    const int fd = accept4(listener_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd < 0)
        return;
    setOption(fd, IPPROTO_TCP, TCP_NODELAY);
    peer_.reset(fd);
}

} // namespace kvt
