// The simulated PLC on a pseudo-terminal, which a host opens as it would a serial port.
#ifndef KVT_SIMULATOR_PTY_PORT_H
#define KVT_SIMULATOR_PTY_PORT_H

#include "simulator/file_descriptor.h"
#include "simulator/port.h"

namespace kvt
{

/// A pseudo-terminal, raw from the start. The host may close and open it as often as it likes.
/// Each `open` makes a new one, and so a new device name; a link keeps one name for all of them.
class PtyPort : public Port
{
public:
    /// `link` is the path of a symbolic link to the device; empty for none. It replaces a symbolic
    /// link that leads nowhere, but nothing else, and is removed by `close` and at the end.
    explicit PtyPort(const QString &link = QString()) : link_(link) {}
    ~PtyPort() override { PtyPort::close(); }

    bool open(QString *error) override;
    void close() override;

    /// Returns the link if there is one, else the device.
    QString name() const override { return link_.isEmpty() ? device_ : link_; }
    int dataFd() const override { return master_.get(); }

private:
    bool openTerminal();
    bool makeLink(QString *error);

    QString link_;
    QString device_;
    FileDescriptor master_;
    FileDescriptor slave_; ///< held open: without it the settings would go with the last host
};

} // namespace kvt

#endif
