// Where the simulated PLC is plugged in: the file descriptors behind a pty, a serial port or a
// socket.
#ifndef KVT_SIMULATOR_PORT_H
#define KVT_SIMULATOR_PORT_H

#include <QString>

namespace kvt
{

/// One end of a line. Its descriptors do not block. Once a PlcRunner has started, only its thread
/// calls a port, `name` excepted.
class Port
{
public:
    Port() = default;
    virtual ~Port() = default;
    Port(const Port &) = delete;
    Port &operator=(const Port &) = delete;

    /// Plugs the line in. False, with `*error` set, when that fails; may be called again then, and
    /// after `close`.
    virtual bool open(QString *error) = 0;

    /// Unplugs the line: the other side sees it go. Nothing happens when it is not open.
    virtual void close() = 0;

    /// Returns under which name a host reaches the port once it is open.
    virtual QString name() const = 0;

    /// Returns the descriptor that carries the bytes; -1 while nobody is there.
    virtual int dataFd() const = 0;

    /// Returns the descriptor that is readable when somebody calls; -1 when nobody can.
    virtual int listenFd() const { return -1; }

    /// Takes the call on `listenFd`.
    virtual void acceptPeer() {}

    /// Gives `dataFd` up after it has failed or ended.
    virtual void dropPeer() { close(); }
};

} // namespace kvt

#endif
