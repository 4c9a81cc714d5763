#include "host/line.h"

#include <cerrno>
#include <poll.h>
#include <system_error>
#include <unistd.h>

namespace kvt
{

Line::~Line()
{
    close();
}

short Line::openingEvents() const
{
    return POLLOUT;
}

Opening Line::finishOpening(QString *)
{
    return Opening::Done;
}

Opening Line::giveUpOpening(QString *error)
{
    *error = QStringLiteral("no connection in time");
    return Opening::Failed;
}

void Line::close()
{
    if (descriptor_ < 0)
        return;
    ::close(descriptor_);
    descriptor_ = -1;
}

bool Line::write(const QByteArray &bytes)
{
    return ::write(descriptor_, bytes.constData(), static_cast<size_t>(bytes.size())) ==
           bytes.size();
}

int Line::read(char *buffer, int size)
{
    const ssize_t count = ::read(descriptor_, buffer, static_cast<size_t>(size));
    if (count > 0)
        return static_cast<int>(count);
    const bool nothingYet = count < 0 && (errno == EAGAIN || errno == EINTR);
    return nothingYet ? 0 : -1;
}

QString systemError()
{
    return QString::fromStdString(std::generic_category().message(errno));
}

} // namespace kvt
