#include "host/serial_line.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <linux/serial.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <unistd.h>

#include <utility>

namespace kvt
{

namespace
{

constexpr std::pair<int, speed_t> SPEEDS[] = {
    {1200, B1200},       {2400, B2400},       {4800, B4800},       {9600, B9600},
    {19200, B19200},     {38400, B38400},     {57600, B57600},     {115200, B115200},
    {230400, B230400},   {460800, B460800},   {500000, B500000},   {576000, B576000},
    {921600, B921600},   {1000000, B1000000}, {1152000, B1152000}, {1500000, B1500000},
    {2000000, B2000000}, {2500000, B2500000}, {3000000, B3000000}, {3500000, B3500000},
    {4000000, B4000000}};

// B0 for a speed that is none of the usual ones.
speed_t speedOf(int baud)
{
    for (const auto &[number, speed] : SPEEDS)
        if (number == baud)
            return speed;
    return B0;
}

void setCharacterFormat(termios *mode, const SerialSettings &settings)
{
    constexpr tcflag_t FORMAT_BITS = CSIZE | PARENB | PARODD | CSTOPB | CRTSCTS;
    mode->c_cflag &= ~FORMAT_BITS;
    mode->c_cflag |= CREAD | CLOCAL;
    mode->c_cflag |= settings.dataBits == 7 ? CS7 : CS8;
    if (settings.parity != Parity::None)
        mode->c_cflag |= PARENB;
    if (settings.parity == Parity::Odd)
        mode->c_cflag |= PARODD;
    if (settings.stopBits == 2)
        mode->c_cflag |= CSTOPB;
}

// The setting of a mode succeeds when any part of it does.
bool hasFormat(int descriptor, const termios &wanted)
{
    termios mode = {};
    if (tcgetattr(descriptor, &mode) != 0)
        return false;
    errno = EINVAL;
    return ((mode.c_cflag ^ wanted.c_cflag) & (CSIZE | PARENB)) == 0;
}

bool configure(int descriptor, const SerialSettings &settings)
{
    termios mode = {};
    if (tcgetattr(descriptor, &mode) != 0)
        return false;
    cfmakeraw(&mode);
    setCharacterFormat(&mode, settings);
    // Received bytes that fail the parity check are dropped; the reply is then too short.
    if (settings.parity != Parity::None)
        mode.c_iflag |= INPCK | IGNPAR;
    mode.c_cc[VMIN] = 1;
    mode.c_cc[VTIME] = 0;
    const speed_t speed = speedOf(settings.baud);
    if (cfsetispeed(&mode, speed) != 0 || cfsetospeed(&mode, speed) != 0)
        return false;
    if (tcsetattr(descriptor, TCSANOW, &mode) != 0 || !hasFormat(descriptor, mode))
        return false;
    return tcflush(descriptor, TCIOFLUSH) == 0;
}

void askForLowLatency(int descriptor)
{
    serial_struct port = {};
    if (ioctl(descriptor, TIOCGSERIAL, &port) != 0)
        return;
    port.flags |= static_cast<int>(ASYNC_LOW_LATENCY);
    ioctl(descriptor, TIOCSSERIAL, &port);
}

bool isPseudoTerminal(int descriptor)
{
    // The device numbers that Linux gives to these.
    constexpr unsigned FIRST_MAJOR = 136;
    constexpr unsigned LAST_MAJOR = 143;
    struct stat status = {};
    if (fstat(descriptor, &status) != 0)
        return false;
    return major(status.st_rdev) >= FIRST_MAJOR && major(status.st_rdev) <= LAST_MAJOR;
}

// Keeps others out until the descriptor is closed. The lock holds against programs that look for
// one, the mark against all others. A pseudo-terminal is not marked: its other end would keep the
// mark when this program is killed.
bool takeForItself(int descriptor)
{
    if (isatty(descriptor) != 1 || flock(descriptor, LOCK_EX | LOCK_NB) != 0)
        return false;
    return isPseudoTerminal(descriptor) || ioctl(descriptor, TIOCEXCL) == 0;
}

QString openingError()
{
    switch (errno) {
    case ENOTTY:
        return QStringLiteral("not a serial port");
    case EBUSY:
    case EWOULDBLOCK:
        return QStringLiteral("in use by another program");
    case EINVAL:
        return QStringLiteral("the port does not have this speed or format");
    default:
        return systemError();
    }
}

} // namespace

QString SerialSettings::error() const
{
    if (path.isEmpty())
        return QStringLiteral("no serial port is named");
    if (speedOf(baud) == B0)
        return QStringLiteral("%1 baud is none of the usual speeds").arg(baud);
    if (dataBits != 7 && dataBits != 8)
        return QStringLiteral("%1 data bits: only 7 and 8 are possible").arg(dataBits);
    if (stopBits != 1 && stopBits != 2)
        return QStringLiteral("%1 stop bits: only 1 and 2 are possible").arg(stopBits);
    return QString();
}

qint64 SerialSettings::characterTime_ns() const
{
    const qint64 bits = 1 + dataBits + (parity == Parity::None ? 0 : 1) + stopBits;
    return baud > 0 ? bits * 1000000000 / baud : 0;
}

SerialLine::SerialLine(const SerialSettings &settings) : settings_(settings) {}

Opening SerialLine::open(QString *error)
{
    *error = settings_.error();
    if (!error->isEmpty())
        return Opening::Failed;
    const QByteArray path = QFile::encodeName(settings_.path);
    const int descriptor = ::open(path.constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    setDescriptor(descriptor);
    // Taken first: the speed of a line in use must stay as it is.
    if (descriptor < 0 || !takeForItself(descriptor) || !configure(descriptor, settings_)) {
        *error = openingError();
        close();
        return Opening::Failed;
    }
    if (settings_.lowLatency)
        askForLowLatency(descriptor);
    return Opening::Done;
}

bool SerialLine::isPaced() const
{
    if (settings_.pacing != Pacing::Automatic)
        return settings_.pacing == Pacing::Paced;
    return !isPseudoTerminal(descriptor());
}

} // namespace kvt
