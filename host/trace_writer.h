// The records of a trace: lines of text with a time stamp.
#ifndef KVT_HOST_TRACE_WRITER_H
#define KVT_HOST_TRACE_WRITER_H

#include "host/outlet.h"
#include "host/trace_file.h"

#include <QString>

#include <functional>
#include <memory>

namespace kvt
{

/// Writes records through an outlet, so that it never waits for the disk. Does no locking of its
/// own.
class TraceWriter
{
public:
    using Clock = std::function<qint64()>;

    static constexpr qint64 LIMIT_bytes = 64 * 1024 * 1024;

    /// `clock` yields nanoseconds; the stamps count from the moment the file is opened. `whenFull`
    /// says what becomes of records that are added faster than they can be written.
    explicit TraceWriter(Clock clock, Outlet::WhenFull whenFull = Outlet::WhenFull::Drop);

    /// Opens the file, see TraceFile. On failure returns false and sets `*error` (not null). A disk
    /// that takes long is not waited for; records are kept meanwhile.
    bool open(const QString &path, qint64 limit_bytes, TraceNotice notice, QString *error);

    /// Appends a record. Does nothing once the trace has ended.
    void add(const QByteArray &record);

    /// Hands on what has been added. Records that find no room are replaced by one that says so.
    void flush();

    /// Hands on the rest and waits until it is written, at most for `timeout_ns`.
    void close(qint64 timeout_ns);

    /// Why the trace is not complete; empty while it is.
    QString problem() const;

private:
    QByteArray stamped(const QByteArray &record) const;

    Clock clock_;
    Outlet::WhenFull whenFull_;
    qint64 startedAt_ns_ = 0;
    std::unique_ptr<Outlet> outlet_;
    QByteArray pending_;
    int pendingRecords_ = 0;
    int lostRecords_ = 0; // since the latest that found room
    qint64 allLost_ = 0;
};

} // namespace kvt

#endif
