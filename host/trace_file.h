// The file of a trace, or the two that it rotates through.
#ifndef KVT_HOST_TRACE_FILE_H
#define KVT_HOST_TRACE_FILE_H

#include "host/outlet.h"

#include <atomic>
#include <functional>

namespace kvt
{

/// Is told, on the outlet's thread, what a user should know of a trace at once.
using TraceNotice = std::function<void(const QString &text)>;

/// Takes the place of a trace that is there, and of nothing else. When the file has half of its
/// limit, it becomes FILE.1, whose place it takes, and a new one begins: what is newest is kept.
/// What is no file, such as a pipe, is written to without an end.
class TraceFile final : public Sink
{
public:
    /// Opens the file at the first text. `notice` may be empty.
    TraceFile(const QString &path, qint64 limit_bytes, TraceNotice notice);
    ~TraceFile() override;

    /// `text` is one or more lines; the first text is the head of every file.
    QString write(const QByteArray &text) override;

    /// True once the file could be opened. Any thread.
    bool isOpen() const { return isOpen_; }

    /// The name of the older one of the two files.
    static QString olderName(const QString &path);

private:
    QString open();
    QString rotate(const QByteArray &next);
    QString append(const QByteArray &text);
    void tell(const QString &text) const;

    QString path_;
    qint64 limit_bytes_;
    TraceNotice notice_;
    QByteArray head_;
    int descriptor_ = -1;
    bool isRegular_ = false;
    bool hasRotated_ = false;
    std::atomic<bool> isOpen_{false};
    qint64 size_bytes_ = 0;
};

} // namespace kvt

#endif
