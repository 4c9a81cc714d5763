// The simulated PLC behind a TCP port, as a serial device server puts it on a network.
#ifndef KVT_SIMULATOR_TCP_PORT_H
#define KVT_SIMULATOR_TCP_PORT_H

#include "simulator/file_descriptor.h"
#include "simulator/port.h"

namespace kvt
{

/// A TCP server for one host at a time; a second one takes the place of the first, which may have
/// gone without a word.
class TcpPort : public Port
{
public:
    /// `address` is an IPv4 address of this machine; `port` 0 takes a free port and keeps it when
    /// the line is closed and opened again.
    explicit TcpPort(quint16 port = 0, const QString &address = QStringLiteral("127.0.0.1"))
        : address_(address), port_(port)
    {
    }

    bool open(QString *error) override;
    void close() override;

    /// Returns "address:port".
    QString name() const override;
    int dataFd() const override { return peer_.get(); }
    int listenFd() const override { return listener_.get(); }
    void acceptPeer() override;
    void dropPeer() override { peer_.reset(); }

    /// Returns the port, once open.
    quint16 port() const { return port_; }

private:
    bool listenAt(quint32 address);

    QString address_;
    quint16 port_;
    FileDescriptor listener_;
    FileDescriptor peer_;
};

} // namespace kvt

#endif
