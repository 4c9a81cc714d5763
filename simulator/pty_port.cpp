#include "simulator/pty_port.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <termios.h>

namespace kvt
{

namespace
{

bool makeRaw(int fd)
{
    termios settings = {};
    if (tcgetattr(fd, &settings) != 0)
        return false;
    cfmakeraw(&settings);
    return tcsetattr(fd, TCSANOW, &settings) == 0;
}

} // namespace

bool PtyPort::openTerminal()
{
    master_.reset(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    std::array<char, 128> path = {};
    if (!master_.isOpen() || grantpt(master_.get()) != 0 || unlockpt(master_.get()) != 0 ||
        ptsname_r(master_.get(), path.data(), path.size()) != 0)
        return false;
    slave_.reset(::open(path.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    device_ = QFile::decodeName(path.data());
    return slave_.isOpen() && makeRaw(slave_.get());
}

bool PtyPort::open(QString *error)
{
    close();
    if (!openTerminal()) {
        *error = QStringLiteral("no pseudo-terminal: %1").arg(qt_error_string(errno));
        close();
        return false;
    }
    if (link_.isEmpty() || makeLink(error))
        return true;
    close();
    return false;
}

bool PtyPort::makeLink(QString *error)
{
    const QFileInfo present(link_);
    // One that was left behind leads nowhere, or to this terminal, which got the same number.
    const bool isLeftBehind =
        present.isSymLink() && (!present.exists() || present.symLinkTarget() == device_);
    if (isLeftBehind)
        QFile::remove(link_);
    else if (present.isSymLink()) {
        *error = QStringLiteral("link %1 is in use: it leads to %2; name another one or remove it")
                     .arg(link_, present.symLinkTarget());
        return false;
    }
    if (QFile::link(device_, link_))
        return true;
    *error = QStringLiteral("link %1 cannot be made: %2").arg(link_, qt_error_string(errno));
    return false;
}

void PtyPort::close()
{
    if (!link_.isEmpty() && !device_.isEmpty() && QFile::symLinkTarget(link_) == device_)
        QFile::remove(link_);
    device_.clear();
    slave_.reset();
    master_.reset();
}

} // namespace kvt
