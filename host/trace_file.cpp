#include "host/trace_file.h"

#include "host/line.h"
#include "host/trace_format.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace kvt
{

namespace
{

constexpr mode_t FILE_MODE = 0644;

// True for a trace and for an empty file.
bool isTrace(int descriptor)
{
    const QByteArray begin = trace::HEAD;
    QByteArray found(begin.size(), '\0');
    const ssize_t count = pread(descriptor, found.data(), static_cast<size_t>(found.size()), 0);
    return count == 0 || (count == begin.size() && found == begin);
}

// The older file goes with the trace whose beginning it was.
QString removeOlder(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    const int descriptor = open(name.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return errno == ENOENT ? QString() : QStringLiteral("%1: %2").arg(path, systemError());
    const bool mayGo = isTrace(descriptor);
    close(descriptor);
    if (!mayGo)
        return QStringLiteral("%1 would be replaced, and is no trace").arg(path);
    return unlink(name.constData()) == 0 ? QString() : systemError();
}

} // namespace

TraceFile::TraceFile(const QString &path, qint64 limit_bytes, TraceNotice notice)
    : path_(path), limit_bytes_(limit_bytes), notice_(std::move(notice))
{
}

TraceFile::~TraceFile()
{
    if (descriptor_ >= 0)
        close(descriptor_);
}

QString TraceFile::olderName(const QString &path)
{
    return path + QStringLiteral(".1");
}

QString TraceFile::write(const QByteArray &text)
{
    if (!isOpen_) {
        const QString error = open();
        if (!error.isEmpty())
            return error;
        isOpen_ = true;
        head_ = text;
    }
    const bool isLong = isRegular_ && size_bytes_ + text.size() > limit_bytes_ / 2;
    QString error = isLong && size_bytes_ > 0 ? rotate(text) : QString();
    if (error.isEmpty())
        error = append(text);
    if (!error.isEmpty())
        tell(QStringLiteral("the recording has ended: ") + error);
    return error;
}

void TraceFile::tell(const QString &text) const
{
    if (notice_)
        notice_(text);
}

QString TraceFile::open()
{
    struct stat status = {};
    const bool exists = stat(QFile::encodeName(path_).constData(), &status) == 0;
    isRegular_ = !exists || S_ISREG(status.st_mode);
    const int flags = isRegular_ ? O_RDWR | O_CREAT : O_WRONLY;
    descriptor_ =
        ::open(QFile::encodeName(path_).constData(), flags | O_CLOEXEC | O_NOCTTY, FILE_MODE);
    if (descriptor_ < 0)
        return systemError();
    if (!isRegular_)
        return QString();
    // A link stays where it is; the file behind it rotates.
    path_ = QFileInfo(path_).canonicalFilePath();
    if (flock(descriptor_, LOCK_EX | LOCK_NB) != 0)
        return QStringLiteral("another program records to it");
    if (!isTrace(descriptor_))
        return QStringLiteral("it is no trace and is left as it is");
    const QString error = removeOlder(olderName(path_));
    if (!error.isEmpty())
        return error;
    return ftruncate(descriptor_, 0) == 0 ? QString() : systemError();
}

// The new file goes on from the stamp of its first record.
QString TraceFile::rotate(const QByteArray &next)
{
    if (!std::exchange(hasRotated_, true))
        tell(QStringLiteral(
                 "what is older than its newest %1 MiB goes from now on, see --trace-size")
                 .arg(limit_bytes_ / 1048576));
    const QByteArray name = QFile::encodeName(path_);
    if (std::rename(name.constData(), QFile::encodeName(olderName(path_)).constData()) != 0)
        return systemError();
    close(descriptor_);
    descriptor_ = ::open(name.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, FILE_MODE);
    if (descriptor_ < 0)
        return systemError();
    flock(descriptor_, LOCK_EX | LOCK_NB);
    size_bytes_ = 0;
    return append(head_ + next.left(next.indexOf(' ') + 1) + trace::CONTINUED + '\n');
}

QString TraceFile::append(const QByteArray &text)
{
    const QString error = writeAll(descriptor_, text);
    size_bytes_ += text.size();
    return error;
}

} // namespace kvt
