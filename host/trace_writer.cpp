#include "host/trace_writer.h"

#include "host/host_time.h"
#include "host/trace_format.h"

#include <QDateTime>

#include <utility>

namespace kvt
{

namespace
{

constexpr qint64 QUEUE_bytes = 8 * 1024 * 1024;
constexpr int LONGEST_TEXT_bytes = 64 * 1024; // many records make several
constexpr qint64 OPENING_ns = milliseconds(500);

} // namespace

TraceWriter::TraceWriter(Clock clock, Outlet::WhenFull whenFull)
    : clock_(std::move(clock)), whenFull_(whenFull)
{
}

bool TraceWriter::open(const QString &path, qint64 limit_bytes, TraceNotice notice, QString *error)
{
    const auto file = std::make_shared<TraceFile>(path, limit_bytes, std::move(notice));
    outlet_ = std::make_unique<Outlet>(file, QUEUE_bytes);
    startedAt_ns_ = clock_();
    const QByteArray now =
        QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs).toLatin1() + '\n';
    outlet_->add(QByteArray(trace::HEAD) + ' ' + now, Outlet::WhenFull::Wait);
    outlet_->drain(OPENING_ns);
    // A disk that is full is told as one that becomes full later.
    *error = file->isOpen() ? QString() : outlet_->error();
    return error->isEmpty();
}

void TraceWriter::add(const QByteArray &record)
{
    if (!outlet_)
        return;
    pending_ += stamped(record);
    ++pendingRecords_;
    if (pending_.size() > LONGEST_TEXT_bytes)
        flush();
}

void TraceWriter::flush()
{
    if (pending_.isEmpty())
        return;
    QByteArray text;
    if (lostRecords_ > 0)
        text = stamped(trace::LOST + QByteArrayLiteral(" ") + QByteArray::number(lostRecords_));
    if (outlet_->add(text + pending_, whenFull_)) {
        lostRecords_ = 0;
    } else {
        lostRecords_ += pendingRecords_;
        allLost_ += pendingRecords_;
    }
    pending_.clear();
    pendingRecords_ = 0;
}

void TraceWriter::close(qint64 timeout_ns)
{
    flush();
    if (outlet_)
        outlet_->drain(timeout_ns);
}

QString TraceWriter::problem() const
{
    if (!outlet_)
        return QString();
    if (!outlet_->error().isEmpty())
        return outlet_->error();
    if (allLost_ > 0)
        return QStringLiteral("%1 records were lost, nobody took them in time").arg(allLost_);
    return outlet_->isBusy() ? QStringLiteral("nobody takes its last records") : QString();
}

QByteArray TraceWriter::stamped(const QByteArray &record) const
{
    const qint64 elapsed_us = (clock_() - startedAt_ns_) / 1000;
    const QByteArray fraction = QByteArray::number(elapsed_us % 1000000).rightJustified(6, '0');
    return QByteArray::number(elapsed_us / 1000000) + '.' + fraction + ' ' + record + '\n';
}

} // namespace kvt
