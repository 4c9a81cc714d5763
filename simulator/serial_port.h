// The simulated PLC on a serial port of this machine.
#ifndef KVT_SIMULATOR_SERIAL_PORT_H
#define KVT_SIMULATOR_SERIAL_PORT_H

#include "simulator/file_descriptor.h"
#include "simulator/port.h"

namespace kvt
{

/// How bytes travel on a serial line.
struct SerialPortSettings {
    enum class Parity { None, Even, Odd };

    int baud = 9600;  ///< a standard rate from 1,200 to 921,600
    int dataBits = 8; ///< 7 or 8
    Parity parity = Parity::None;
    int stopBits = 1; ///< 1 or 2

    /// Returns the bits of one byte on the line, start and stop bits included.
    int bitsPerByte() const { return 1 + dataBits + (parity == Parity::None ? 0 : 1) + stopBits; }
};

/// A serial device of this machine. The hardware keeps the pace, so the PLC's own byte time should
/// be 0.
class SerialPort : public Port
{
public:
    SerialPort(const QString &device, const SerialPortSettings &settings)
        : device_(device), settings_(settings)
    {
    }

    bool open(QString *error) override;
    void close() override { fd_.reset(); }
    QString name() const override { return device_; }
    int dataFd() const override { return fd_.get(); }

private:
    bool configure(QString *error);

    QString device_;
    SerialPortSettings settings_;
    FileDescriptor fd_;
};

} // namespace kvt

#endif
