// The host's end of a real line, for tests: plain descriptors, waited for with poll.
#ifndef KVT_TESTS_UNIT_SIMULATOR_LINE_PEER_H
#define KVT_TESTS_UNIT_SIMULATOR_LINE_PEER_H

#include "simulator/file_descriptor.h"

#include <QByteArray>
#include <QString>

#include <arpa/inet.h>
#include <array>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

constexpr int HANG_GUARD_ms = 20000;

/// Opens a device as a host does; nothing is set.
inline void openDevice(kvt::FileDescriptor *fd, const QString &path)
{
    fd->reset(::open(path.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_CLOEXEC));
}

/// Connects to a port of this machine; the descriptor stays closed when nobody listens.
inline void connectTo(kvt::FileDescriptor *fd, quint16 port)
{
    fd->reset(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    if (connect(fd->get(), reinterpret_cast<sockaddr *>(&address), sizeof address) != 0)
        fd->reset();
}

inline bool sendBytes(const kvt::FileDescriptor &fd, const QByteArray &bytes)
{
    return ::write(fd.get(), bytes.constData(), static_cast<size_t>(bytes.size())) == bytes.size();
}

/// Reads until there are `size` bytes or the line ends.
inline QByteArray readBytes(const kvt::FileDescriptor &fd, int size)
{
    QByteArray bytes;
    pollfd polled = {fd.get(), POLLIN, 0};
    while (bytes.size() < size && poll(&polled, 1, HANG_GUARD_ms) > 0) {
        std::array<char, 256> buffer = {};
        const ssize_t count = ::read(fd.get(), buffer.data(),
                                     qMin(buffer.size(), static_cast<size_t>(size - bytes.size())));
        if (count <= 0)
            break;
        bytes.append(buffer.data(), static_cast<int>(count));
    }
    return bytes;
}

/// Waits until the other side is gone.
inline bool waitForEnd(const kvt::FileDescriptor &fd)
{
    return readBytes(fd, 1).isEmpty();
}

inline QByteArray askLine(const kvt::FileDescriptor &fd, const QByteArray &request, int replySize)
{
    return sendBytes(fd, request) ? readBytes(fd, replySize) : QByteArray();
}

#endif
