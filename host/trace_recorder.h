// Records a run: every call of the driver with its outcome, and every byte on the line.
#ifndef KVT_HOST_TRACE_RECORDER_H
#define KVT_HOST_TRACE_RECORDER_H

#include "host/driver_library.h"
#include "host/line_tap.h"
#include "host/trace_writer.h"

#include <mutex>

namespace kvt
{

/// Stands between a host and its driver, and taps the line. What it writes is enough to put the
/// same calls to a fresh driver again, in the same order; AddListReadVar and AddListWriteVar, which
/// the host does without, are passed on unrecorded. One at a time, as the driver; it outlives every
/// call of the entry points that it hands out.
class TraceRecorder final : public LineTap
{
public:
    /// As TraceWriter.
    explicit TraceRecorder(TraceWriter::Clock clock,
                           Outlet::WhenFull whenFull = Outlet::WhenFull::Drop);
    ~TraceRecorder() override;
    TraceRecorder(const TraceRecorder &) = delete;
    TraceRecorder &operator=(const TraceRecorder &) = delete;

    /// As TraceWriter.
    bool open(const QString &path, QString *error, qint64 limit_bytes = TraceWriter::LIMIT_bytes,
              TraceNotice notice = {});

    /// Returns entry points that record and then do what those of `api` do. To be called before
    /// the driver is set up. Each call may come from any thread that may make it of `api`; the
    /// order in the trace is the true one only for calls of one thread.
    DriverApi attach(const DriverApi &api);

    /// Ends the recording, as TraceWriter does.
    void close(qint64 timeout_ns);

    /// Why the recording is not complete; empty while it is. Any thread.
    QString problem() const;

    void bytesSent(const QByteArray &bytes) override;
    void bytesReceived(const char *bytes, int count) override;
    void bytesDropped(DroppedBytes kind, int count) override;
    void attemptEnded(const Attempt &attempt) override;
    void lineChanged(bool up) override;

private:
    friend struct RecordedCalls;

    void add(const QByteArray &record);
    void addLocked(const QByteArray &text);
    void writeNothing();
    void noteInfo();
    void noteLocalWord();
    void noteNothing();

    mutable std::mutex mutex_; // all below
    TraceWriter writer_;
    DriverApi driver_;
    const ComInfo *info_ = nullptr;
    ComInfo lastInfo_ = ComInfo();
    bool infoWritten_ = false;
    const quint16 *localWords_ = nullptr;
    int lastLocalWord_ = -1;
    int timesNothing_ = 0; // ComCommunication in a row without a frame
};

} // namespace kvt

#endif
