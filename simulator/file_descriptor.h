// A file descriptor that closes itself.
#ifndef KVT_SIMULATOR_FILE_DESCRIPTOR_H
#define KVT_SIMULATOR_FILE_DESCRIPTOR_H

#include <unistd.h>

namespace kvt
{

/// Owns one descriptor, or none (-1).
class FileDescriptor
{
public:
    FileDescriptor() = default;
    ~FileDescriptor() { reset(); }
    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;

    int get() const { return fd_; }
    bool isOpen() const { return fd_ >= 0; }

    /// Closes the descriptor and takes `fd` instead.
    void reset(int fd = -1)
    {
        if (fd_ >= 0)
            ::close(fd_);
        fd_ = fd;
    }

private:
    int fd_ = -1;
};

} // namespace kvt

#endif
