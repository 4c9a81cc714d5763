// A file that is in memory and has a path.
#ifndef KVT_TESTS_FUZZ_SUPPORT_MEMORY_FILE_H
#define KVT_TESTS_FUZZ_SUPPORT_MEMORY_FILE_H

#include "tests/fuzz/support/promise.h"

#include <QByteArray>
#include <QString>

#include <sys/mman.h>
#include <unistd.h>

/// Its content is replaced by each input; there is no disk in between.
class MemoryFile
{
public:
    MemoryFile() : descriptor_(memfd_create("fuzz", MFD_CLOEXEC))
    {
        require(descriptor_ >= 0, "there is room for a file in memory");
    }
    ~MemoryFile() { close(descriptor_); }
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    void setContent(const QByteArray &bytes)
    {
        const auto size = static_cast<size_t>(bytes.size());
        require(ftruncate(descriptor_, 0) == 0 &&
                    pwrite(descriptor_, bytes.constData(), size, 0) == bytes.size(),
                "a file in memory can be written");
    }

    QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(descriptor_); }

private:
    int descriptor_;
};

#endif
