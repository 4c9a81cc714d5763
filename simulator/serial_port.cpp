#include "simulator/serial_port.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <termios.h>

namespace kvt
{

namespace
{

struct Rate {
    int baud;
    speed_t code;
};

// Those that hosts have too.
const Rate RATES[] = {{1200, B1200},       {2400, B2400},       {4800, B4800},
                      {9600, B9600},       {19200, B19200},     {38400, B38400},
                      {57600, B57600},     {115200, B115200},   {230400, B230400},
                      {460800, B460800},   {500000, B500000},   {576000, B576000},
                      {921600, B921600},   {1000000, B1000000}, {1152000, B1152000},
                      {1500000, B1500000}, {2000000, B2000000}, {2500000, B2500000},
                      {3000000, B3000000}, {3500000, B3500000}, {4000000, B4000000}};

/// Sets both speeds; false when `baud` is none of the usual ones.
bool setSpeed(termios *settings, int baud)
{
    for (const Rate &rate : RATES) {
        if (rate.baud == baud)
            return cfsetispeed(settings, rate.code) == 0 && cfsetospeed(settings, rate.code) == 0;
    }
    return false;
}

void setFrame(termios *settings, const SerialPortSettings &wanted)
{
    const auto clear = static_cast<tcflag_t>(CSIZE | PARENB | PARODD | CSTOPB | CRTSCTS);
    settings->c_cflag &= ~clear;
    settings->c_cflag |= static_cast<tcflag_t>(CREAD | CLOCAL);
    settings->c_cflag |= static_cast<tcflag_t>(wanted.dataBits == 7 ? CS7 : CS8);
    if (wanted.parity != SerialPortSettings::Parity::None)
        settings->c_cflag |= static_cast<tcflag_t>(PARENB);
    if (wanted.parity == SerialPortSettings::Parity::Odd)
        settings->c_cflag |= static_cast<tcflag_t>(PARODD);
    if (wanted.stopBits == 2)
        settings->c_cflag |= static_cast<tcflag_t>(CSTOPB);
}

} // namespace

bool SerialPort::open(QString *error)
{
    close();
    fd_.reset(
        ::open(QFile::encodeName(device_).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!fd_.isOpen()) {
        *error = QStringLiteral("%1: %2").arg(device_, qt_error_string(errno));
        return false;
    }
    if (configure(error))
        return true;
    close();
    return false;
}

bool SerialPort::configure(QString *error)
{
    termios settings = {};
    if (tcgetattr(fd_.get(), &settings) != 0) {
        *error = QStringLiteral("%1 is no serial port").arg(device_);
        return false;
    }
    cfmakeraw(&settings);
    if (!setSpeed(&settings, settings_.baud)) {
        *error = QStringLiteral("%1 baud is none of the usual speeds").arg(settings_.baud);
        return false;
    }
    setFrame(&settings, settings_);
    if (tcsetattr(fd_.get(), TCSANOW, &settings) == 0)
        return tcflush(fd_.get(), TCIOFLUSH) == 0;
    *error = QStringLiteral("%1: %2").arg(device_, qt_error_string(errno));
    return false;
}

} // namespace kvt
