#include "host/trace_writer.h"

#include "host/trace_format.h"

#include <QDateTime>

#include <utility>

namespace kvt
{

namespace
{

// Kept free for the record that says that the file is full.
constexpr qint64 RESERVE_bytes = 64;

} // namespace

TraceWriter::TraceWriter(Clock clock, qint64 limit_bytes)
    : clock_(std::move(clock)), limit_bytes_(limit_bytes)
{
}

bool TraceWriter::open(const QString &path, QString *error)
{
    file_.setFileName(path);
    if (!file_.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        *error = file_.errorString();
        return false;
    }
    startedAt_ns_ = clock_();
    const QByteArray head = trace::HEAD + QByteArrayLiteral(" ") +
                            QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs).toLatin1() +
                            '\n';
    written_bytes_ = file_.write(head);
    recording_ = written_bytes_ == head.size() && file_.flush();
    if (!recording_)
        *error = file_.errorString();
    return recording_;
}

void TraceWriter::add(const QByteArray &record)
{
    if (!recording_)
        return;
    const QByteArray line = stamped(record);
    if (written_bytes_ + line.size() + RESERVE_bytes > limit_bytes_) {
        file_.write(stamped(trace::FULL));
        end(QStringLiteral("it has reached its greatest size of %1 bytes").arg(limit_bytes_));
        return;
    }
    if (file_.write(line) != line.size())
        end(file_.errorString());
    written_bytes_ += line.size();
}

void TraceWriter::flush()
{
    if (recording_ && !file_.flush())
        end(file_.errorString());
}

QByteArray TraceWriter::stamped(const QByteArray &record) const
{
    const qint64 elapsed_us = (clock_() - startedAt_ns_) / 1000;
    const QByteArray fraction = QByteArray::number(elapsed_us % 1000000).rightJustified(6, '0');
    return QByteArray::number(elapsed_us / 1000000) + '.' + fraction + ' ' + record + '\n';
}

void TraceWriter::end(const QString &reason)
{
    recording_ = false;
    endReason_ = reason;
    file_.close();
}

} // namespace kvt
