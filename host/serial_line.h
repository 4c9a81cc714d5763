// A serial port or a pseudo-terminal.
#ifndef KVT_HOST_SERIAL_LINE_H
#define KVT_HOST_SERIAL_LINE_H

#include "host/line.h"

namespace kvt
{

enum class Parity { None, Even, Odd };

/// Whether the bytes keep the pace of the speed. A pseudo-terminal does so only when the other
/// end sees to it.
enum class Pacing {
    Automatic, ///< a device does, a pseudo-terminal does not
    Paced,
    Unpaced
};

/// Settings of a serial port.
struct SerialSettings {
    QString path;     ///< the device, or a link to it
    int baud = 9600;  ///< one of the usual speeds, 1,200 to 4,000,000
    int dataBits = 8; ///< 7 or 8
    Parity parity = Parity::None;
    int stopBits = 1;       ///< 1 or 2
    bool lowLatency = true; ///< ask the driver to hand over bytes at once
    Pacing pacing = Pacing::Automatic;

    /// What is wrong with the settings; empty when all is well.
    QString error() const;

    /// Time of one character in nanoseconds: start bit, data bits, parity bit, stop bits. 0 when
    /// the speed makes no sense.
    qint64 characterTime_ns() const;
};

/// A serial port, driven through its descriptor alone: a request's reply must wake up the thread
/// that sends the next one with nothing in between, which an event loop would put there.
///
/// While open, the port is this line's alone: nothing in a reply shows which of two programs had
/// asked. Opening a port that another line or program has for itself fails and leaves it as it is.
///
/// The port is raw before its first byte. Low latency is asked for and not insisted on, for not
/// every adapter has it.
class SerialLine final : public Line
{
public:
    explicit SerialLine(const SerialSettings &settings);

    Opening open(QString *error) override;
    qint64 characterTime_ns() const override { return settings_.characterTime_ns(); }
    bool isPaced() const override;
    QString name() const override { return settings_.path; }

private:
    SerialSettings settings_;
};

} // namespace kvt

#endif
