// The file of a trace: lines of text with a time stamp, never more than a fixed number of bytes.
#ifndef KVT_HOST_TRACE_WRITER_H
#define KVT_HOST_TRACE_WRITER_H

#include <QFile>
#include <QString>

#include <functional>

namespace kvt
{

/// Writes records to a file. Does no locking of its own.
class TraceWriter
{
public:
    using Clock = std::function<qint64()>;

    static constexpr qint64 LIMIT_bytes = 64 * 1024 * 1024;

    /// `clock` yields nanoseconds; the stamps count from the moment the file is opened. The file
    /// is never longer than `limit_bytes`.
    explicit TraceWriter(Clock clock, qint64 limit_bytes = LIMIT_bytes);

    /// Creates the file, or empties it. On failure returns false and sets `*error` (not null).
    bool open(const QString &path, QString *error);

    /// Appends a record. Does nothing once the file is full: a record that has no place any more
    /// is replaced by one that says so, and ends the trace. A disk that takes no more ends it too.
    void add(const QByteArray &record);

    /// Hands what has been added to the system.
    void flush();

    /// False once the trace has ended before its time, or was never opened.
    bool isRecording() const { return recording_; }

    /// Why it ended before its time; empty when it did not.
    QString endReason() const { return endReason_; }

private:
    QByteArray stamped(const QByteArray &record) const;
    void end(const QString &reason);

    Clock clock_;
    qint64 limit_bytes_;
    qint64 written_bytes_ = 0;
    qint64 startedAt_ns_ = 0;
    QFile file_;
    bool recording_ = false;
    QString endReason_;
};

} // namespace kvt

#endif
